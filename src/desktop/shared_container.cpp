#include "desktop/shared_container.h"

#include "store/style_store.h"

#include <QFile>
#include <QStandardPaths>

#include <sys/stat.h>

#include <cerrno>

namespace tessaril {

std::optional<std::filesystem::path> makeSharedContainer() {
    const QString home = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    const std::filesystem::path data(QFile::encodeName(home).toStdString());
    const std::filesystem::path container = data / applicationGroup;

    std::error_code error;
    std::filesystem::create_directories(data, error);
    if (::mkdir(container.c_str(), 0700) != 0 && errno != EEXIST) return std::nullopt;
    if (!std::filesystem::is_directory(container, error)) return std::nullopt;
    return container;
}

} // namespace tessaril
