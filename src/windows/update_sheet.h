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
    bool eventFilter(QObject* object, QEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void showRun();
    void appendToLog(QStringView more);

    bool isHeldKey(const QKeyEvent& event);

    std::unique_ptr<UpdateRun> run;
    int lastKey = 0; ///< that was released, and when, by the desktop's clock, in milliseconds
    quint64 lastRelease = 0;
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
