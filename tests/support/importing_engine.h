#pragma once

#include "model/text.h"
#include "platform/resources.h"
#include "platform/script_engine.h"

#include <string>
#include <utility>
#include <vector>

namespace tessaril::testing {

/// Plays Less with code of words: "@ADDRESS" imports a file, others are its CSS.
struct ImportingEngine : ScriptEngine, Resources {
    struct Context : ScriptContext {
        std::optional<std::string> evaluate(std::string_view script) override {
            if (script.starts_with("less.render")) take(source);
            if (script == "answerImports();")
                for (const std::string& address : std::exchange(wanted, {}))
                    takeAnswer(address);
            return "";
        }
        void setGlobal(std::string_view name, std::string_view value) override {
            (name == "str" ? source : answers) = value;
        }
        std::optional<std::string> global(std::string_view name) override {
            if (name == "errorMsg") return error;
            if (name == "compiled") return error ? std::nullopt : std::optional(css);
            std::string addresses;
            for (const std::string& address : wanted)
                addresses += (addresses.empty() ? "" : "\n") + address;
            return addresses;
        }

        void take(std::string_view code) {
            for (const std::string_view line : split(code, "\n"))
                for (const std::string_view word : split(line, " ")) {
                    if (word.starts_with('@')) wanted.emplace_back(word.substr(1));
                    if (!word.starts_with('@')) css += word;
                }
        }
        void takeAnswer(const std::string& address) {
            const std::string start = "\"" + address + "\":{\"text\":\"";
            const std::size_t at = answers.find(start);
            if (at == std::string::npos) {
                error = "'" + address + "' wasn't found";
                return;
            }
            const std::size_t begin = at + start.size();
            take(std::string(answers, begin, answers.find('"', begin) - begin));
        }

        std::string source, answers, css;
        std::vector<std::string> wanted;
        std::optional<std::string> error;
    };

    std::unique_ptr<ScriptContext> makeContext(std::span<const scriptSource>,
                                               ExceptionHandler) override {
        return std::make_unique<Context>();
    }
    std::optional<scriptSource> script(std::string_view) const override { return scriptSource{}; }
};

} // namespace tessaril::testing
