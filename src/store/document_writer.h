#pragma once

#include "platform/file_system.h"
#include "platform/message_channel.h"
#include "store/live_database.h"

#include <atomic>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tessaril {

/// The message that carries the whole document to the browser extension.
inline constexpr std::string_view styleDBUpdatedMessage = "styleDBUpdated";

/// Writes the document: to the extension first, then to its file. Keeps the JSON of every style
/// beside it, so that only what changed is encoded anew. One thread at a time.
class DocumentWriter {
public:
    DocumentWriter(FileSystem& files, MessageChannel& channel, std::filesystem::path document);

    /// Sends and writes `database`. Gives whether both the encoding and the writing worked; when
    /// not, the document is as it was. The message goes out even when the writing fails.
    bool write(const liveDatabase& database);

    /// The document on disk could not be read: the next write keeps it beside itself as
    /// `styledb-unreadable-<date>.sdb` before it replaces it, and fails when it cannot.
    void keepUnreadableDocument() { unreadable = true; }
    /// Whether the document on disk is one that the next write keeps so.
    bool keepsUnreadableDocument() const { return unreadable; }

private:
    bool encode(const liveDatabase& database);
    bool keepUnreadable();

    struct encodedStyle {
        std::shared_ptr<const styleContainer> style; ///< held so that its address stays its own
        std::string json;
    };

    FileSystem& files;
    MessageChannel& channel;
    std::filesystem::path document;
    std::atomic<bool> unreadable = false;
    std::unordered_map<const styleContainer*, encodedStyle> encoded;
    std::string opening;
    std::string closing;
    std::vector<std::string_view> pieces; ///< of the last encoding
};

/// The whole document of `database` as it would be written; nothing when it cannot be represented.
std::optional<std::string> encodeSnapshot(const liveDatabase& database);

} // namespace tessaril
