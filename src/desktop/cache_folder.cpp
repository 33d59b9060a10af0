#include "desktop/cache_folder.h"

#include <QFile>
#include <QStandardPaths>

#include <sys/stat.h>

#include <cerrno>

namespace tessaril {

std::filesystem::path makeIconCacheFolder() {
    const QString home = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    const std::filesystem::path cache(QFile::encodeName(home).toStdString());
    std::error_code error;
    std::filesystem::create_directories(cache, error);
    std::filesystem::path folder = cache;
    for (const char* name : {"tessaril", "icons"}) {
        folder /= name;
        if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) return {};
    }
    return std::filesystem::is_directory(folder, error) ? folder : std::filesystem::path();
}

} // namespace tessaril
