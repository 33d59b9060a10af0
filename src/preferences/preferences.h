#pragma once

#include "platform/preference_store.h"

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace tessaril {

/// One preference store with its registered defaults. A default is what a read gives while the
/// user never set the key; it is never written. Reading a key of neither store nor defaults gives
/// false, 0 or the empty text. Safe to use from any thread.
class Preferences {
public:
    /// - wasSet: called after each set, on its thread
    explicit Preferences(PreferenceStore& store, std::function<void()> wasSet = {});

    void registerDefault(std::string_view key, preferenceValue value);

    bool boolean(std::string_view key) const;
    std::int64_t integer(std::string_view key) const;
    double real(std::string_view key) const;
    std::string string(std::string_view key) const;

    /// Nothing where there is neither a stored text nor a registered one.
    std::optional<std::string> findString(std::string_view key) const;

    void set(std::string_view key, const preferenceValue& value);

    /// Forgets what was set, so that the default holds.
    void reset(std::string_view key);

private:
    template <typename T>
    std::optional<T> find(std::string_view key) const;
    template <typename T>
    std::optional<T> findDefault(std::string_view key) const;

    PreferenceStore& store;
    std::function<void()> wasSet;
    mutable std::mutex mutex;
    std::map<std::string, preferenceValue, std::less<>> defaults;
};

/// Registers the defaults of every key. To be called at each launch, before anything else reads a
/// preference.
/// - namespaceDraw: a fresh identifier for the default namespace
/// - darkAppearance: whether the application's windows are dark
void registerPreferenceDefaults(Preferences& standard, Preferences& shared,
                                std::int64_t namespaceDraw, bool darkAppearance);

} // namespace tessaril
