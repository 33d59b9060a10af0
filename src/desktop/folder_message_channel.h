#pragma once

#include "platform/message_channel.h"

#include <filesystem>

namespace tessaril {

/// A message channel that is a folder which both sides can reach: a message is a file named after
/// its identifier, replaced as a whole. The other side watches the folder.
class FolderMessageChannel : public MessageChannel {
public:
    /// Sends in the sub-folder `wormhole` of `container`, which is made, for this user only, when
    /// the first message is sent. `files` must live longer than the channel.
    FolderMessageChannel(FileSystem& files, const std::filesystem::path& container);

    /// Identifiers are file names: those that are not give false.
    bool send(std::string_view identifier, std::span<const std::string_view> pieces) override;

    /// The payload must have been staged in the container.
    bool send(std::string_view identifier, StagedFile& payload) override;

private:
    bool isReadyFor(std::string_view identifier) const;

    FileSystem& files;
    std::filesystem::path folder;
};

} // namespace tessaril
