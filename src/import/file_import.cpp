#include "import/file_import.h"

#include "formats/moz_document.h"
#include "formats/user_css_reader.h"
#include "model/text.h"

#include <algorithm>
#include <string>

namespace tessaril {

namespace {

constexpr std::string_view noRulesTitle = "CSS File Imported With No Rules";

std::string noRulesText(std::string_view name) {
    return "The style \"" + std::string(name) +
           "\" does not have any defined rules for where it should be applied. If you do not "
           "define these rules, the style will be applied to all sites.";
}

std::string invalidStyleText(std::string_view fileName) {
    return "There was an error importing the file \"" + std::string(fileName) +
           ".\" Please make sure there are no formatting or syntax errors in the file.";
}

std::string_view withoutUserEnding(std::string_view name) {
    constexpr std::string_view ending = ".user";
    if (!name.ends_with(ending)) return name;
    const std::string_view cut = name.substr(0, name.find(ending));
    // A style needs a name: a file named just ".user.css" keeps what it has.
    return cut.empty() ? name : cut;
}

/// The dialog only hides what it does not list; a name that is typed gets past it.
bool isImportable(const std::filesystem::path& file) {
    const std::string name = lowercasedASCII(file.filename().string());
    return std::ranges::any_of(importFileTypes, [&](std::string_view type) {
        return name.ends_with("." + std::string(type));
    });
}

} // namespace

FileImport::FileImport(FileSystem& fileSystem, importSurroundings surroundings)
    : files(fileSystem), machine(std::move(surroundings)) {}

bool FileImport::canImport() const {
    return !machine.list.isLockedForSync();
}

void FileImport::importFiles(const std::vector<std::filesystem::path>& chosen) {
    for (const auto& file : chosen) {
        if (!isImportable(file)) {
            showInvalidStyle(file);
            continue;
        }
        machine.dispatcher.inBackground(taskPriority::utility,
                                        [this, file] { importStyleFile(file); });
    }
}

void FileImport::importStyleFile(const std::filesystem::path& file) {
    auto bytes = files.read(file);
    if (!bytes) return;
    auto text = textFromUTF8(std::move(*bytes));
    if (!text) return;

    // A file name may hold any bytes; one that is not text must not get into the document.
    const std::string baseName = validUTF8(file.stem().string());
    if (!contains(*text, mozDocumentKeyword)) {
        styleContainer style = plainStyle(std::move(*text), machine.making);
        style.styleData.name = withoutUserEnding(baseName);
        const std::string name = style.styleData.name;
        complete(std::move(style),
                 [this, name] { machine.alerts.showAlert(noRulesTitle, noRulesText(name)); });
        return;
    }

    auto style = parseUserCSS(*text, machine.making);
    if (!style) {
        showInvalidStyle(file);
        return;
    }
    setSourceByUpdateAddress(*style);
    std::string& name = style->styleData.name;
    if (name == defaultStyleName) name = baseName;
    name = std::string(withoutUserEnding(name));
    complete(std::move(*style), [] {});
}

void FileImport::showInvalidStyle(const std::filesystem::path& file) const {
    machine.alerts.showAlert(invalidStyleTitle,
                             invalidStyleText(validUTF8(file.filename().string())));
}

void FileImport::complete(styleContainer style, std::function<void()> afterwards) {
    machine.dispatcher.onMain(
        [this, style = std::move(style), afterwards = std::move(afterwards)]() mutable {
            appendImportedStyle(machine, std::move(style));
            afterwards();
        });
}

} // namespace tessaril
