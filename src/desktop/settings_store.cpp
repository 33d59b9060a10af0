#include "desktop/settings_store.h"

#include "model/log.h"
#include "model/text.h"
#include "store/atomic_write.h"
#include "store/unreadable_file.h"

#include <QFile>
#include <QStandardPaths>

#include <array>
#include <charconv>
#include <system_error>
#include <utility>

namespace tessaril {

namespace {

std::optional<bool> booleanFrom(std::string_view text) {
    if (text == "true" || text == "1") return true;
    if (text == "false" || text == "0") return false;
    return std::nullopt;
}

/// Reads `text` as the type of the value that it is called with.
struct reader {
    std::string_view text;

    std::optional<preferenceValue> operator()(bool) const { return booleanFrom(text); }
    std::optional<preferenceValue> operator()(std::int64_t) const { return parseInteger(text); }
    std::optional<preferenceValue> operator()(double) const { return parseDouble(text); }
    std::optional<preferenceValue> operator()(const std::string&) const {
        return std::string(text);
    }
};

struct writer {
    std::string operator()(bool value) const { return value ? "true" : "false"; }
    std::string operator()(std::int64_t value) const { return std::to_string(value); }
    // The shortest text that reads back to the same number.
    std::string operator()(double value) const {
        std::array<char, 32> digits{};
        return {digits.data(),
                std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr};
    }
    std::string operator()(const std::string& value) const { return value; }
};

} // namespace

SettingsStore::SettingsStore(std::filesystem::path settingsFile) : file(std::move(settingsFile)) {
    takeOver();
}

std::optional<preferenceValue> SettingsStore::value(std::string_view key,
                                                    const preferenceValue& like) const {
    const std::lock_guard lock(mutex);
    const auto text = known.value(key);
    return text ? std::visit(reader{*text}, like) : std::nullopt;
}

void SettingsStore::setValue(std::string_view key, const preferenceValue& value) {
    change(key, std::visit(writer{}, value));
}

void SettingsStore::removeValue(std::string_view key) {
    change(key, std::nullopt);
}

void SettingsStore::change(std::string_view key, std::optional<std::string> newText) {
    const std::lock_guard lock(mutex);
    unwritten.insert_or_assign(std::string(key), std::move(newText));
    const bool mayReplace = takeOver();
    for (const auto& [unwrittenKey, text] : unwritten) {
        if (text)
            known.set(unwrittenKey, *text);
        else
            known.remove(unwrittenKey);
    }
    if (mayReplace && write())
        unwritten.clear();
    else
        logLine("Error writing preferences: " + validUTF8(file.string()));
}

/// Brings what is known up to date with the file. Gives whether the file may be replaced.
bool SettingsStore::takeOver() {
    if (!files.exists(file)) return true;
    auto bytes = files.read(file);
    std::error_code error;
    if (!bytes && std::filesystem::is_regular_file(file, error)) {
        // Nobody has damaged it, it may not be read: it is not ours to replace.
        logLine("Preferences cannot be read: " + validUTF8(file.string()));
        return false;
    }
    auto parsed = bytes ? IniText::parse(std::move(*bytes)) : std::nullopt;
    if (!parsed) return moveAside();
    const bool isCutShort = parsed->isCutShort();
    // A file that was cut, were it to nothing, is no wish to forget everything.
    if (known.isEmpty() || !(isCutShort || parsed->isEmpty())) known = std::move(*parsed);
    return !isCutShort || moveAside();
}

bool SettingsStore::moveAside() {
    const std::filesystem::path kept = unreadableName(files, file);
    const std::string name = validUTF8(file.string());
    if (!files.keep(file, kept)) {
        logLine("Preferences are damaged and cannot be moved aside: " + name);
        return false;
    }
    logLine("Preferences are damaged and kept as " + validUTF8(kept.string()));
    // Kept under a second name the file is still in its place.
    return !files.exists(file) || write();
}

bool SettingsStore::write() {
    std::error_code error;
    std::filesystem::create_directories(file.parent_path(), error);
    return writeAtomically(files, file, known.text());
}

std::filesystem::path standardPreferencesFile() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    return std::filesystem::path(QFile::encodeName(folder).toStdString()) / "tessaril" /
           "tessaril.conf";
}

std::filesystem::path sharedPreferencesFile(const std::filesystem::path& container) {
    return container / "preferences.ini";
}

} // namespace tessaril
