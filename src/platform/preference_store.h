#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace tessaril {

using preferenceValue = std::variant<bool, std::int64_t, double, std::string>;

/// One persistent set of named values. May be called from any thread.
class PreferenceStore {
public:
    virtual ~PreferenceStore() = default;

    /// The stored value read as the type that `like` holds; nothing when there is none or it does
    /// not read as that type.
    virtual std::optional<preferenceValue> value(std::string_view key,
                                                 const preferenceValue& like) const = 0;

    virtual void setValue(std::string_view key, const preferenceValue& value) = 0;

    /// Forgets the value, if there is one.
    virtual void removeValue(std::string_view key) = 0;
};

} // namespace tessaril
