#pragma once

#include "model/style_database.h"

#include <string>

namespace tessaril::testing {

/// A style with the name and identifier; everything else as a new one has it.
inline styleContainer namedStyle(std::string name, std::int64_t id) {
    return makeStyleContainer(makeStyleJSON(std::move(name), "a { color: red }"), sourceCustom,
                              noUserstyleID, id);
}

/// A style in which every field of every type holds something; most texts hold their field's name.
inline styleContainer fullStyle(std::int64_t id) {
    using texts = std::vector<std::string>;
    const texts urls{"https://a.example/?q=\"1\""}, prefixes{"https://b.example/", ""},
        domains{"c.example"}, regexps{"https?://\\w+\\.example/.*"};
    const std::string code = "a\t{\r\n content: '\\201C \u20AC \U0001F600'; }\n";
    const styleSection section{urls, prefixes, domains, regexps, code, "", "Main \u0001"};
    const styleJSON data{"url",  "updateUrl",   "md5Url",   "originalMd5",
                         "name", {section, {}}, {{section}}};
    const std::vector<variableOption> options{{}, {"n*", "", "x"}};
    const rangeOpts bounds{-1.7976931348623157e308, 1.7976931348623157e308, 0.1, "px"};
    const std::vector<userVariable> variables{{"select", "v", "V", "0", options, {}, ""},
                                              {"number", "w", "W", "1", {}, bounds, {}}};
    const texts none, excluded{"exclDomain"}, two{"y", "z"};
    return {id,
            data,
            false,
            "usorg",
            0,
            "version",
            "namespace",
            "description",
            "author",
            "homepageURL",
            "supportURL",
            "license",
            "downloadedFrom",
            "preprocessor",
            none,
            excluded,
            two,
            regexps,
            false,
            "updateURL",
            "systemTheme",
            variables,
            -12345.678901234567};
}

} // namespace tessaril::testing
