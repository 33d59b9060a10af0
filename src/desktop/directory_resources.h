#pragma once

#include "platform/resources.h"

#include <filesystem>

namespace tessaril {

/// The files of one folder. They are read anew each time they are asked for.
class DirectoryResources : public Resources {
public:
    explicit DirectoryResources(std::filesystem::path folder);

    /// The address is a file URL.
    std::optional<scriptSource> script(std::string_view name) const override;

private:
    std::filesystem::path folder;
};

} // namespace tessaril
