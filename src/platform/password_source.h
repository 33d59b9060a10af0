#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace tessaril {

/// What came of looking for a password.
struct passwordAnswer {
    std::optional<std::string> password;
    /// It did not come in time: the user may have to unlock the keychain first. Then nobody knows
    /// yet whether there is one.
    bool isLate = false;
};

/// Gives the password that is kept for an account, within `patience`. Called on any thread but the
/// main one.
using PasswordSource =
    std::function<passwordAnswer(const std::string& account, std::chrono::milliseconds patience)>;

} // namespace tessaril
