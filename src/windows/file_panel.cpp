#include "windows/file_panel.h"

#include "windows/shown_text.h"

#include <QDir>
#include <QFileDialog>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QMimeDatabase>

#include <utility>

namespace tessaril {

namespace {

/// For all panels alike, as long as the process runs. Qt's own memory of it outlives the process
/// and is shared with other programs.
QString& lastFolder() {
    static QString folder;
    return folder;
}

/// Tells files by their names. Qt would read the head of each file that it lists, on the main
/// thread, which takes long in folders on the network and for ever in some of the system's.
class NamesOnly : public QFileIconProvider {
public:
    using QFileIconProvider::icon;
    QIcon icon(const QFileInfo& file) const override {
        return QFileIconProvider::icon(file.isDir() ? Folder : File);
    }
    QString type(const QFileInfo& file) const override {
        return QMimeDatabase().mimeTypeForFile(file, QMimeDatabase::MatchExtension).comment();
    }
};

QString startFolder() {
    const QString& last = lastFolder();
    return !last.isEmpty() && QDir(last).exists() ? last : QDir::homePath();
}

} // namespace

QFileDialog* makeFilePanel(QWidget* parent, std::string_view title, const QString& kind,
                           std::span<const std::string_view> types) {
    QStringList patterns;
    for (const std::string_view type : types)
        patterns.append("*." + qtText(type));
    auto* panel = new QFileDialog(parent, qtText(title), startFolder(),
                                  kind + " (" + patterns.join(' ') + ")");
    panel->setAttribute(Qt::WA_DeleteOnClose);
    static NamesOnly names;
    panel->setIconProvider(&names);
    QObject::connect(panel, &QFileDialog::filesSelected, panel, [](const QStringList& files) {
        if (!files.isEmpty()) lastFolder() = QFileInfo(files.front()).absolutePath();
    });
    return panel;
}

QFileDialog* openSavePanel(QWidget* parent, std::string_view title, const QString& kind,
                           std::span<const std::string_view> types, std::string_view proposedName,
                           std::function<void(const std::filesystem::path&)> save) {
    QFileDialog* panel = makeFilePanel(parent, title, kind, types);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setDefaultSuffix(qtText(types[0]));
    panel->selectFile(qtText(proposedName));
    QObject::connect(panel, &QFileDialog::fileSelected, panel,
                     [save = std::move(save)](const QString& file) { save(pathOf(file)); });
    panel->open();
    return panel;
}

} // namespace tessaril
