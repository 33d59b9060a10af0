#pragma once

#include "import/url_import.h"

#include <QDialog>

class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;

namespace tessaril {

/// Asks for the address of a style and has `UrlImport` import it. Closing it abandons the import.
class ImportSheet : public QDialog {
public:
    /// Modal over the window of `parent`. `importer` must live longer. Deletes itself when it
    /// closes.
    ImportSheet(UrlImport& importer, QWidget* parent);

    void accept() override;
    void done(int result) override;

private:
    void offerClipboard();
    void importClicked();
    void enter(importSheetState next);
    void showImportButton();

    UrlImport& importer;
    importSheetState state = importSheetState::idle;
    UrlImport::Ticket underWay;
    QLineEdit* urlBox;
    QPushButton* importButton;
    QProgressBar* loadSpinner;
    QLabel* importLabel;
    QLabel* errorLabel;
};

} // namespace tessaril
