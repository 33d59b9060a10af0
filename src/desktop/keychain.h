#pragma once

#include "platform/password_source.h"
#include "platform/password_store.h"

#include <functional>
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
    /// comes through the main thread's event loop. Outlives the keychain.
    static PasswordSource source();
};

} // namespace tessaril
