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
    : files(fileSystem), folder(std::move(draftFolder)) {
    if (folder.empty()) logLine("There is no folder for unsaved texts; they are not kept.");
}

StyleDrafts::Version StyleDrafts::next() {
    return ++last;
}

std::filesystem::path StyleDrafts::fileOf(std::int64_t id) const {
    return folder / (std::to_string(id) + draftExtension);
}

/// To drop a version outranks to keep it.
bool StyleDrafts::isLatest(std::int64_t id, Version rank) {
    Version& known = latest[id];
    if (rank < known) return false;
    known = rank;
    return true;
}

bool StyleDrafts::keep(const styleContainer& style, Version version) {
    const std::lock_guard lock(mutex);
    if (folder.empty()) return false;
    if (!isLatest(style.uniqueID, 2 * version)) return true;
    const auto bytes = encodeDatabase({.styles = {style}});
    const std::array<std::string_view, 1> pieces{bytes ? std::string_view(*bytes) : ""};
    const auto staged = bytes ? files.stage(folder, pieces) : nullptr;
    if (staged && staged->publishAs(fileOf(style.uniqueID))) return true;
    logLine("Error keeping the unsaved text of " + style.styleData.name + ".");
    return false;
}

void StyleDrafts::drop(std::int64_t id, Version version) {
    const std::lock_guard lock(mutex);
    if (!folder.empty() && isLatest(id, 2 * version + 1)) files.remove(fileOf(id));
}

std::optional<styleContainer> StyleDrafts::read(const std::filesystem::path& file) const {
    auto bytes = files.read(file);
    auto document = bytes ? decodeDatabase(std::move(*bytes)) : std::nullopt;
    if (document && document->styles.size() == 1 &&
        file == fileOf(document->styles.front().uniqueID))
        return std::move(document->styles.front());
    logLine("An unsaved text cannot be read: " + file.filename().string());
    return std::nullopt;
}

std::optional<styleContainer> StyleDrafts::find(std::int64_t id) const {
    if (folder.empty() || !files.exists(fileOf(id))) return std::nullopt;
    return read(fileOf(id));
}

std::vector<styleContainer> StyleDrafts::all() const {
    std::vector<styleContainer> drafts;
    if (folder.empty()) return drafts;
    for (const fileEntry& file : files.list(folder)) {
        if (file.path.extension() != draftExtension) continue;
        if (auto draft = read(file.path)) drafts.push_back(std::move(*draft));
    }
    return drafts;
}

} // namespace tessaril
