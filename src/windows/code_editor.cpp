#include "windows/code_editor.h"

#include "windows/find_bar.h"
#include "windows/spinner.h"
#include "windows/stray_repeat_filter.h"

#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QLabel>

namespace tessaril {

namespace {

constexpr const char* unavailableText = "The code editor cannot be shown on this machine.";
constexpr const char* stoppedText = "The code editor has stopped working.";
constexpr const char* repeatFilterName = "strayRepeatFilter";
constexpr int lowest = 80; // pixels: both rows of the find bar and a line of code

/// Stands for a page that never loads.
class AbsentWebView : public WebView {
public:
    void setObserver(WebViewObserver*) override {}
    void loadPage(const std::filesystem::path&) override {}
    void evaluate(std::string_view, Completion completion) override {
        if (completion) completion(std::nullopt);
    }
};

QRect rectOf(const viewFrame& frame) {
    return {frame.x, frame.y, frame.width, frame.height};
}

} // namespace

CodeEditor::CodeEditor(const WebViewFactory& makeWebView, const std::filesystem::path& page,
                       NotificationCenter& center, UndoManager& undoManager, QWidget* parent)
    : QFrame(parent), loadSpinner(new Spinner(this)) {
    setObjectName("codeEditor");
    const shownWebView made = makeWebView ? makeWebView(this) : shownWebView{};
    if (!made) absentView = std::make_unique<AbsentWebView>();

    bridge = std::make_unique<WKAceView>(made ? *made.view : *absentView, center, undoManager);
    findBar = std::make_unique<FindBar>(bridge->finder(), this);
    QObject::connect(findBar.get(), &FindBar::shapeChanged, this, [this] {
        makeRoomForBar();
        layOut();
    });
    QObject::connect(findBar.get(), &FindBar::closed, this, [this](bool hadFocus) {
        layOut();
        if (hadFocus) focusEditor();
    });
    makeFindActions();
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    makeRoomForBar();
    if (!made) {
        showNotice(unavailableText);
        return;
    }

    pageWidget = made.widget;
    setFocusProxy(pageWidget);
    bridge->setLayout([this] {
        applyFocusPolicy();
        showSpinner(false);
        layOut();
    });
    bridge->setOnGivenUp([this] { showNotice(stoppedText); });
    bridge->setOnEscape([this] {
        // Later, as whoever contains the editor may ask a question.
        const auto press = [this] {
            if (!findBar->isHidden())
                return bridge->performTextFinderAction(textFinderAction::hideFindInterface);
            QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
            QApplication::sendEvent(this, &escape);
        };
        QMetaObject::invokeMethod(this, press, Qt::QueuedConnection);
    });
    showSpinner(true);
    bridge->load(page);
}

CodeEditor::~CodeEditor() = default;

void CodeEditor::makeRoomForBar() {
    setMinimumSize(findBar->minimumSizeHint().width() + 2 * paddingFor(borderType::groove), lowest);
}

void CodeEditor::makeFindActions() {
    const struct {
        textFinderAction tag;
        const char* text;
        QList<QKeySequence> keys;
    } commands[] = {
        {textFinderAction::showFindInterface, "&Find…", {Qt::CTRL | Qt::Key_F}},
        {textFinderAction::showReplaceInterface, "Find and Rep&lace…", {Qt::CTRL | Qt::Key_H}},
        {textFinderAction::nextMatch, "Find &Next", {Qt::Key_F3, Qt::CTRL | Qt::Key_G}},
        {textFinderAction::previousMatch,
         "Find &Previous",
         {Qt::SHIFT | Qt::Key_F3, Qt::CTRL | Qt::SHIFT | Qt::Key_G}},
    };
    for (const auto& [tag, text, keys] : commands) {
        auto* action = new QAction(text, this);
        action->setShortcuts(keys);
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        QObject::connect(action, &QAction::triggered, this,
                         [this, command = tag] { bridge->performTextFinderAction(command); });
        addAction(action);
        findActions[tag] = action;
    }
}

QAction* CodeEditor::findAction(textFinderAction tag) const {
    const auto found = findActions.find(tag);
    return found == findActions.end() ? nullptr : found->second;
}

void CodeEditor::offerFindInWholeWindow() {
    for (const auto& [tag, action] : findActions)
        action->setShortcutContext(Qt::WindowShortcut);
}

void CodeEditor::showSpinner(bool shows) {
    loadSpinner->setVisible(shows);
    loadSpinner->setSpinning(shows);
    loadSpinner->raise();
}

void CodeEditor::showNotice(const QString& text) {
    showSpinner(false);
    if (pageWidget) pageWidget->hide();
    auto* notice = new QLabel(text, this);
    notice->setObjectName("editorNotice");
    notice->setTextFormat(Qt::PlainText);
    notice->setAlignment(Qt::AlignCenter);
    notice->setWordWrap(true);
    notice->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    notice->show();
    pageWidget = notice;
    setFocusProxy(notice);
    layOut();
    // Nobody should replace what nobody sees.
    bridge->performTextFinderAction(textFinderAction::hideFindInterface);
    for (const auto& [tag, action] : findActions)
        action->setEnabled(false);
}

void CodeEditor::setBorderType(borderType newBorder) {
    border = newBorder;
    // The frame's width, which Qt derives from these, is the padding.
    setLineWidth(1);
    switch (border) {
    case borderType::none:
        setFrameStyle(QFrame::NoFrame);
        break;
    case borderType::line:
        setFrameStyle(QFrame::Box | QFrame::Plain);
        break;
    case borderType::bezel:
        setFrameStyle(QFrame::Panel | QFrame::Sunken);
        break;
    case borderType::groove:
        setFrameStyle(QFrame::Box | QFrame::Sunken);
        break;
    }
    layOut();
}

void CodeEditor::setTakesTabFocus(bool takes) {
    takesTabFocus = takes;
    applyFocusPolicy();
}

/// The widget that takes the page's input comes with the page, and another one with another.
void CodeEditor::applyFocusPolicy() {
    const Qt::FocusPolicy policy = takesTabFocus ? Qt::StrongFocus : Qt::ClickFocus;
    for (QWidget* widget = pageWidget; widget; widget = widget->focusProxy()) {
        widget->setFocusPolicy(policy);
        if (!widget->focusProxy() && !widget->findChild<QObject*>(repeatFilterName))
            (new StrayRepeatFilter(widget))->setObjectName(repeatFilterName);
    }
}

void CodeEditor::focusEditor() {
    pageWidget->setFocus(Qt::OtherFocusReason);
    bridge->focus();
}

void CodeEditor::resizeEvent(QResizeEvent* event) {
    QFrame::resizeEvent(event);
    layOut();
}

void CodeEditor::layOut() {
    const int padding = paddingFor(border);
    const int barHeight = findBar->isHidden() ? 0 : findBar->sizeHint().height();
    const viewFrame inside = insideFrame(width(), height(), padding);
    findBar->setGeometry(inside.x, inside.y, inside.width, barHeight);
    if (pageWidget)
        pageWidget->setGeometry(rectOf(webViewFrame(width(), height(), padding, barHeight)));
    QRect spinner(QPoint(), loadSpinner->sizeHint());
    spinner.moveCenter(rect().center());
    loadSpinner->setGeometry(spinner);
}

} // namespace tessaril
