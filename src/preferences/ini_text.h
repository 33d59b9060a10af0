#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessaril {

/// The text of an INI file with its [General] group's values, in the dialect of QSettings: values
/// in quotes where they need them, escapes of C within. What QSettings writes for texts without NUL
/// and for numbers is read; its lines that go on behind a backslash and its values of other types
/// ("@…") are not. Lines of comments, other groups and the order of the lines are kept. UTF-8.
class IniText {
public:
    IniText() = default;

    /// Nothing when `bytes` are damaged: not UTF-8, a NUL byte within, a line that is neither
    /// comment, group nor value.
    static std::optional<IniText> parse(std::string bytes);

    /// Whether the last line has no end, so that more may have followed. That line is left out.
    bool isCutShort() const { return cutShort; }

    /// The value of `key` in [General]; of several the last.
    std::optional<std::string> value(std::string_view key) const;

    /// `key` is made of letters and digits.
    void set(std::string_view key, std::string_view value);

    void remove(std::string_view key);

    /// Whether there is no value in any group.
    bool isEmpty() const;

    /// The whole file.
    std::string text() const;

private:
    struct line {
        std::string text;
        std::string key; ///< empty for comments and groups
        bool isGeneral = true;
    };

    std::vector<line> lines;
    bool cutShort = false;
};

} // namespace tessaril
