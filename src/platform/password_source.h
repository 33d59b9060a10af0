#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace tessaril {

/// What came of looking for a password.
struct passwordAnswer {
    std::optional<std::string> password;
    /// Nobody can tell yet whether there is one: it did not come in time, as the user may have to
    /// unlock the keychain first, or the keychain failed.
    bool isUnknown = false;
};

/// Gives the password that is kept for an account, within `patience`. Called on any thread but the
/// main one.
using PasswordSource =
    std::function<passwordAnswer(const std::string& account, std::chrono::milliseconds patience)>;

} // namespace tessaril
