#pragma once

#include "update/update_run.h"

#include <QDialog>

#include <memory>

class QLabel;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;

namespace tessaril {

class Spinner;

/// Shows how the check of all styles goes. Escape and the window's close button mean Cancel while
/// it goes on and Done afterwards.
class UpdateSheet : public QDialog {
public:
    /// Modal over the window of `parent`. Deletes itself when it closes.
    UpdateSheet(std::unique_ptr<UpdateRun> run, QWidget* parent);
    ~UpdateSheet() override;

    void reject() override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void showRun();
    void appendToLog(QStringView more);

    std::unique_ptr<UpdateRun> run;
    bool hasBegun = false;
    std::size_t shownLog = 0; ///< how many bytes of it
    QPlainTextEdit* logText;
    QProgressBar* progressBar;
    Spinner* spinnerIndicator;
    QLabel* note;
    QPushButton* doneButton;
    QPushButton* cancelButton;
};

} // namespace tessaril
