#pragma once

#include "platform/password_store.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace tessaril {

/// The keychain of the desktop, by its D-Bus services. Where there is none nothing is kept and
/// nothing found.
class Keychain : public PasswordStore {
public:
    void askAvailable(std::function<void(bool)> answer) override;
    void keep(const std::string& account, const std::string& password,
              std::function<void(bool)> answer) override;

    /// Looks up the password of an account, for any thread but the main one: the desktop's answer
    /// comes through the main thread's event loop. Nothing where none came within the patience; the
    /// user may have to unlock the keychain. Outlives the keychain.
    static std::function<std::optional<std::string>(const std::string& account,
                                                    std::chrono::milliseconds patience)>
    source();
};

} // namespace tessaril
