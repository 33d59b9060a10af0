#include "windows/style_editor_window.h"

#include "events/notification_names.h"
#include "windows/bring_to_front.h"
#include "windows/code_editor.h"
#include "windows/editor_title.h"
#include "windows/editor_toolbar.h"
#include "windows/file_panel.h"
#include "windows/line_icons.h"
#include "windows/metadata_view.h"
#include "windows/new_section_sheet.h"
#include "windows/rule_editor_sheet.h"
#include "windows/shown_text.h"

#include <QAction>
#include <QCloseEvent>
#include <QComboBox>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QShortcut>

#include <utility>

namespace tessaril {

namespace {

constexpr QSize comfortableSize(920, 700);

/// Adds commands to a menu.
class MenuMaker {
public:
    MenuMaker(QWidget& window, QMenu& ownMenu) : owner(window), menu(ownMenu) {}

    template <typename Run>
    QAction* add(const char* text, const QList<QKeySequence>& keys, Run run) {
        auto* action = new QAction(text, &owner);
        action->setShortcuts(keys);
        QObject::connect(action, &QAction::triggered, &owner, run);
        menu.addAction(action);
        return action;
    }

    /// With its place in the toolbar, whose label says more than the menu's text.
    template <typename Run>
    QAction* add(const char* text, const QList<QKeySequence>& keys, lineIcon icon,
                 const char* label, Run run) {
        QAction* action = add(text, keys, run);
        action->setIcon(lineIconFor(icon, owner.palette()));
        action->setIconVisibleInMenu(false);
        action->setIconText(label);
        action->setToolTip(label);
        return action;
    }

