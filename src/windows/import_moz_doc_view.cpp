#include "windows/import_moz_doc_view.h"

#include "editor/editor_configuration.h"
#include "model/text.h"
#include "windows/bring_to_front.h"
#include "windows/code_dialog.h"
#include "windows/code_editor.h"
#include "windows/shadow_frame.h"

#include <QCloseEvent>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QTimer>
#include <QVBoxLayout>

#include <chrono>
#include <utility>

namespace tessaril {

namespace {

constexpr const char* advice =
    "Paste or type the code of a style: a User CSS file, “@-moz-document” blocks or plain CSS.";

/// How long the page may take to tell its text; after that, what is known counts.
constexpr std::chrono::seconds longestWait(3);

} // namespace

ImportMozDocView::ImportMozDocView(importMozDocViewParts parts, QWidget* parent)
    : QDialog(parent)
    , importer(parts.importer)
    , cssEditor(std::make_unique<CodeEditor>(parts.editor.makeWebView, parts.editor.page,
                                             parts.editor.center, undoManager)) {
    setWindowTitle("Paste Style");
    cssEditor->setObjectName("cssEditor");
    cssEditor->aceView().setDelegate(this);

    auto* label = new QLabel(advice);
    label->setWordWrap(true);
    auto* buttons = new QDialogButtonBox;
    importButton = buttons->addButton("&Import", QDialogButtonBox::AcceptRole);
    buttons->addButton("&Cancel", QDialogButtonBox::RejectRole);
    importButton->setObjectName("importButton");
    importButton->setToolTip("Import the style (Ctrl+Return)");
    connect(importButton, &QPushButton::clicked, this, [this] { importClicked(); });
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter})
        connect(new QShortcut(Qt::CTRL | key, this), &QShortcut::activated, this,
                [this] { importClicked(); });
    connect(buttons, &QDialogButtonBox::rejected, this, [this] { cancelClicked(); });

    auto* rows = new QVBoxLayout(this);
    rows->addWidget(label);
    rows->addWidget(new ShadowFrame(cssEditor.get()), 1);
    rows->addWidget(buttons);
    setUpCodeDialog(*this, *cssEditor, *buttons, *importButton);
    showImportButton();
    cssEditor->focusEditor();

    configured = std::make_unique<ConfiguredEditor>(
        cssEditor->aceView(), parts.editor.preferences, parts.editor.center,
        [this] { return editorContent{.text = cssEditor->aceView().string()}; },
        [this] {
            if (cssEditor->isAncestorOf(focusWidget())) cssEditor->focusEditor();
        });
}

ImportMozDocView::~ImportMozDocView() {
    cssEditor->aceView().setDelegate(nullptr);
}

void ImportMozDocView::bringForward() {
    bringToFront(*this);
}

void ImportMozDocView::textDidChange(const notification&) {
    showImportButton();
}

void ImportMozDocView::showImportButton() {
    const bool isAvailable = !isImporting && !trimmed(cssEditor->aceView().string()).empty();
    // One that goes grey under the focus would pass it on to Cancel, for the next key press.
    if (!isAvailable && importButton->hasFocus()) cssEditor->focusEditor();
    importButton->setEnabled(isAvailable);
}

void ImportMozDocView::setImporting(bool importing) {
    isImporting = importing;
    showImportButton();
}

/// Of two that wait only the later one is called.
void ImportMozDocView::whenTextIsKnown(std::function<void()> then) {
    const auto once = [this, wait = ++waits, next = std::move(then)] {
        if (wait != waits) return;
        ++waits;
        next();
    };
    QTimer::singleShot(longestWait, this, once);
    // Later: who asks a question from within the engine's answer stops the engine.
    cssEditor->aceView().whenSettled(
        [this, once] { QMetaObject::invokeMethod(this, once, Qt::QueuedConnection); });
}

void ImportMozDocView::importClicked() {
    if (isImporting) return;
    setImporting(true);
    afterClosing = {}; // it is not closing any more
    whenTextIsKnown([this] { startImport(); });
}

void ImportMozDocView::startImport() {
    const std::string& text = cssEditor->aceView().string();
    if (!importer.canImport(text)) return setImporting(false);
    underWay = importer.importText(text, [this](bool imported) {
        stopImport();
        if (imported) done(Accepted);
    });
}

void ImportMozDocView::stopImport() {
    ++waits;
    underWay.reset();
    setImporting(false);
}

void ImportMozDocView::cancelClicked() {
    stopImport();
    done(Rejected);
}

void ImportMozDocView::reject() {
    if (isImporting) return stopImport();
    closeThen({});
}

void ImportMozDocView::closeThen(std::function<void()> closed) {
    stopImport();
    if (closed) afterClosing = std::move(closed);
    whenTextIsKnown([this] {
        const auto afterwards = std::exchange(afterClosing, {});
        const std::string text = cssEditor->aceView().string();
        // The user sees what the question is about.
        if (!trimmed(text).empty()) bringForward();
        if (!importer.mayDiscard(text)) return;
        done(Rejected);
        if (afterwards) afterwards();
    });
}

void ImportMozDocView::closeEvent(QCloseEvent* event) {
    if (!isVisible()) return;
    event->ignore();
    closeThen({});
}

} // namespace tessaril
