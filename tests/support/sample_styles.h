#pragma once

#include "model/style_database.h"

#include <string>

namespace tessaril::testing {

/// A style with the name and identifier; everything else as a new one has it.
inline styleContainer namedStyle(std::string name, std::int64_t id) {
    return makeStyleContainer(makeStyleJSON(std::move(name), "a { color: red }"), sourceCustom,
                              noUserstyleID, id);
}

/// A style in which every field of every type holds something.
inline styleContainer fullStyle(std::int64_t id) {
    const styleSection section{.urls = {"https://a.example/?q=\"1\""},
                               .urlPrefixes = {"https://b.example/", ""},
                               .domains = {"c.example"},
                               .regexps = {"https?://\\w+\\.example/.*"},
                               .code = "a\t{\r\n content: '\\201C \u20AC \U0001F600'; }\n",
                               .compiledcode = "",
                               .sectionName = "Main \u0001"};
    styleContainer style = namedStyle("Full", id);
    style.styleData = {.url = "u",
                       .updateUrl = "uu",
                       .md5Url = "m",
                       .originalMd5 = "o",
                       .name = "Full",
                       .sections = {section, {}},
                       .compSections = std::vector{section}};
    style.isEnabled = false;
    style.source = sourceSite;
    style.userstyleID = 0;
    style.version = "1";
    style.namespace_ = "n";
    style.description = "d\nd";
    style.author = "a";
    style.homepageURL = "h";
    style.supportURL = "s";
    style.license = "l";
    style.downloadedFrom = "f";
    style.preprocessor = "less";
    style.exclURL.emplace();
    style.exclDomain = {"x"};
    style.exclPrefix = {"y", "z"};
    style.exclRegExp = {"\\d"};
    style.allowIframe = false;
    style.updateURL = "";
    style.systemTheme = "dark";
    style.dateModified = -12345.678901234567;
    style.userVariables = {
        {.type = "select",
         .name = "v",
         .label = "V",
         .defaultValue = "0",
         .selectOptions =
             std::vector<variableOption>{{}, {.name = "n*", .label = "", .value = "x"}},
         .rangeOptions = std::nullopt,
         .currentValue = ""},
        {.type = "number",
         .name = "w",
         .label = "W",
         .defaultValue = "1",
         .selectOptions = std::nullopt,
         .rangeOptions = rangeOpts{.min = -1.7976931348623157e308,
                                   .max = 1.7976931348623157e308,
                                   .step = 0.1,
                                   .units = "px"},
         .currentValue = std::nullopt},
    };
    return style;
}

} // namespace tessaril::testing
