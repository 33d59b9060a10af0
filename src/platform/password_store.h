#pragma once

#include <functional>
#include <string>

namespace tessaril {

/// The desktop's keychain. Main thread only; every answer comes once, there, now or later.
class PasswordStore {
public:
    virtual ~PasswordStore() = default;

    /// Whether there is one; the user is asked for nothing.
    virtual void askAvailable(std::function<void(bool isAvailable)> answer) = 0;

    /// Keeps the password of the account instead of the one before; an empty one is forgotten. The
    /// desktop may ask the user to unlock the keychain.
    virtual void keep(const std::string& account, const std::string& password,
                      std::function<void(bool isDone)> answer) = 0;
};

} // namespace tessaril
