// Writes the document of 2,000 styles and 50 MB that the starts are measured with.
// Usage: tessaril_bench_document FILE

#include "model/database_json.h"
#include "sample_database.h"

#include <fstream>

int main(int, char* argv[]) {
    const auto bytes = tessaril::encodeDatabase(tessaril::bench::sampleDatabase(2000, 50'000'000));
    std::ofstream(argv[1], std::ios::binary) << *bytes;
}
