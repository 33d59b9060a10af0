#pragma once

#include "import/imported_style.h"
#include "platform/file_system.h"

#include <filesystem>
#include <functional>
#include <string_view>
#include <vector>

namespace tessaril {

/// The dialog of the "Import User CSS File" command.
inline constexpr std::string_view importDialogTitle = "Import User CSS File";
inline constexpr std::string_view importFileTypes[] = {"user.css", "css", "styl", "less"};

/// Makes a style of each style file that the user chose or the system handed over.
class FileImport {
public:
    FileImport(FileSystem& files, importSurroundings surroundings);

    /// Whether the command may open its dialog now; not while the list is locked for sync.
    bool canImport() const;

    /// Imports each file of the types above, in any case, on a background task of its own; of
    /// others, which the user must have typed, an alert says that they give no style. Returns at
    /// once.
    void importFiles(const std::vector<std::filesystem::path>& chosen);

    /// Reads the file and appends its style to the database, on the main thread; alerts as the
    /// outcome asks. A file that cannot be read as UTF-8 text is passed over without a word.
    void importStyleFile(const std::filesystem::path& file);

private:
    void showInvalidStyle(const std::filesystem::path& file) const;
    void complete(styleContainer style, std::function<void()> afterwards);

    FileSystem& files;
    importSurroundings machine;
};

} // namespace tessaril
