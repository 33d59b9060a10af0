#include "desktop/directory_resources.h"

#include "model/text.h"

#include <QFile>
#include <QString>
#include <QUrl>

namespace tessaril {

DirectoryResources::DirectoryResources(std::filesystem::path scriptFolder)
    : folder(std::move(scriptFolder)) {}

std::optional<scriptSource> DirectoryResources::script(std::string_view name) const {
    QFile file(folder / name);
    if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) return std::nullopt;
    auto text = textFromUTF8(bytes.toStdString());
    if (!text) return std::nullopt;
    return scriptSource{
        std::move(*text),
        QUrl::fromLocalFile(file.fileName()).toString(QUrl::FullyEncoded).toStdString()};
}

} // namespace tessaril
