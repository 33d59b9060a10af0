#include "windows/update_sheet.h"

#include "windows/held_key_filter.h"
#include "windows/pane_form.h"
#include "windows/shown_text.h"
#include "windows/spinner.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollBar>
#include <QTextCursor>
#include <QVBoxLayout>

#include <cmath>
#include <string_view>

namespace tessaril {

namespace {

constexpr QSize comfortableSize(540, 380);

} // namespace

UpdateSheet::UpdateSheet(std::unique_ptr<UpdateRun> ownRun, QWidget* parent)
    : QDialog(parent)
    , run(std::move(ownRun))
    , logText(new QPlainTextEdit)
    , progressBar(new QProgressBar)
    , spinnerIndicator(new Spinner)
    , note(new QLabel) {
    setObjectName("updateSheet");
    setWindowTitle("Update All Styles");
    setWindowModality(Qt::WindowModal);
    setAttribute(Qt::WA_DeleteOnClose);
    logText->setObjectName("logText");
    logText->setAccessibleName("Log");
    logText->setReadOnly(true);
    logText->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    logText->setUndoRedoEnabled(false); // or every line would be kept once more
    logText->setTabChangesFocus(true);
    progressBar->setObjectName("progressBar");
    progressBar->setAccessibleName("Progress");
    progressBar->setRange(0, 100);
    progressBar->setTextVisible(false);
    spinnerIndicator->setObjectName("spinnerIndicator");
    makeNote(*note);

    auto* buttons = new QDialogButtonBox;
    doneButton = buttons->addButton("&Done", QDialogButtonBox::AcceptRole);
    cancelButton = buttons->addButton("&Cancel", QDialogButtonBox::RejectRole);
    doneButton->setObjectName("doneButton");
    cancelButton->setObjectName("cancelButton");
    doneButton->setDefault(true);
    doneButton->setEnabled(false);
    cancelButton->setAutoDefault(false);
    for (QAbstractButton* button : buttons->buttons())
        button->setIcon({});
    connect(doneButton, &QPushButton::clicked, this, [this] { run->doneClicked(); });
    connect(cancelButton, &QPushButton::clicked, this, [this] { run->cancelClicked(); });

    auto* last = new QHBoxLayout;
    last->addWidget(spinnerIndicator);
    last->addWidget(note, 1);
    last->addWidget(buttons);
    auto* parts = new QVBoxLayout(this);
    parts->addWidget(logText, 1);
    parts->addWidget(progressBar);
    parts->addLayout(last);
    resize(comfortableSize);
    cancelButton->setFocus();
    // Held down, a key is one wish to cancel, not five, and none to be done as the run ends.
    auto* heldKeys = new HeldKeyFilter(this);
    heldKeys->watch(cancelButton);
    heldKeys->watch(doneButton);
    run->setHandlers([this] { showRun(); }, [this] { accept(); });
}

UpdateSheet::~UpdateSheet() = default;

void UpdateSheet::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (std::exchange(hasBegun, true)) return;
    run->begin();
}

void UpdateSheet::reject() {
    if (run->isRunning())
        run->cancelClicked();
    else
        run->doneClicked();
}

void UpdateSheet::showRun() {
    const std::string_view log = run->log();
    appendToLog(qtText(log.substr(shownLog)));
    shownLog = log.size();
    progressBar->setValue(static_cast<int>(std::lround(run->progress())));
    const bool isRunning = run->isRunning();
    spinnerIndicator->setSpinning(isRunning);
    note->setText(isRunning && run->isCanceled() ? "Finishing the style at hand…" : "");
    doneButton->setEnabled(!isRunning);
    if (!isRunning && cancelButton->hasFocus()) doneButton->setFocus();
    cancelButton->setEnabled(isRunning);
}

/// Without a touch on what is there, which may be long, and selected.
void UpdateSheet::appendToLog(QStringView more) {
    if (more.isEmpty()) return;
    QTextCursor end(logText->document());
    end.movePosition(QTextCursor::End);
    end.insertText(more.toString());
    logText->verticalScrollBar()->setValue(logText->verticalScrollBar()->maximum());
}

} // namespace tessaril
