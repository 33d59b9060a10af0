#include "model/database_json.h"
#include "sample_database.h"
#include "sync/database_merge.h"

#include <benchmark/benchmark.h>

#include <iterator>
#include <utility>

namespace {

using namespace tessaril;

constexpr std::size_t styleCount = 10'000;

styleDatabase databaseOf(date modified) {
    styleDatabase database = bench::sampleDatabase(styleCount, 50'000'000);
    for (styleContainer& style : database.styles)
        style.dateModified = 100;
    database.dateModified = modified;
    return database;
}

/// Two machines' databases, decoded apart from each other: most styles are equal, of each ten one
/// was edited here, one there, one was made here, and one deleted here.
struct sides {
    sides() {
        for (std::size_t i = 0; i < styleCount; i += 10) {
            mine.styles[i].dateModified = 200;
            theirs.styles[i + 1].dateModified = 200;
            mine.styles[i + 2].uniqueID += 1'000'000;
            mine.styles[i + 2].styleData.name += " of this machine";
        }
        styleDatabase left = std::move(mine);
        mine = left;
        mine.styles.clear();
        for (std::size_t i = 0; i < styleCount; ++i)
            if (i % 10 != 3) mine.styles.push_back(std::move(left.styles[i]));
        document = *encodeDatabase(theirs);
        cloud = liveDatabaseFrom(std::move(theirs));
        local = liveDatabaseFrom(std::move(mine));
    }
    styleDatabase mine = databaseOf(300), theirs = databaseOf(400);
    std::string document;
    liveDatabase cloud, local;
};

const sides& both() {
    static const sides made;
    return made;
}

void mergeFirst(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(
            mergeFirstFetch(both().cloud, both().local, {.lastSync = 150, .isFirst = true}));
}
void mergeChange(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(mergeRemoteChange(both().cloud, both().local));
}
void decodeSide(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(decodeDatabase(both().document));
}

BENCHMARK(mergeFirst)->Name("mergeFirst/figure")->Unit(benchmark::kMillisecond);
BENCHMARK(mergeChange)->Name("mergeChange/figure")->Unit(benchmark::kMillisecond);
BENCHMARK(decodeSide)->Name("mergeFirst/reference")->Unit(benchmark::kMillisecond);
BENCHMARK(decodeSide)->Name("mergeChange/reference")->Unit(benchmark::kMillisecond);

} // namespace
