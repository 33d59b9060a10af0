#pragma once

#include "formats/user_css_reader.h"
#include "import/style_site.h"
#include "less_imports/importing_compiler.h"
#include "model/text.h"
#include "preferences/preference_keys.h"
#include "support/map_url_loader.h"
#include "support/store_machine.h"
#include "update/style_check.h"

#include <mutex>
#include <string>
#include <vector>

namespace tessaril::testing {

/// A store over a network in memory, with a compiler that writes every section's code and the
/// styles' values into the compiled code, and of Less and Stylus styles the library into compiled
/// sections.
template <typename Tasks = SteppedDispatcher>
struct UpdateMachine : StoreMachine<Tasks> {
    UpdateMachine() { this->preferences.set(preferenceKeys::siteAddress, "https://site.example"); }

    checkSurroundings checks() {
        return {.site = site, .loader = loader, .newCompile = [this] {
                    return [this](auto& s) { return compiled(s, "compile "); };
                }};
    }

    std::function<void()> compiled(styleContainer& style, const std::string& how) {
        std::string values;
        for (const userVariable& variable : *style.userVariables)
            values += variable.currentValue.value_or("-");
        const std::string language = lowercasedASCII(style.preprocessor);
        const bool isLess = language == "less" || language == "stylus";
        const bool isSass = style.preprocessor == "sass";
        const bool failed = isSass || (isLess && values == failing);
        if (isLess && !failed && !library.empty())
            style.styleData.compSections = {{.code = library}};
        if (!isLess && !isSass)
            for (styleSection& section : style.styleData.sections)
                section.compiledcode = section.code + values;
        const std::lock_guard lock(mutex);
        compilations.push_back(how + style.styleData.name);
        reachedOwnNetwork = reachedOwnNetwork || mayImportFromOwnNetwork(style);
        if (!failed) return {};
        return [this, how] { told.push_back(how); };
    }

    /// A UserCSS text, with a text variable named v where a value for it is given.
    static std::string userCSS(const std::string& name, const std::string& version,
                               const std::string& code, const std::string& value = "") {
        return "/* ==UserStyle==\n" + (name.empty() ? "" : "@name " + name + "\n") + "@version " +
               version + "\n" + (value.empty() ? "" : "@var text v \"V\" " + value + "\n") +
               "==/UserStyle== */\n@-moz-document domain(\"a.example\") { " + code + " }";
    }
    static std::string addressOf(std::int64_t id) {
        return "https://styles.example/" + std::to_string(id) + ".user.css";
    }
    /// Has the address of the style give the text.
    void serve(std::int64_t id, std::string text) {
        loader.responses[addressOf(id)].body = std::move(text);
    }
    /// The style as it is installed from its address now.
    styleContainer userStyle(std::int64_t id) {
        const styleMaking making{[id] { return id; }, [this](auto& s) { compiled(s, ""); }};
        auto style = *parseUserCSS(loader.responses.at(addressOf(id)).body, making);
        style.downloadedFrom = addressOf(id);
        return style;
    }
    /// A style of the site, which has it with the other checksum.
    styleContainer siteStyle(std::int64_t id, const std::string& name, const std::string& md5,
                             const std::string& there) {
        styleContainer style = namedStyle(name, id);
        style.source = sourceSite;
        style.styleData.updateUrl = "https://site.example/styles/" + std::to_string(id) + "/x";
        style.styleData.originalMd5 = md5;
        loader.responses["https://site.example/styles/chrome/" + std::to_string(id) + ".json"]
            .body = R"({"url":"","updateUrl":"u","md5Url":"","originalMd5":")" + there +
                    R"(","name":"New )" + name + R"(","sections":[]})";
        return style;
    }

    MapUrlLoader loader;
    StyleSite site{loader, this->preferences};
    std::mutex mutex;
    std::vector<std::string> compilations, told;
    bool reachedOwnNetwork = false;     ///< whether a style that was compiled may
    std::string library = "one";        ///< what every Less style imports; empty: gives no CSS
    std::optional<std::string> failing; ///< the values with which none can be compiled
};

} // namespace tessaril::testing
