#pragma once

class QBoxLayout;
class QDialog;
class QPushButton;
class QString;

namespace tessaril {

/// A button that accepts the dialog, and answers Return, and beside it one that rejects it: a row
/// at the end of the dialog's layout. Gives the first, which gets the object name.
QPushButton* addDialogButtons(QDialog& dialog, QBoxLayout& below, const char* acceptName,
                              const QString& acceptTitle, const QString& rejectTitle);

} // namespace tessaril
