#include "sync/cloud_merging.h"

#include "events/notification_names.h"
#include "model/database_json.h"
#include "model/log.h"
#include "preferences/preference_keys.h"
#include "store/atomic_write.h"
#include "store/unreadable_file.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace tessaril {

namespace {

constexpr std::string_view cloudFileName = "styledb-cloud.sdb"; ///< of one that cannot be read

constexpr std::string_view decodeErrorLine = "Error decoding iCloud style database.";
constexpr std::string_view decodeErrorTitle = "Error reading iCloud style database";
constexpr std::string_view decodeErrorText =
    "Tessaril may need to be updated, or the style database may be corrupt. Please try resetting "
    "the database from Preferences.";

constexpr std::string_view openStylesTitle = "Open Styles Changed in iCloud";
constexpr std::string_view openStylesText =
    "One or more styles open in the Style Editor changed in iCloud, and have been forcibly closed.";

void logStyles(std::string_view what, const liveDatabase::styleList& styles) {
    for (const auto& style : styles)
        logLine(std::string(what) + style->styleData.name);
}

/// The styles that are no more as they were.
std::vector<std::int64_t> changedBetween(const liveDatabase& before, const liveDatabase& after) {
    std::unordered_set<const styleContainer*> kept;
    for (const auto& style : after.styles)
        kept.insert(style.get());
    std::vector<std::int64_t> changed;
    for (const auto& style : before.styles)
        if (!kept.contains(style.get())) changed.push_back(style->uniqueID);
    return changed;
}

} // namespace

CloudMerging::CloudMerging(cloudMergingSurroundings surroundings)
    : machine(std::move(surroundings)) {}

std::optional<liveDatabase> CloudMerging::decodeCloudDatabase(const cloudRecord& record,
                                                              bool isQuiet) {
    // A record without a file counts as one that cannot be read.
    auto decoded = record.file ? decodeDatabase(*record.file) : std::nullopt;
    if (decoded) return liveDatabaseFrom(std::move(*decoded));
    logLine(decodeErrorLine);
    if (std::exchange(alertedTag, record.changeTag) != record.changeTag || !isQuiet)
        machine.alerts.showAlert(decodeErrorTitle, decodeErrorText);
    return std::nullopt;
}

bool CloudMerging::keepUnreadable(const cloudRecord& record) {
    if (!record.file || record.changeTag == keptTag) return true;
    if (isKeptAlready(*record.file)) return true; // by an earlier run
    const auto path = unreadableName(machine.files, machine.container / cloudFileName);
    if (!writeAtomically(machine.files, path, *record.file)) {
        logLine("Error keeping the unreadable style database of the cloud.");
        return false;
    }
    keptTag = record.changeTag;
    return true;
}

bool CloudMerging::isKeptAlready(const std::string& bytes) const {
    const std::string kept = std::filesystem::path(cloudFileName).stem().string() + "-unreadable-";
    return std::ranges::any_of(machine.files.list(machine.container), [&](const fileEntry& entry) {
        return entry.path.filename().string().starts_with(kept) && entry.size == bytes.size() &&
               machine.files.read(entry.path) == bytes;
    });
}

cloudMergeOutcome CloudMerging::mergeFirstFetch(const liveDatabase& cloud, bool isFirst) {
    if (!machine.preferences.boolean(preferenceKeys::useiCloud)) return cloudMergeOutcome::failed;
    const syncHistory history{.lastSync =
                                  machine.preferences.real(preferenceKeys::lastSuccessfulSync),
                              .isFirst = isFirst};
    // Nothing is to be kept where nothing will be replaced.
    const auto unchanged = [this] {
        return machine.store.waitForSaves() ? cloudMergeOutcome::unchanged
                                            : cloudMergeOutcome::unwritten;
    };
    if (holdSameStyles(cloud, machine.store.snapshot())) return unchanged();
    if (!keepsDocument()) return cloudMergeOutcome::failed;
    std::optional<databaseMerge> merge;
    std::vector<std::int64_t> changed;
    machine.store.changeDatabase([&](liveDatabase& live) {
        merge = tessaril::mergeFirstFetch(cloud, live, history);
        if (!merge) return false;
        changed = changedBetween(live, merge->merged);
        live = std::move(merge->merged);
        return true;
    });
    if (!merge) return unchanged();
    logStyles("Removed, as the cloud has it no more; recoverable in this run: ", merge->recovered);
    logStyles("Dropped, as another machine has deleted it: ", merge->dropped);
    machine.recoveryList.add(merge->recovered);
    for (std::size_t i = 0; i < merge->recovered.size(); ++i)
        machine.center.post(notifications::deletedStylesChanged);
    machine.store.saveDatabase();
    const bool isWritten = machine.store.waitForSaves();
    // Also where the list was locked: windows may have been open before, and what they save must
    // not get into the place of another style.
    if (!changed.empty()) tellOfChanges(changed, false);
    return isWritten ? cloudMergeOutcome::changed : cloudMergeOutcome::unwritten;
}

cloudMergeOutcome CloudMerging::mergeRemoteChange(const liveDatabase& cloud) {
    if (!machine.preferences.boolean(preferenceKeys::useiCloud)) return cloudMergeOutcome::failed;
    if (!keepsDocument()) return cloudMergeOutcome::failed;
    databaseMerge merge;
    machine.store.changeDatabase([&](liveDatabase& live) {
        merge = tessaril::mergeRemoteChange(cloud, live);
        live = merge.merged;
        return true;
    });
    logStyles("Removed, as another machine has; recoverable in this run: ", merge.recovered);
    machine.recoveryList.add(merge.recovered);
    machine.store.saveDatabaseWithoutUpload();
    const bool isWritten = machine.store.waitForSaves();
    machine.preferences.set(preferenceKeys::lastSuccessfulSync, now());
    machine.center.post(notifications::refreshTable);
    tellOfChanges(merge.changed, !machine.recoveryList.isEmpty());
    return isWritten ? cloudMergeOutcome::changed : cloudMergeOutcome::unwritten;
}

bool CloudMerging::keepsDocument() {
    if (machine.store.keepDocument()) return true;
    logLine("Not merged with the cloud, as the style database could not be kept.");
    return false;
}

void CloudMerging::tellOfChanges(const std::vector<std::int64_t>& changed, bool tellsOfRemoved) {
    // Now, as the editors leave the registry when they are told.
    const bool isAnyOpen = std::ranges::any_of(
        changed, [this](std::int64_t id) { return machine.openStyles.contains(id); });
    machine.center.post({notifications::stylesChangedInCloud, {{"changedIDs", changed}}});
    if (tellsOfRemoved) machine.center.post(notifications::deletedStylesChanged);
    for (const std::int64_t id : changed)
        machine.center.post(notifications::closeProperties, id);
    if (isAnyOpen) machine.alerts.showAlert(openStylesTitle, openStylesText);
}

} // namespace tessaril
