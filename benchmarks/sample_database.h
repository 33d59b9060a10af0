#pragma once

#include "model/style_database.h"

#include <random>
#include <string>

namespace tessaril::bench {

/// CSS-like text of about `size` bytes: short indented lines, some quotes and non-ASCII letters.
inline std::string sampleCode(std::size_t size, std::mt19937& random) {
    constexpr std::string_view lines[] = {
        "    background-color: rgba(23, 26, 33, 0.92) !important;\n",
        "    color: var(--text-colour);\n",
        "    font-family: \"Noto Sans\", Arial, sans-serif;\n",
        "}\n\n.card > .header[data-kind=\"wide\"]:not(.is-open)::before {\n",
        "    content: '\u203A'; /* caf\u00E9 */\n",
        "\tborder: 1px solid #2a475e;\n",
        "    transition: opacity 120ms ease-in-out, transform 120ms;\n",
    };
    std::string code = "body {\n";
    while (code.size() < size)
        code += lines[random() % std::size(lines)];
    return code + "}";
}

/// A database of `count` styles that encodes to about `bytes` bytes; the same one each time.
inline styleDatabase sampleDatabase(std::size_t count, std::size_t bytes) {
    std::mt19937 random(20010101);
    styleDatabase database;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t share = bytes / count - 900;
        styleContainer style =
            makeStyleContainer(makeStyleJSON("Style " + std::to_string(i), ""), sourceUserCSS,
                               noUserstyleID, static_cast<std::int64_t>(i));
        styleSection section;
        section.domains = {"site" + std::to_string(i) + ".example"};
        section.code = sampleCode(share / 2, random);
        section.compiledcode = section.code;
        style.styleData.sections = {section};
        style.userVariables = {{.type = "color",
                                .name = "text-colour",
                                .label = "Text",
                                .defaultValue = "#d0d8e0",
                                .currentValue = "rgba(208,216,224,1)"}};
        style.preprocessor = "default";
        database.styles.push_back(std::move(style));
    }
    return database;
}

} // namespace tessaril::bench
