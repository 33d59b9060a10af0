#include "desktop/heap.h"

#include <malloc.h>

namespace tessaril {

void growHeapInLargeSteps() {
    constexpr int step = 64 << 20;
    mallopt(M_TOP_PAD, step);
}

} // namespace tessaril
