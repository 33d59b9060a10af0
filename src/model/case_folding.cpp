#include "model/case_folding.h"

#include <unicode/uchar.h>
#include <unicode/ustring.h>

namespace tessaril {

namespace {

constexpr char32_t replacementCharacter = 0xFFFD;

bool isLead(char16_t unit) {
    return (unit & 0xFC00) == 0xD800;
}

bool isTrail(char16_t unit) {
    return (unit & 0xFC00) == 0xDC00;
}

char32_t folded(char32_t character) {
    return static_cast<char32_t>(u_foldCase(static_cast<UChar32>(character), U_FOLD_CASE_DEFAULT));
}

} // namespace

std::u16string utf16Text(std::string_view text) {
    std::u16string result(text.size(), u'\0'); // never more units than bytes
    std::int32_t length = 0;
    UErrorCode error = U_ZERO_ERROR;
    u_strFromUTF8WithSub(result.data(), static_cast<std::int32_t>(result.size()), &length,
                         text.data(), static_cast<std::int32_t>(text.size()), replacementCharacter,
                         nullptr, &error);
    result.resize(U_SUCCESS(error) ? static_cast<std::size_t>(length) : 0);
    return result;
}

void foldCase(std::u16string& text) {
    for (std::size_t at = 0; at < text.size(); ++at) {
        char16_t& unit = text[at];
        if (!isLead(unit) || at + 1 == text.size() || !isTrail(text[at + 1])) {
            // A folding with more units would move all that follows; today there is none.
            const char32_t fold = folded(unit);
            if (fold < 0x10000) unit = static_cast<char16_t>(fold);
            continue;
        }
        char16_t& trail = text[++at];
        const char32_t fold =
            folded(0x10000 + ((unit - char32_t{0xD800}) << 10) + (trail - char32_t{0xDC00}));
        if (fold < 0x10000) continue;
        unit = static_cast<char16_t>(0xD800 + ((fold - 0x10000) >> 10));
        trail = static_cast<char16_t>(0xDC00 + (fold & 0x3FF));
    }
}

} // namespace tessaril
