#include "desktop/posix_file_system.h"
#include "model/database_json.h"
#include "sample_database.h"

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <simdjson.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>

namespace {

using namespace tessaril;

constexpr std::size_t megabyte = 1'000'000;

const styleDatabase& database() {
    static const styleDatabase sample = bench::sampleDatabase(2000, 50 * megabyte);
    return sample;
}

const std::string& document() {
    static const std::string bytes = *encodeDatabase(database());
    return bytes;
}

/// The document as the application holds it when it decodes it: read from a file, with padding.
std::string readDocument() {
    static const std::filesystem::path file = [] {
        std::string name = "/tmp/tessaril-bench-XXXXXX";
        close(mkstemp(name.data()));
        std::ofstream(name, std::ios::binary) << document();
        return std::filesystem::path(name);
    }();
    static const struct Remover {
        ~Remover() { std::filesystem::remove(file); }
    } remover;
    return *PosixFileSystem().read(file);
}

/// The same bytes in memory of small pages, which takes longer to walk and to give back.
std::string copiedDocument() {
    std::string bytes;
    bytes.reserve(document().size() + simdjson::SIMDJSON_PADDING);
    return bytes.append(document());
}

void decodeBytes(benchmark::State& state, std::string (*makeBytes)()) {
    for (auto _ : state) {
        state.PauseTiming();
        std::string bytes = makeBytes();
        state.ResumeTiming();
        auto decoded = decodeDatabase(std::move(bytes));
        benchmark::DoNotOptimize(decoded);
        state.PauseTiming();
        decoded.reset();
        malloc_trim(0); // the next one is given fresh memory, as at a start
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(document().size()));
}

void decode(benchmark::State& state) {
    decodeBytes(state, readDocument);
}

void decodeFromSmallPages(benchmark::State& state) {
    decodeBytes(state, copiedDocument);
}

// simdjson's own parse of the same bytes into its document object model, by a new parser.
void decodeReference(benchmark::State& state) {
    const std::string bytes = readDocument();
    for (auto _ : state) {
        simdjson::dom::parser parser;
        simdjson::dom::element root;
        const auto error =
            parser.parse(bytes.data(), document().size(), /*realloc_if_needed=*/false).get(root);
        if (error != simdjson::SUCCESS) state.SkipWithError("not parsed");
        benchmark::DoNotOptimize(root);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(document().size()));
}

void encode(benchmark::State& state) {
    for (auto _ : state) {
        auto bytes = encodeDatabase(database());
        benchmark::DoNotOptimize(bytes);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(document().size()));
}

// The same bytes copied into fresh memory.
void encodeReference(benchmark::State& state) {
    for (auto _ : state) {
        const std::unique_ptr<char[]> copy(new char[document().size()]);
        std::memcpy(copy.get(), document().data(), document().size());
        benchmark::DoNotOptimize(copy.get());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(document().size()));
}

// What the texts alone cost with the library that the own writer stands in for.
void encodeTextsWithRapidJSON(benchmark::State& state) {
    for (auto _ : state) {
        rapidjson::StringBuffer buffer(nullptr, document().size() + 1024);
        rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
        writer.StartArray();
        for (const styleContainer& style : database().styles) {
            const styleSection& section = style.styleData.sections.front();
            for (const std::string& text :
                 {std::cref(section.code), std::cref(*section.compiledcode)})
                writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
        }
        writer.EndArray();
        benchmark::DoNotOptimize(buffer.GetString());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(document().size()));
}

BENCHMARK(decode)->Name("decode/figure")->Unit(benchmark::kMillisecond);
BENCHMARK(decodeFromSmallPages)->Name("decode from small pages")->Unit(benchmark::kMillisecond);
BENCHMARK(decodeReference)->Name("decode/reference")->Unit(benchmark::kMillisecond);
BENCHMARK(encode)->Name("encode/figure")->Unit(benchmark::kMillisecond);
BENCHMARK(encodeReference)->Name("encode/reference")->Unit(benchmark::kMillisecond);
BENCHMARK(encodeTextsWithRapidJSON)->Name("encode/RapidJSON")->Unit(benchmark::kMillisecond);

} // namespace
