#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

namespace tessaril::bench {

/// A folder on the disk of the build tree, removed at the end.
class Folder {
public:
    Folder() {
        std::string name = (std::filesystem::current_path() / "bench-XXXXXX").string();
        if (!mkdtemp(name.data())) std::abort();
        path = name;
    }
    ~Folder() { std::filesystem::remove_all(path); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::filesystem::path path;
};

} // namespace tessaril::bench
