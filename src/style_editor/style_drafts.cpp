#include "style_editor/style_drafts.h"

#include "model/database_json.h"
#include "model/log.h"

#include <array>
#include <string>
#include <utility>

namespace tessaril {

namespace {

constexpr const char* draftExtension = ".draft";

} // namespace

StyleDrafts::StyleDrafts(FileSystem& fileSystem, std::filesystem::path draftFolder)
    : files(fileSystem), folder(std::move(draftFolder)) {}

StyleDrafts::Version StyleDrafts::next() {
    const std::lock_guard lock(mutex);
    return ++last;
}

std::filesystem::path StyleDrafts::fileOf(std::int64_t id) const {
    return folder / (std::to_string(id) + draftExtension);
}

bool StyleDrafts::isLatest(std::int64_t id, Version version) {
    Version& known = latest[id];
    if (version < known) return false;
    known = version;
    return true;
}

void StyleDrafts::keep(const styleContainer& style, Version version) {
    const std::lock_guard lock(mutex);
    if (folder.empty() || !isLatest(style.uniqueID, version)) return;
    const auto bytes = encodeDatabase({.styles = {style}});
    const std::array<std::string_view, 1> pieces{bytes ? std::string_view(*bytes) : ""};
    const auto staged = bytes ? files.stage(folder, pieces) : nullptr;
    if (!staged || !staged->publishAs(fileOf(style.uniqueID)))
        logLine("Error keeping the unsaved text of " + style.styleData.name + ".");
}

void StyleDrafts::drop(std::int64_t id, Version version) {
    const std::lock_guard lock(mutex);
    if (!folder.empty() && isLatest(id, version)) files.remove(fileOf(id));
}

std::vector<styleContainer> StyleDrafts::all() const {
    std::vector<styleContainer> drafts;
    if (folder.empty()) return drafts;
    for (const fileEntry& file : files.list(folder)) {
        if (file.path.extension() != draftExtension) continue;
        auto bytes = files.read(file.path);
        auto document = bytes ? decodeDatabase(std::move(*bytes)) : std::nullopt;
        if (!document || document->styles.size() != 1 ||
            file.path != fileOf(document->styles.front().uniqueID)) {
            logLine("An unsaved text cannot be read: " + file.path.filename().string());
            continue;
        }
        drafts.push_back(std::move(document->styles.front()));
    }
    return drafts;
}

} // namespace tessaril
