#pragma once

namespace tessaril {

/// Makes the C library ask the kernel for memory in large steps. Reading a large document allocates
/// many texts of a few kilobytes, and the default steps cost more than the reading. To be called
/// once, before threads start; what is not touched costs nothing.
void growHeapInLargeSteps();

} // namespace tessaril
