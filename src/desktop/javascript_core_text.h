#pragma once

#include <JavaScriptCore/JavaScript.h>

#include <string>
#include <string_view>

// Between UTF-8 and the engine's UTF-16, U+0000 included in both directions.
namespace tessaril {

/// Releases an engine string when it goes.
class EngineString {
public:
    /// From UTF-8; what is not UTF-8 becomes U+FFFD.
    explicit EngineString(std::string_view utf8);
    /// Takes over what an engine function named "Create" or "Copy" gave; may be null.
    explicit EngineString(JSStringRef owned) : string(owned) {}
    EngineString(const EngineString&) = delete;
    EngineString& operator=(const EngineString&) = delete;
    ~EngineString() {
        if (string != nullptr) JSStringRelease(string);
    }

    explicit operator bool() const { return string != nullptr; }
    operator JSStringRef() const { return string; }

    /// As valid UTF-8; a surrogate without its other half becomes U+FFFD.
    std::string utf8() const;

private:
    JSStringRef string;
};

} // namespace tessaril
