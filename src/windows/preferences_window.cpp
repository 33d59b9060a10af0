#include "windows/preferences_window.h"

#include "events/notification_names.h"
#include "windows/advanced_pane.h"
#include "windows/bring_to_front.h"
#include "windows/editor_pane.h"
#include "windows/pane_scroller.h"

#include <QKeyEvent>
#include <QScreen>
#include <QShortcut>
#include <QStyle>
#include <QTabWidget>
#include <QVBoxLayout>

namespace tessaril {

PreferencesWindow::PreferencesWindow(preferencesWindowParts parts, QWidget* parent)
    : QWidget(parent, Qt::Window), controls(parts.general.controls) {
    setWindowTitle("Preferences");
    auto* general = new GeneralPane(std::move(parts.general));
    auto* editor = new EditorPane(controls, parts.makePreview);
    auto* advanced = new AdvancedPane(controls, parts.passwords);
    auto* panes = new QTabWidget;
    panes->setDocumentMode(true);
    panes->addTab(new PaneScroller(general), "&General");
    panes->addTab(new PaneScroller(editor), "&Editor");
    panes->addTab(new PaneScroller(advanced), "&Advanced");
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(panes);

    connect(new QShortcut(QKeySequence("Ctrl+W"), this), &QShortcut::activated, this,
            &QWidget::close);
    const QSize room = screen()->availableSize() * 9 / 10;
    QSize wanted = sizeHint();
    if (wanted.height() > room.height())
        wanted.rwidth() += style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    resize(wanted.boundedTo(room));

    const auto reload = [general, editor, advanced](const notification&) {
        general->reload();
        editor->reload();
        advanced->reload();
    };
    remoteChanges = parts.center.observe(notifications::prefsChangedRemotely, reload);
    localChanges = parts.center.observe(notifications::preferencesDidChange, reload);
}

PreferencesWindow::~PreferencesWindow() {
    controls.endAllEditing();
}

void PreferencesWindow::closeEvent(QCloseEvent* event) {
    // Ends an edit that is under way, which the closing alone does not.
    if (QWidget* edited = focusWidget()) edited->clearFocus();
    QWidget::closeEvent(event);
}

void PreferencesWindow::keyPressEvent(QKeyEvent* event) {
    // Not a shortcut: an open menu, for one, closes itself by it.
    if (event->key() == Qt::Key_Escape)
        close();
    else
        QWidget::keyPressEvent(event);
}

void PreferencesWindow::bringForward() {
    bringToFront(*this);
}

} // namespace tessaril
