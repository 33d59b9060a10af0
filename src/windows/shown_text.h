#pragma once

#include <QFile>
#include <QString>

#include <filesystem>
#include <string_view>

namespace tessaril {

/// UTF-8 text for a widget.
inline QString qtText(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// What a file dialog or a dropped address names.
inline std::filesystem::path pathOf(const QString& file) {
    return QFile::encodeName(file).toStdString();
}

/// `text` as one line for a row or a title: breaks and other control characters become blanks,
/// those that turn the text's direction go, and no more than `most` characters are taken, which is
/// far more than a line shows.
QString oneLine(std::string_view text, qsizetype most = 300);

/// `text` as a tool tip: as it stands, whatever markup or blanks it holds.
QString toolTipText(const QString& text);

/// `text` for QWidget::setWindowTitle, which would take "[*]" as its place for a change mark.
QString windowTitleText(std::string_view text);

} // namespace tessaril
