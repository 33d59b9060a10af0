#pragma once

#include "platform/alerts.h"
#include "platform/dispatcher.h"
#include "platform/file_system.h"

#include <filesystem>
#include <span>
#include <string>
#include <string_view>

namespace tessaril {

/// The panel that picks the file. Names of other types are not taken.
inline constexpr std::string_view exportStyleTitle = "Export User CSS File";
inline constexpr std::string_view exportStyleTypes[] = {"user.css", "css"};

/// The panel for the code of one section.
inline constexpr std::string_view exportSectionTitle = "Export Section as CSS File";
inline constexpr std::string_view exportSectionTypes[] = {"css"};

/// The file name that the panel proposes: `name` and the first type, as a name that every file
/// system takes, that a file panel takes as one name, and that does not hide the file. UTF-8.
std::string proposedExportName(std::string_view name,
                               std::span<const std::string_view> types = exportStyleTypes);

/// Writes a text to a file that the user picked. Main thread only.
class StyleExport {
public:
    /// All outlive the writing that is under way.
    StyleExport(FileSystem& files, Alerts& alerts, Dispatcher& dispatcher);

    /// Writes `text`, UTF-8, in the background and in place; an alert says when that fails. A name
    /// of another type gets the first one, and where that makes it one that exists, the user is
    /// asked.
    void write(const std::filesystem::path& chosen, std::string text,
               std::span<const std::string_view> types = exportStyleTypes);

private:
    FileSystem& files;
    Alerts& alerts;
    Dispatcher& dispatcher;
};

} // namespace tessaril
