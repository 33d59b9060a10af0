#pragma once

#include <QString>

#include <string_view>

class QFileDialog;
class QWidget;

namespace tessaril {

/// A panel that picks files, over `parent`, which goes by itself when it is closed. It starts in
/// the folder that the last panel of this run picked from; the first one in the home folder.
/// - title: UTF-8
/// - filter: as QFileDialog takes it
QFileDialog* makeFilePanel(QWidget* parent, std::string_view title, const QString& filter);

} // namespace tessaril
