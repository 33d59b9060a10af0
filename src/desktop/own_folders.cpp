#include "desktop/own_folders.h"

#include "store/database_backups.h"

#include <QFile>
#include <QStandardPaths>

#include <sys/stat.h>

#include <cerrno>

namespace tessaril {

namespace {

/// Makes a folder of this user alone where it is missing; empty when it cannot be made.
std::filesystem::path madeFolder(std::filesystem::path folder) {
    if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) return {};
    std::error_code error;
    return std::filesystem::is_directory(folder, error) ? folder : std::filesystem::path();
}

} // namespace

std::filesystem::path makeIconCacheFolder() {
    const QString home = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    const std::filesystem::path cache(QFile::encodeName(home).toStdString());
    std::error_code error;
    std::filesystem::create_directories(cache, error);
    const std::filesystem::path own = madeFolder(cache / "tessaril");
    return own.empty() ? own : madeFolder(own / "icons");
}

std::filesystem::path makeImportFolder(const std::filesystem::path& container) {
    return madeFolder(container / "imports");
}

std::filesystem::path makeDraftFolder(const std::filesystem::path& container) {
    return madeFolder(container / "drafts");
}

std::filesystem::path makeBackupFolder(const std::filesystem::path& container) {
    return madeFolder(backupFolderOf(container));
}

} // namespace tessaril
