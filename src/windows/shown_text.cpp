#include "windows/shown_text.h"

namespace tessaril {

QString oneLine(std::string_view text, qsizetype most) {
    // A character takes at most four bytes; the rest of a long text need not be decoded.
    QString line = qtText(text.substr(0, static_cast<std::size_t>(most) * 4)).left(most);
    for (QChar& character : line)
        if (!character.isPrint() && !character.isSurrogate() && !character.isMark() &&
            character.category() != QChar::Other_Format)
            character = ' ';
    return line;
}

QString windowTitleText(std::string_view text) {
    return oneLine(text).replace("[*]", "[*][*]");
}

} // namespace tessaril
