#include "style_editor/metadata_fields.h"

#include "model/text.h"

#include <algorithm>

namespace tessaril {

metadataFields metadataOf(const styleContainer& style) {
    const auto found =
        std::ranges::find(metadataPreprocessors, lowercasedASCII(style.preprocessor));
    const bool isKnown = found != metadataPreprocessors.end();
    // Without one, code is CSS with placeholders.
    const int position =
        style.preprocessor.empty() ? 1 : static_cast<int>(found - metadataPreprocessors.begin());
    return {.author = style.author,
            .version = style.version,
            .license = style.license,
            .namespace_ = style.namespace_,
            .description = style.description,
            .preprocessor = isKnown || style.preprocessor.empty() ? position : -1};
}

void applyMetadata(const metadataFields& fields, styleContainer& style) {
    style.author = trimmed(fields.author);
    style.version = trimmed(fields.version);
    style.license = trimmed(fields.license);
    style.namespace_ = trimmed(fields.namespace_);
    style.description = trimmed(fields.description);
    // One that is not in the menu stays until another is chosen.
    if (fields.preprocessor == metadataOf(style).preprocessor) return;
    const auto position = static_cast<std::size_t>(fields.preprocessor);
    style.preprocessor = position < metadataPreprocessors.size() ? metadataPreprocessors[position]
                                                                 : metadataPreprocessors[0];
}

} // namespace tessaril
