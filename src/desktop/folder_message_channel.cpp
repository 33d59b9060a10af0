#include "desktop/folder_message_channel.h"

#include <sys/stat.h>

#include <cerrno>

namespace tessaril {

FolderMessageChannel::FolderMessageChannel(FileSystem& fileSystem,
                                           const std::filesystem::path& container)
    : files(fileSystem), folder(container / "wormhole") {}

bool FolderMessageChannel::send(std::string_view identifier,
                                std::span<const std::string_view> pieces) {
    if (!isReadyFor(identifier)) return false;
    const auto payload = files.stage(folder, pieces);
    return payload && payload->publishAs(folder / identifier);
}

bool FolderMessageChannel::send(std::string_view identifier, StagedFile& payload) {
    return isReadyFor(identifier) && payload.publishAs(folder / identifier);
}

bool FolderMessageChannel::isReadyFor(std::string_view identifier) const {
    if (identifier.empty() || identifier.front() == '.' || identifier.find('/') != identifier.npos)
        return false;
    return ::mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST;
}

} // namespace tessaril
