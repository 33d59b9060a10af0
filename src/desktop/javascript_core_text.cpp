#include "desktop/javascript_core_text.h"

#include "model/utf8.h"

#include <QString>
#include <QStringDecoder>

#include <algorithm>

namespace tessaril {

namespace {

JSStringRef stringFromUTF8(std::string_view utf8) {
    const bool isASCII =
        std::ranges::all_of(utf8, [](char c) { return static_cast<signed char>(c) > 0; });
    // Gives a string of one byte per character, which the engine reads a good deal faster.
    if (isASCII) return JSStringCreateWithUTF8CString(std::string(utf8).c_str());

    // The engine's own conversion stops at U+0000.
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
    const QString text = decoder(QByteArrayView(utf8.data(), static_cast<qsizetype>(utf8.size())));
    return JSStringCreateWithCharacters(reinterpret_cast<const JSChar*>(text.utf16()),
                                        static_cast<std::size_t>(text.size()));
}

} // namespace

EngineString::EngineString(std::string_view utf8) : string(stringFromUTF8(utf8)) {}

std::string EngineString::utf8() const {
    // By hand, because Qt writes a lone surrogate as "?".
    const JSChar* const units = JSStringGetCharactersPtr(string);
    const std::size_t length = JSStringGetLength(string);
    std::string text;
    text.reserve(length);
    for (std::size_t i = 0; i < length; ++i) {
        const char32_t unit = units[i];
        if (!QChar::isSurrogate(unit)) {
            appendUTF8(text, unit);
        } else if (QChar::isHighSurrogate(unit) && i + 1 < length &&
                   QChar::isLowSurrogate(units[i + 1])) {
            appendUTF8(text, QChar::surrogateToUcs4(static_cast<char16_t>(unit), units[++i]));
        } else {
            appendUTF8(text, QChar::ReplacementCharacter);
        }
    }
    return text;
}

} // namespace tessaril
