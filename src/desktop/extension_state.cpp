#include "desktop/extension_state.h"

#include "model/log.h"
#include "model/text.h"

#include <QDesktopServices>
#include <QFile>
#include <QUrl>

#include <utility>

namespace tessaril {

ExtensionState::ExtensionState(const FileSystem& fileSystem, const std::filesystem::path& container,
                               std::filesystem::path explanation)
    : files(fileSystem), stateFile(container / "extension-state"), page(std::move(explanation)) {}

std::optional<bool> ExtensionState::isEnabled() const {
    const std::optional<std::string> state = files.read(stateFile);
    if (!state) return std::nullopt;
    return trimmed(split(*state, "\n").front()) == "enabled";
}

void ExtensionState::showPreferences() {
    const QString path = QFile::decodeName(QByteArray::fromStdString(page.native()));
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(path)))
        logLine("Unable to open " + page.string());
}

} // namespace tessaril
