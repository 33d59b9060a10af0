#include "store/style_store.h"

#include "events/notification_names.h"
#include "model/database_json.h"
#include "model/log.h"
#include "preferences/preference_keys.h"
#include "store/atomic_write.h"
#include "store/installed_styles.h"

#include <algorithm>
#include <utility>

namespace tessaril {

namespace {

constexpr std::string_view preCloudBackupName = "styledb-pre-icloud.sdb";

constexpr std::string_view writeErrorLine = "Error writing style database.";
constexpr std::string_view decodeErrorLine = "Error decoding style database.";

constexpr std::string_view writeErrorTitle = "Error writing style database";
constexpr std::string_view saveErrorText =
    "An error occurred while trying to save changes to your styles. Your changes may not have been "
    "saved.";
constexpr std::string_view exportErrorText =
    "An error occurred while trying to back up your style database. Please make sure you have "
    "permission to write to the desired path.";
constexpr std::string_view backupErrorText =
    "An error occurred while trying to keep a backup of your styles as they are now, so nothing "
    "was changed. Please make sure that your disk is not full and that you have permission to "
    "write to the folder \"backups\" beside your style database.";

} // namespace

StyleStore::StyleStore(storeSurroundings surroundings, std::filesystem::path containerPath)
    : machine(std::move(surroundings))
    , container(std::move(containerPath))
    , writer(machine.files, machine.channel, container / documentName)
    , backups(machine.files, backupFolderOf(container), container / documentName, machine.clock)
    , saves(machine.dispatcher, [this](bool withUpload) { save(withUpload); }) {}

void StyleStore::setUploadHandler(std::function<void()> handler) {
    upload = std::move(handler);
}

// Persistence

void StyleStore::loadDatabase() {
    std::call_once(loaded, [this] { load(); });
}

void StyleStore::load() {
    const std::filesystem::path document = container / documentName;
    liveDatabase found = liveDatabaseFrom(makeEmptyDatabase());

    if (!machine.files.exists(document)) {
        const auto bytes = encodeDatabase(makeEmptyDatabase());
        if (!bytes || !writeAtomically(machine.files, document, *bytes)) reportSaveFailure();
    } else {
        auto bytes = machine.files.read(document);
        auto decoded = bytes ? decodeDatabase(std::move(*bytes)) : std::nullopt;
        if (decoded) {
            found = liveDatabaseFrom(std::move(*decoded));
        } else {
            logLine(decodeErrorLine);
            writer.keepUnreadableDocument();
        }
    }
    const std::lock_guard lock(mutex);
    database = std::move(found);
}

void StyleStore::saveDatabase() {
    withDatabase([](liveDatabase& live) {
        live.randomHash = randomDraw();
        live.dateModified = now();
    });
    saves.request(true);
}

void StyleStore::saveDatabaseWithoutUpload() {
    loadDatabase();
    saves.request(false);
}

bool StyleStore::waitForSaves() {
    saves.finish();
    return !lastSaveFailed;
}

void StyleStore::finishSaves() {
    if (waitForSaves()) return;
    // What the failed save held is in memory only, and about to be gone.
    saves.request(true);
    saves.finish();
}

void StyleStore::save(bool withUpload) {
    // What is unreadable gets a name of its own. A save that would wait for a backup to work could
    // lose more than the backup holds, so this one may fail.
    if (!writer.keepsUnreadableDocument()) backups.keepOnceADay();
    owesUpload = owesUpload || withUpload;
    lastSaveFailed = !writer.write(snapshot());
    if (lastSaveFailed) {
        reportSaveFailure();
        return;
    }
    if (std::exchange(owesUpload, false) && upload &&
        machine.preferences.boolean(preferenceKeys::useiCloud))
        upload();
}

void StyleStore::reportSaveFailure() {
    logLine(writeErrorLine);
    machine.alerts.showAlert(writeErrorTitle, saveErrorText);
}

bool StyleStore::keepDocument() {
    loadDatabase();
    // Deleted by another hand it has to come back first: what the user has is in memory only.
    if (!machine.files.exists(container / documentName)) saves.request(false);
    if (!waitForSaves()) {
        saves.request(false);
        if (!waitForSaves()) return false;
    }
    return writer.keepsUnreadableDocument() || backups.keep();
}

/// The same for a command of the user, who is told where it fails.
bool StyleStore::keepsDocumentOrTells() {
    if (keepDocument()) return true;
    machine.alerts.showAlert(writeErrorTitle, backupErrorText);
    return false;
}

bool StyleStore::writeSnapshot(const std::filesystem::path& file) {
    const auto bytes = encodeSnapshot(snapshot());
    if (bytes && writeAtomically(machine.files, file, *bytes)) return true;
    logLine(writeErrorLine);
    return false;
}

void StyleStore::exportDatabase(const std::filesystem::path& file) {
    machine.dispatcher.inBackground(taskPriority::utility, [this, file] {
        if (!writeSnapshot(file)) machine.alerts.showAlert(writeErrorTitle, exportErrorText);
    });
}

void StyleStore::writePreCloudBackup() {
    const std::filesystem::path backup = container / preCloudBackupName;
    if (!machine.files.exists(backup)) writeSnapshot(backup);
}

void StyleStore::importDatabase(const std::filesystem::path& file) {
    loadDatabase();
    if (!machine.files.exists(file)) return;
    auto bytes = machine.files.read(file);
    auto decoded = bytes ? decodeDatabase(std::move(*bytes)) : std::nullopt;
    if (!decoded) {
        logLine(decodeErrorLine);
        machine.alerts.showAlert(readErrorTitle, readErrorText);
        return;
    }
    if (!keepsDocumentOrTells()) return;
    auto imported = liveDatabaseFrom(std::move(*decoded));
    withDatabase([&](liveDatabase& live) {
        live.styles = mergedStyles(live.styles, std::move(imported.styles));
    });
    saveDatabase();
}

bool StyleStore::resetDatabase() {
    if (!keepsDocumentOrTells()) return false;
    withDatabase([](liveDatabase& live) { live = liveDatabaseFrom(makeEmptyDatabase()); });
    saveDatabase();
    return true;
}

bool StyleStore::changeDatabase(const std::function<bool(liveDatabase&)>& change) {
    return withDatabase([&](liveDatabase& live) {
        liveDatabase changed = live;
        if (!change(changed)) return false;
        live = std::move(changed);
        return true;
    });
}

// Queries

liveDatabase StyleStore::snapshot() {
    return withDatabase([](const liveDatabase& live) { return live; });
}

std::optional<styleContainer> StyleStore::styleWithID(std::int64_t id) {
    const auto style = findStyle(id);
    return style ? std::optional(*style) : std::nullopt;
}

std::optional<std::size_t> StyleStore::indexOfStyle(std::int64_t id) {
    return withDatabase(
        [id](const liveDatabase& live) { return tessaril::indexOfStyle(live.styles, id); });
}

std::size_t StyleStore::countStyles() {
    return withDatabase([](const liveDatabase& live) { return live.styles.size(); });
}

std::shared_ptr<const styleContainer> StyleStore::styleAt(std::size_t index) {
    return withDatabase([index](const liveDatabase& live) {
        return index < live.styles.size() ? live.styles[index] : nullptr;
    });
}

std::vector<std::unique_ptr<styleObject>>
StyleStore::styleRows(const std::function<void(styleObject&, const styleContainer&)>& complete) {
    const liveDatabase live = snapshot();
    std::vector<std::unique_ptr<styleObject>> rows;
    rows.reserve(live.styles.size());
    for (const auto& style : live.styles) {
        rows.push_back(std::make_unique<styleObject>(*style));
        if (complete) complete(*rows.back(), *style);
    }
    return rows;
}

std::size_t StyleStore::countNonCustomStyles() {
    const liveDatabase live = snapshot();
    return static_cast<std::size_t>(std::ranges::count_if(
        live.styles, [](const auto& style) { return style->source != sourceCustom; }));
}

bool StyleStore::mostStylesEnabled() {
    const liveDatabase live = snapshot();
    const auto enabled = static_cast<std::size_t>(
        std::ranges::count_if(live.styles, [](const auto& style) { return style->isEnabled; }));
    return enabled >= live.styles.size() / 2;
}

bool StyleStore::isDuplicateStyle(const styleContainer& style) {
    // For one style a look at each is faster than an index of all: names and sizes differ early.
    const liveDatabase live = snapshot();
    return std::ranges::any_of(live.styles, [&](const auto& each) {
        return equalWithoutCompiled(each->styleData, style.styleData);
    });
}

bool StyleStore::isUserCSSInstalled(const styleContainer& style) {
    const liveDatabase live = snapshot();
    return InstalledStyles(live.styles).isUserCSSInstalled(style);
}

std::int64_t StyleStore::generateUniqueID() {
    const liveDatabase live = snapshot();
    return tessaril::generateUniqueID(live.styles);
}

std::shared_ptr<const styleContainer> StyleStore::findStyle(std::int64_t id) {
    return withDatabase([id](const liveDatabase& live) {
        const auto index = tessaril::indexOfStyle(live.styles, id);
        return index ? live.styles[*index] : nullptr;
    });
}

// Changes

std::int64_t StyleStore::appendStyle(styleContainer style) {
    return withDatabase([&](liveDatabase& live) {
        // Two styles that were made at the same time may have drawn the same identifier.
        if (tessaril::indexOfStyle(live.styles, style.uniqueID))
            style.uniqueID = tessaril::generateUniqueID(live.styles);
        live.styles.push_back(std::make_shared<const styleContainer>(std::move(style)));
        return live.styles.back()->uniqueID;
    });
}

bool StyleStore::changeStyle(std::int64_t id, const std::function<void(styleContainer&)>& change) {
    // A change may compile, which takes long, so it is made on a copy without the lock and made
    // again in the rare case that the style was replaced meanwhile.
    for (;;) {
        const auto before = findStyle(id);
        if (!before) return false;
        auto after = std::make_shared<styleContainer>(*before);
        change(*after);
        const bool installed = withDatabase([&](liveDatabase& live) {
            const auto index = tessaril::indexOfStyle(live.styles, id);
            if (!index || live.styles[*index] != before) return false;
            live.styles[*index] = std::move(after);
            return true;
        });
        if (installed) return true;
    }
}

void StyleStore::applyStyleProperties(std::int64_t id, const styleContainer& from) {
    std::function<void()> tellErrors;
    const bool changed = changeStyle(id, [&](styleContainer& style) {
        style.allowIframe = from.allowIframe;
        style.exclURL = from.exclURL;
        style.exclDomain = from.exclDomain;
        style.exclPrefix = from.exclPrefix;
        style.exclRegExp = from.exclRegExp;
        style.systemTheme = from.systemTheme;
        style.userVariables = from.userVariables;
        tellErrors = machine.compileStyle(style);
        style.dateModified = now();
    });
    if (!changed) return;
    saveDatabase();
    if (tellErrors) tellErrors();
}

void takeEditorChanges(styleContainer& style, const styleContainer& from) {
    style.styleData = from.styleData;
    style.version = from.version;
    style.namespace_ = from.namespace_;
    style.description = from.description;
    style.author = from.author;
    style.license = from.license;
    style.preprocessor = from.preprocessor;
}

void StyleStore::applyEditorChanges(std::int64_t id, const styleContainer& from) {
    std::function<void()> tellErrors;
    const bool changed = changeStyle(id, [&](styleContainer& style) {
        takeEditorChanges(style, from);
        tellErrors = machine.compileStyle(style);
        style.dateModified = now();
    });
    if (!changed) return;
    saveDatabase();
    machine.center.post(notifications::updateFavicons, id);
    if (tellErrors) tellErrors();
}

void StyleStore::recompileStyle(std::int64_t id) {
    std::function<void()> tellErrors;
    bool isDifferent = false;
    const bool changed = changeStyle(id, [&](styleContainer& style) {
        const styleJSON before = style.styleData;
        tellErrors = machine.compileStyle(style);
        isDifferent = style.styleData != before;
        // What is older counts as known to the user's other machines.
        if (isDifferent) style.dateModified = now();
    });
    if (!changed) return;
    if (isDifferent) saveDatabase();
    if (tellErrors) tellErrors();
}

bool StyleStore::setStyleData(std::int64_t id, styleJSON data) {
    return changeStyle(id, [&](styleContainer& style) {
        style.styleData = data;
        style.dateModified = now();
    });
}

bool StyleStore::replaceStyleKeepingSettings(std::int64_t id, styleContainer newStyle) {
    return changeStyle(id, [&](styleContainer& style) {
        styleContainer replacement = newStyle;
        replacement.isEnabled = style.isEnabled;
        replacement.allowIframe = style.allowIframe;
        replacement.exclURL = style.exclURL;
        replacement.exclDomain = style.exclDomain;
        replacement.exclPrefix = style.exclPrefix;
        replacement.exclRegExp = style.exclRegExp;
        replacement.systemTheme = style.systemTheme;
        style = std::move(replacement);
    });
}

} // namespace tessaril
