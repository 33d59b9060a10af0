#include "store/atomic_write.h"

namespace tessaril {

bool writeAtomically(FileSystem& files, const std::filesystem::path& path, std::string_view bytes) {
    const auto staged = files.stage(path.parent_path(), std::span(&bytes, 1));
    return staged && staged->publishAs(path);
}

} // namespace tessaril
