#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tessaril {

/// Appends compact JSON (RFC 8259) to a text. The caller sees to the structure: colons, commas and
/// brackets are appended as they stand.
class JsonWriter {
public:
    explicit JsonWriter(std::string& target) : out(target) {}

    void raw(std::string_view json) { out.append(json); }

    /// A string. `text` must be UTF-8; otherwise the result is not `ok`.
    void string(std::string_view text);

    void integer(std::int64_t value);

    /// The shortest number that reads back to the same value. A value that is not finite cannot be
    /// written; the result is not `ok` then.
    void real(double value);

    void boolean(bool value) { raw(value ? "true" : "false"); }

    /// Whether everything so far could be represented.
    bool ok() const { return representable; }

private:
    std::string& out;
    bool representable = true;
};

} // namespace tessaril
