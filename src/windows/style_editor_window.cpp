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
#include "windows/section_menu_box.h"
#include "windows/shown_text.h"

#include <QAction>
#include <QCloseEvent>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>

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

    /// One that stands in the toolbar too, under its label.
    template <typename Run>
    QAction* addWithIcon(const char* text, const QList<QKeySequence>& keys, lineIcon icon,
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

StyleEditorWindow::StyleEditorWindow(styleToEdit opened, styleEditorParts ownParts)
    : parts(std::move(ownParts))
    , editor(std::make_unique<CodeEditor>(parts.editor.makeWebView, parts.editor.page,
                                          parts.editor.center, undoManager))
    , controller(std::make_unique<StyleEditorController>(parts.session, std::move(opened.style),
                                                         opened.isUnsaved, editor->aceView())) {
    setObjectName("styleEditorWindow");
    setAttribute(Qt::WA_DeleteOnClose);
    setCentralWidget(editor.get());
    editor->offerFindInWholeWindow();
    if (controller->isReadOnly())
        editor->findAction(textFinderAction::showReplaceInterface)->setEnabled(false);
    makeToolbars(makeMenus());
    controller->setHandlers({.showSections = [this] { showSections(); },
                             .showName = [this] { showName(); },
                             .showEdited = [this] { setWindowModified(controller->isDirty()); },
                             .focus = [this] { bringForward(); },
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
    // From the toolbar too, so that the user can go on typing.
    const auto thenToCode = [this](auto command) {
        return [this, command] {
            command();
            editor->focusEditor();
        };
    };
    const auto sheetOf = [this](std::function<QDialog*()> make) {
        return [this, make = std::move(make)] { openSheet(make); };
    };

    MenuMaker file(*this, *menuBar()->addMenu("&File"));
    file.add("&New Style…", {QKeySequence::New}, sheetOf([this] { return parts.newStyle(*this); }));
    file.separate();
    file.add("&Save", {QKeySequence::Save}, [&session] { session.saveDocument(); });
    commands.exportStyle = file.addWithIcon(
        "&Export Style…", {Qt::CTRL | Qt::SHIFT | Qt::Key_S}, lineIcon::share, "Export",
        sheetOf([this, &session] { return parts.exportStyle(session.style(), *this); }));
    commands.exportSection =
        file.add("Export Se&ction…", {}, sheetOf([this] { return sectionExportPanel(); }));
    commands.metadata =
        file.addWithIcon("&Metadata Editor…", {Qt::CTRL | Qt::Key_I}, lineIcon::details,
                         "Metadata Editor", sheetOf([this] { return metadataView(); }));
    file.separate();
    file.add("C&lose", {Qt::CTRL | Qt::Key_W}, [this] { close(); });

    MenuMaker edit(*this, *menuBar()->addMenu("&Edit"));
    QAction* const ofThePage[] = {
        edit.add("&Undo", QKeySequence::keyBindings(QKeySequence::Undo),
                 [this] { editor->aceView().undo(); }),
        edit.add("&Redo", QKeySequence::keyBindings(QKeySequence::Redo),
                 [this] { editor->aceView().redo(); }),
        edit.add("&Go to Line…", {Qt::CTRL | Qt::Key_L},
                 [this, &session] {
                     editor->focusEditor();
                     session.goToLine();
                 }),
        commands.beautify =
            edit.addWithIcon("&Beautify", {Qt::CTRL | Qt::SHIFT | Qt::Key_B}, lineIcon::beautify,
                             "Beautify", thenToCode([&session] { session.beautifyClicked(); }))};
    for (QAction* action : ofThePage)
        action->setEnabled(editor->hasPage());
    edit.separate();
    for (const textFinderAction tag :
         {textFinderAction::showFindInterface, textFinderAction::nextMatch,
          textFinderAction::previousMatch, textFinderAction::showReplaceInterface})
        edit.add(editor->findAction(tag));
    edit.separate();
    edit.add("Pr&eferences…", {Qt::CTRL | Qt::Key_Comma}, [this] { parts.openPreferences(); });

    MenuMaker section(*this, *menuBar()->addMenu("&Section"));
    commands.addSection =
        section.addWithIcon("&New Section…", {Qt::CTRL | Qt::SHIFT | Qt::Key_N}, lineIcon::create,
                            "Add Section", [this, &session] {
                                if (session.mayAddSection())
                                    openSheet([this] { return newSectionSheet(); });
                            });
    commands.duplicateSection =
        section.addWithIcon("&Duplicate Section", {}, lineIcon::duplicate, "Duplicate Section",
                            thenToCode([&session] { session.duplicateSection(); }));
    commands.deleteSection =
        section.addWithIcon("De&lete Section…", {}, lineIcon::remove, "Remove Section",
                            thenToCode([&session] { session.deleteSectionClicked(); }));
    section.separate();
    commands.rules =
        section.addWithIcon("&Rule Editor…", {Qt::CTRL | Qt::Key_R}, lineIcon::rules, "Rule Editor",
                            sheetOf([this, &session] {
                                return new RuleEditorSheet(session, session.isReadOnly(), this);
                            }));
    section.separate();
    section.add("&Previous Section", {Qt::CTRL | Qt::Key_PageUp},
                [&session] { session.previousSection(); });
    section.add("Ne&xt Section", {Qt::CTRL | Qt::Key_PageDown},
                [&session] { session.nextSection(); });

    MenuMaker view(*this, *menuBar()->addMenu("&View"));
    view.add("&Larger Text", {QKeySequence::ZoomIn, Qt::CTRL | Qt::Key_Equal},
             [&session] { session.increaseFontSize(); });
    view.add("&Smaller Text", {QKeySequence::ZoomOut}, [&session] { session.decreaseFontSize(); });
    view.separate();
    view.add("Between &Code and Toolbar", {Qt::Key_F6}, [this] { moveFocus(); });
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
    sectionMenu = new SectionMenuBox(
        {.select = [this](std::size_t section) { controller->selectSection(section); },
         .leave = [this] { editor->focusEditor(); }});
    toolbar = new EditorToolbar(commands, *sectionMenu, controller->isReadOnly(), this);
    addToolBar(toolbar);
}

void StyleEditorWindow::showName() {
    const std::string& name = controller->style().styleData.name;
    setWindowTitle(windowTitleText(name) + "[*]");
    rowTitle->showName(name);
    toolbar->showName(name);
}

void StyleEditorWindow::showSections() {
    sectionMenu->showSections(controller->sectionTitles(), controller->currentSection());
}

void StyleEditorWindow::showAppearance() {
    const windowAppearance appearance = windowAppearanceFrom(parts.editor.preferences);
    titleRow->setVisible(appearance.toolbar == toolbarStyle::expanded);
    toolbar->setAppearance(appearance);
}

void StyleEditorWindow::moveFocus() {
    if (editor->isAncestorOf(focusWidget()))
        sectionMenu->setFocus(Qt::TabFocusReason);
    else
        editor->focusEditor();
}

/// Once the session knows what was typed; until the sheet has closed it carries nothing else out.
void StyleEditorWindow::openSheet(std::function<QDialog*()> make) {
    controller->whenTextIsKnown([this, make = std::move(make)] {
        QDialog* opened = make();
        if (!opened) return;
        connect(opened, &QDialog::finished, this, [this] {
            controller->sheetClosed();
            editor->focusEditor();
        });
        controller->sheetOpened();
        opened->open();
    });
}

QDialog* StyleEditorWindow::newSectionSheet() {
    return new NewSectionSheet(
        [this](const newSectionFields& fields) { controller->addSection(fields); }, this);
}

QDialog* StyleEditorWindow::metadataView() {
    std::function<void(const metadataFields&)> save;
    if (!controller->isReadOnly())
        save = [this](const metadataFields& fields) { controller->setMetadata(fields); };
    return new MetadataView(controller->metadata(), std::move(save), this);
}

QDialog* StyleEditorWindow::sectionExportPanel() {
    return openSavePanel(
        this, exportSectionTitle, "CSS files", exportSectionTypes,
        controller->proposedSectionFile(),
        [this](const std::filesystem::path& file) { controller->exportSection(file); });
}

QDialog* StyleEditorWindow::sheet() const {
    QDialog* topmost = nullptr; // a sheet's own panel comes after it
    for (QDialog* dialog : findChildren<QDialog*>())
        if (dialog->isVisible()) topmost = dialog;
    return topmost;
}

/// Where a sheet is open, with it above.
void StyleEditorWindow::bringForward() {
    bringToFront(*this);
    if (QDialog* open = sheet()) bringToFront(*open);
}

void StyleEditorWindow::closeThen(std::function<void()> closed) {
    if (!sheet()) return controller->closeClicked(std::move(closed));
    bringForward();
    parts.session.alerts.beep();
}

void StyleEditorWindow::closeEvent(QCloseEvent* event) {
    if (!mayClose) controller->closeClicked(); // which may let it at once
    event->setAccepted(mayClose);
}

} // namespace tessaril
