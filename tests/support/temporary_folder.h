#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace tessaril::testing {

/// An empty folder that is gone with all it holds at the end of the test.
struct TemporaryFolder {
    TemporaryFolder() {
        std::string name = ::testing::TempDir() + "tessaril-XXXXXX";
        if (!::mkdtemp(name.data())) std::abort();
        path = name;
    }
    ~TemporaryFolder() {
        std::error_code error;
        std::filesystem::remove_all(path, error);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::filesystem::path operator/(const std::filesystem::path& name) const { return path / name; }

    /// The names of everything in the folder.
    std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(path))
            found.push_back(entry.path().filename().string());
        return found;
    }

    std::filesystem::path path;
};

inline void writeFile(const std::filesystem::path& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

inline std::string fileContent(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace tessaril::testing
