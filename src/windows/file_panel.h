#pragma once

#include <QString>

#include <filesystem>
#include <functional>
#include <span>
#include <string_view>

class QFileDialog;
class QWidget;

namespace tessaril {

/// A panel that picks files, over `parent`, which goes by itself when it is closed. It starts in
/// the folder that the last panel of this run picked from; the first one in the home folder.
/// - kind: what the files are called, for the panel's filter
/// - types: their name's endings, without the dot; UTF-8, as is the title
QFileDialog* makeFilePanel(QWidget* parent, std::string_view title, const QString& kind,
                           std::span<const std::string_view> types);

/// Shows such a panel that picks where to save.
/// - proposedName: UTF-8
/// - save: called with the file that was picked
QFileDialog* openSavePanel(QWidget* parent, std::string_view title, const QString& kind,
                           std::span<const std::string_view> types, std::string_view proposedName,
                           std::function<void(const std::filesystem::path&)> save);

} // namespace tessaril
