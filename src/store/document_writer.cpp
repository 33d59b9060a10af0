#include "store/document_writer.h"

#include "model/database_json.h"
#include "model/log.h"
#include "store/unreadable_file.h"

#include <string>

namespace tessaril {

DocumentWriter::DocumentWriter(FileSystem& fileSystem, MessageChannel& messageChannel,
                               std::filesystem::path documentPath)
    : files(fileSystem), channel(messageChannel), document(std::move(documentPath)) {}

bool DocumentWriter::write(const liveDatabase& database) {
    if (!encode(database)) return false;

    // Message and document hold the same bytes: they are written once and published twice.
    const auto staged = files.stage(document.parent_path(), pieces);
    const bool sent = staged ? channel.send(styleDBUpdatedMessage, *staged)
                             : channel.send(styleDBUpdatedMessage, pieces);
    if (!sent) logLine("Error sending style database.");

    return staged && keepUnreadable() && staged->publishAs(document);
}

bool DocumentWriter::encode(const liveDatabase& database) {
    auto frame = encodeFrame(database.dbVersion, database.randomHash, database.dateModified);
    if (!frame) return false;

    decltype(encoded) kept;
    kept.reserve(database.styles.size());
    for (const auto& style : database.styles) {
        if (auto known = encoded.extract(style.get())) {
            kept.insert(std::move(known));
            continue;
        }
        if (kept.contains(style.get())) continue;
        auto json = encodeStyle(*style);
        if (!json) {
            encoded.merge(kept);
            return false;
        }
        kept.emplace(style.get(), encodedStyle{style, std::move(*json)});
    }
    encoded = std::move(kept);

    opening = std::move(frame->opening);
    closing = std::move(frame->closing);
    pieces.assign(1, opening);
    for (const auto& style : database.styles) {
        if (pieces.size() > 1) pieces.push_back(",");
        pieces.push_back(encoded.at(style.get()).json);
    }
    pieces.push_back(closing);
    return true;
}

bool DocumentWriter::keepUnreadable() {
    if (!unreadable) return true;
    if (files.exists(document) && !files.keep(document, unreadableName(files, document)))
        return false;
    unreadable = false;
    return true;
}

std::optional<std::string> encodeSnapshot(const liveDatabase& database) {
    const auto frame = encodeFrame(database.dbVersion, database.randomHash, database.dateModified);
    if (!frame) return std::nullopt;
    std::string bytes = frame->opening;
    for (const auto& style : database.styles) {
        const auto json = encodeStyle(*style);
        if (!json) return std::nullopt;
        if (bytes.size() > frame->opening.size()) bytes += ',';
        bytes += *json;
    }
    return bytes += frame->closing;
}

} // namespace tessaril
