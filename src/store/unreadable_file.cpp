#include "store/unreadable_file.h"

#include "model/style_container.h"

#include <string>

namespace tessaril {

std::filesystem::path unreadableName(const FileSystem& files, const std::filesystem::path& file) {
    const std::string stem = file.stem().string() + "-unreadable-" + utcTimestamp();
    const std::string extension = file.extension().string();
    std::filesystem::path path = file.parent_path() / (stem + extension);
    for (int number = 2; files.exists(path); ++number)
        path = file.parent_path() / (stem + "-" + std::to_string(number) + extension);
    return path;
}

} // namespace tessaril
