#include "desktop/heap.h"

#include <benchmark/benchmark.h>

int main(int argc, char* argv[]) {
    tessaril::growHeapInLargeSteps(); // as the application does
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