    void separate() { menu.addSeparator(); }
    void add(QAction* action) { menu.addAction(action); }

private:
    QWidget& owner;
    QMenu& menu;
};

} // namespace

StyleEditorWindow::StyleEditorWindow(styleContainer style, bool isDirty, styleEditorParts ownParts)
    : parts(std::move(ownParts))
    , editor(std::make_unique<CodeEditor>(parts.editor.makeWebView, parts.editor.page,
                                          parts.editor.center, undoManager))
    , controller(std::make_unique<StyleEditorController>(parts.session, std::move(style), isDirty,
                                                         editor->aceView())) {
    setObjectName("styleEditorWindow");
    setAttribute(Qt::WA_DeleteOnClose);
    setCentralWidget(editor.get());
    editor->offerFindInWholeWindow();
    makeToolbars(makeMenus());
    connect(new QShortcut(Qt::Key_F6, this), &QShortcut::activated, this, [this] { moveFocus(); });
    controller->setHandlers({.showSections = [this] { showSections(); },
                             .showName = [this] { showName(); },
                             .showEdited = [this] { setWindowModified(controller->isDirty()); },
                             .focus = [this] { bringToFront(*this); },
                             .close =
                                 [this] {
                                     mayClose = true;
                                     close();
                                 },
                             .editorIsReady = [this] { editor->focusEditor(); }});
    showName();
    showSections();
    setWindowModified(controller->isDirty());
    showAppearance();
    preferencesChanged = parts.editor.center.observe(notifications::preferencesDidChange,
                                                     [this](const auto&) { showAppearance(); });
    resize(comfortableSize.boundedTo(screen()->availableSize() * 9 / 10));
    editor->setFocus();
}

StyleEditorWindow::~StyleEditorWindow() = default;

editorToolbarCommands StyleEditorWindow::makeMenus() {
    editorToolbarCommands commands{};
    StyleEditorController& session = *controller;

    MenuMaker file(*this, *menuBar()->addMenu("&File"));
    file.add("&New Style…", {QKeySequence::New}, [this] { parts.newStyle(*this); });
    file.separate();
    file.add("&Save", {QKeySequence::Save}, [&session] { session.saveDocument(); });
    commands.exportStyle = file.add("&Export Style…", {Qt::CTRL | Qt::Key_E}, lineIcon::share,
                                    "Export", [this, &session] {
                                        session.whenTextIsKnown([this, &session] {
                                            parts.exportStyle(session.style(), *this);
                                        });
                                    });
    commands.exportSection = file.add("Export Se&ction…", {}, [this] { openSectionExport(); });
    commands.metadata =
        file.add("&Metadata Editor…", {Qt::CTRL | Qt::Key_I}, lineIcon::details, "Metadata Editor",
                 [this, &session] { session.whenTextIsKnown([this] { openMetadataView(); }); });
    file.separate();
    file.add("C&lose", {Qt::CTRL | Qt::Key_W}, [this] { close(); });

    MenuMaker edit(*this, *menuBar()->addMenu("&Edit"));
    edit.add("&Undo", QKeySequence::keyBindings(QKeySequence::Undo),
             [this] { editor->aceView().undo(); });
    edit.add("&Redo", QKeySequence::keyBindings(QKeySequence::Redo),
             [this] { editor->aceView().redo(); });
    edit.separate();
    for (const textFinderAction tag :
         {textFinderAction::showFindInterface, textFinderAction::nextMatch,
          textFinderAction::previousMatch, textFinderAction::showReplaceInterface})
        edit.add(editor->findAction(tag));
    edit.separate();
    edit.add("&Go to Line…", {Qt::CTRL | Qt::Key_L}, [this, &session] {
        editor->focusEditor();
        session.goToLine();
    });
    commands.beautify =
        edit.add("&Beautify", {Qt::CTRL | Qt::SHIFT | Qt::Key_B}, lineIcon::beautify, "Beautify",
                 [&session] { session.beautifyClicked(); });

    MenuMaker section(*this, *menuBar()->addMenu("&Section"));
    commands.addSection =
        section.add("&New Section…", {Qt::CTRL | Qt::SHIFT | Qt::Key_N}, lineIcon::create,
                    "Add Section", [this] { openNewSection(); });
    commands.duplicateSection =
        section.add("&Duplicate Section", {}, lineIcon::duplicate, "Duplicate Section",
                    [&session] { session.duplicateSection(); });
    commands.deleteSection = section.add("De&lete Section…", {}, lineIcon::remove, "Remove Section",
                                         [&session] { session.deleteSectionClicked(); });
    section.separate();
    commands.rules =
        section.add("&Rule Editor…", {Qt::CTRL | Qt::Key_R}, lineIcon::rules, "Rule Editor",
                    [this, &session] { session.whenTextIsKnown([this] { openRuleEditor(); }); });
    section.separate();
    section.add("&Previous Section", {Qt::CTRL | Qt::Key_PageUp},
                [&session] { session.previousSection(); });
    section.add("Ne&xt Section", {Qt::CTRL | Qt::Key_PageDown},
                [&session] { session.nextSection(); });

    MenuMaker view(*this, *menuBar()->addMenu("&View"));
    view.add("&Larger Text", {QKeySequence::ZoomIn, Qt::CTRL | Qt::Key_Equal},
             [&session] { session.increaseFontSize(); });
    view.add("&Smaller Text", {QKeySequence::ZoomOut}, [&session] { session.decreaseFontSize(); });
    return commands;
}

void StyleEditorWindow::makeToolbars(const editorToolbarCommands& commands) {
    rowTitle = new EditorTitle(controller->isReadOnly());
    titleRow = new QToolBar("Title");
    titleRow->setMovable(false);
    titleRow->setContextMenuPolicy(Qt::PreventContextMenu);
    titleRow->addWidget(rowTitle);
    addToolBar(titleRow);
    addToolBarBreak();
    toolbar = new EditorToolbar(
        commands,
        [this](std::size_t section) {
            controller->selectSection(section);
            editor->focusEditor();
        },
        controller->isReadOnly(), this);
    addToolBar(toolbar);
}

void StyleEditorWindow::showName() {
    const std::string& name = controller->style().styleData.name;
    setWindowTitle(windowTitleText(name) + "[*]");
    rowTitle->showName(name);
    toolbar->showName(name);
}

void StyleEditorWindow::showSections() {
    toolbar->showSections(controller->sectionTitles(), controller->currentSection());
}

void StyleEditorWindow::showAppearance() {
    const windowAppearance appearance = windowAppearanceFrom(parts.editor.preferences);
    titleRow->setVisible(appearance.toolbar == toolbarStyle::expanded);
    toolbar->setAppearance(appearance);
}

void StyleEditorWindow::moveFocus() {
    if (editor->isAncestorOf(focusWidget()))
        toolbar->sectionMenu().setFocus(Qt::TabFocusReason);
    else
        editor->focusEditor();
}

void StyleEditorWindow::openNewSection() {
    if (!controller->mayAddSection()) return;
    auto* sheet = new NewSectionSheet(
        [this](const newSectionFields& fields) { controller->addSection(fields); }, this);
    sheet->open();
}

void StyleEditorWindow::openRuleEditor() {
    auto* sheet = new RuleEditorSheet(*controller, controller->isReadOnly(), this);
    sheet->open();
}

void StyleEditorWindow::openMetadataView() {
    std::function<void(const metadataFields&)> save;
    if (!controller->isReadOnly())
        save = [this](const metadataFields& fields) { controller->setMetadata(fields); };
    auto* sheet = new MetadataView(controller->metadata(), std::move(save), this);
    sheet->open();
}

void StyleEditorWindow::openSectionExport() {
    openSavePanel(this, exportSectionTitle, "CSS files", exportSectionTypes,
                  controller->proposedSectionFile(),
                  [this](const std::filesystem::path& file) { controller->exportSection(file); });
}

bool StyleEditorWindow::bringSheetForward() {
    for (QDialog* sheet : findChildren<QDialog*>()) {
        if (!sheet->isVisible()) continue;
        bringToFront(*this);
        bringToFront(*sheet);
        parts.session.alerts.beep();
        return true;
    }
    return false;
}

void StyleEditorWindow::closeThen(std::function<void()> closed) {
    if (!bringSheetForward()) controller->closeClicked(std::move(closed));
}

void StyleEditorWindow::closeEvent(QCloseEvent* event) {
    if (!mayClose) controller->closeClicked(); // which may let it at once
    event->setAccepted(mayClose);
}

} // namespace tessaril
