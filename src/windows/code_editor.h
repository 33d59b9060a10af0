#pragma once

#include "editor/editor_layout.h"
#include "editor/wk_ace_view.h"
#include "platform/web_view_factory.h"

#include <QFrame>

#include <filesystem>
#include <map>
#include <memory>

class QAction;

namespace tessaril {

class FindBar;
class Spinner;

/// The code editor as a widget: the page in a web view, below the find bar when that is shown. On a
/// machine that cannot show the page it says so; its `WKAceView` can be used then too and keeps the
/// text that it is given, but never becomes ready.
class CodeEditor : public QFrame {
public:
    /// `center` and `undoManager` must live longer.
    /// - page: the editor page, an absolute path; begins to load at once
    CodeEditor(const WebViewFactory& makeWebView, const std::filesystem::path& page,
               NotificationCenter& center, UndoManager& undoManager, QWidget* parent = nullptr);
    ~CodeEditor() override;

    /// Drives the editor. Its layout is the widget's.
    WKAceView& aceView() { return *bridge; }

    void setBorderType(borderType newBorder);

    /// Whether the Tab key reaches the page, which it does at first. It never leaves it again, as
    /// there it means a tab.
    void setTakesTabFocus(bool takes);

    /// Gives the page the keyboard focus.
    void focusEditor();

    /// The action of a find command, for menus too; nothing for a command that only the find bar
    /// offers. The keys work while the focus is within the editor, so that several editors in one
    /// window don't contend for them.
    QAction* findAction(textFinderAction tag) const;

    /// Whether this machine can show the page.
    bool hasPage() const { return !absentView; }

    /// Has those keys work in the whole window, of which this is the only editor.
    void offerFindInWholeWindow();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void makeRoomForBar();
    void makeFindActions();
    void showNotice(const QString& text);
    void showSpinner(bool shows);
    void layOut();
    void applyFocusPolicy();

    bool takesTabFocus = true;
    borderType border = borderType::none;
    std::unique_ptr<WebView> absentView; ///< where there is no real one
    QWidget* pageWidget = nullptr;       ///< the web view, or the notice in its place
    std::unique_ptr<WKAceView> bridge;
    std::unique_ptr<FindBar> findBar; ///< goes before the finder, which is the bridge's
    std::map<textFinderAction, QAction*> findActions;
    Spinner* loadSpinner;
};

} // namespace tessaril
