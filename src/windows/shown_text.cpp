#include "windows/shown_text.h"

namespace tessaril {

namespace {

/// The explicit directional formatting characters of Unicode's bidirectional algorithm, by which a
/// style's name could turn what stands beside it.
bool turnsText(QChar character) {
    const char16_t unit = character.unicode();
    return (unit >= 0x202A && unit <= 0x202E) || (unit >= 0x2066 && unit <= 0x2069);
}

} // namespace

QString oneLine(std::string_view text, qsizetype most) {
    // A character takes at most four bytes; the rest of a long text need not be decoded.
    QString line = qtText(text.substr(0, static_cast<std::size_t>(most) * 4)).left(most);
    for (QChar& character : line)
        if (!character.isPrint() && !character.isSurrogate() && !character.isMark() &&
            character.category() != QChar::Other_Format)
            character = ' ';
    line.removeIf(turnsText);
    return line;
}

QString toolTipText(const QString& text) {
    if (text.isEmpty()) return {}; // none, rather than an empty one
    return "<p style='white-space:pre-wrap'>" + text.toHtmlEscaped() + "</p>";
}

QString windowTitleText(std::string_view text) {
    return oneLine(text).replace("[*]", "[*][*]");
}

} // namespace tessaril
