#include "formats/moz_document.h"
#include "formats/user_css_reader.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <string>
#include <string_view>

// How fast style texts are read, beside the least that any reader does: looking at every byte once.
namespace tessaril {

namespace {

constexpr std::size_t textSize = 600 * 1000;
constexpr unsigned seed = 20011;

std::string_view pick(std::mt19937& random, std::initializer_list<std::string_view> texts) {
    return texts.begin()[random() % texts.size()];
}

void appendRule(std::string& text, std::mt19937& random) {
    text += pick(random, {"", "", "", "", "\t/* header */\n", "\t/* side bar */\n"});
    text += pick(random, {"\t.container > .item:hover", "\t#content .post-body a[href]", "\tbody"});
    text += pick(random, {" {\n", ",\n\t.theme-dark .navigation {\n"});
    for (auto declarations = 2 + random() % 6; declarations > 0; --declarations)
        text += pick(random,
                     {"\t\tbackground-color: #1e1e1e !important;\n", "\t\tcolor: var(--text);\n",
                      "\t\tmargin: 0 auto;\n", "\t\tborder: 1px solid rgba(255, 255, 255, 0.2);\n",
                      "\t\tbackground: url(https://example.com/images/page.png);\n"});
    text += "\t}\n\n";
}

/// A style file as authors publish them: metadata, variables, sections of 10 to 60 rules indented
/// by tabs.
std::string generatedStyle() {
    std::mt19937 random(seed);
    std::string text = "/* ==UserStyle==\n"
                       "@name           Generated\n"
                       "@namespace      example.com\n"
                       "@version        1.0.0\n"
                       "@description    A generated style\n"
                       "  of two lines\n"
                       "@author         Nobody\n"
                       "@preprocessor   uso\n";
    for (int i = 0; i < 40; ++i) {
        const std::string number = std::to_string(i);
        text.append("@var color color").append(number).append(" \"Colour\" #bb86fc\n");
        text.append("@var range width").append(number).append(" 'Width' [110, 60, 240, 5, 'px']\n");
        text.append("@var select font").append(number);
        text.append(R"( "Font" {"a:A": "serif", "b:B*": "sans"})").append("\n");
    }
    text += "==/UserStyle== */\n\n";
    while (text.size() < textSize) {
        text += "@-moz-document domain(\"example.com\"), url-prefix(\"https://example.org/\") {\n";
        for (auto rules = 10 + random() % 50; rules > 0; --rules)
            appendRule(text, random);
        text += "}\n\n";
    }
    return text;
}

const std::string& styleText() {
    static const std::string text = generatedStyle();
    return text;
}

/// One `memchr` over the same text for a byte that is not in it: the fastest pass there is.
void readEveryByteOnce(benchmark::State& state) {
    const std::string& text = styleText();
    for (auto _ : state)
        benchmark::DoNotOptimize(std::memchr(text.data(), '\0', text.size()));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

/// The same text line by line: what a pass costs that stops wherever a reader has to look.
void findEveryLine(benchmark::State& state) {
    const std::string& text = styleText();
    const char* const end = text.data() + text.size();
    for (auto _ : state) {
        std::size_t lines = 0;
        const char* at = text.data();
        while (const void* found = std::memchr(at, '\n', static_cast<std::size_t>(end - at))) {
            at = static_cast<const char*>(found) + 1;
            ++lines;
        }
        benchmark::DoNotOptimize(lines);
    }
}

void readStyle(benchmark::State& state) {
    const std::string& text = styleText();
    const styleMaking making{[] { return 1; }, [](styleContainer&) {}};
    for (auto _ : state)
        benchmark::DoNotOptimize(parseUserCSS(text, making));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void readSections(benchmark::State& state) {
    const std::string& text = styleText();
    for (auto _ : state)
        benchmark::DoNotOptimize(sectionsFromCSS(text, "uso"));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

} // namespace

BENCHMARK(readEveryByteOnce)->Name("parseUserCSS/reference")->Unit(benchmark::kMicrosecond);
BENCHMARK(readStyle)->Name("parseUserCSS/figure")->Unit(benchmark::kMicrosecond);
BENCHMARK(readEveryByteOnce)->Name("sectionsFromCSS/reference")->Unit(benchmark::kMicrosecond);
BENCHMARK(readSections)->Name("sectionsFromCSS/figure")->Unit(benchmark::kMicrosecond);
BENCHMARK(findEveryLine)->Name("memchr of every line break in it")->Unit(benchmark::kMicrosecond);

} // namespace tessaril
