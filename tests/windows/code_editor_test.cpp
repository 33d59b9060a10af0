#include "support/recording_web_view.h"
#include "support/test.h"
#include "support/user.h"
#include "windows/code_editor.h"

namespace tessaril {
namespace {

/// A web view whose page is the test's.
struct PageWidget : QWidget, RecordingWebView {
    explicit PageWidget(QWidget* parent) : QWidget(parent) { setFocusPolicy(Qt::StrongFocus); }
};

/// Two editors in a dialog that its own keys close, the harder one of the possible places.
struct CodeEditorTest : ::testing::Test {
    CodeEditorTest() {
        auto* rows = new QVBoxLayout(&dialog);
        for (CodeEditor* editor : {&first, &second})
            rows->addWidget(editor);
        rows->addWidget(new QPushButton("Def&ault")); // Alt+A is the bar's while that has the focus
        dialog.findChild<QPushButton*>("", Qt::FindDirectChildrenOnly)->setDefault(true);
        dialog.resize(700, 500);
        dialog.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&dialog));
        bridge.setString("one two One three");
        page().answer("one two One three");
        first.setFocus();
        page().taken();
    }

    template <class Widget>
    Widget& part(const char* name) {
        return partOf<Widget>(first, name);
    }
    PageWidget& page() { return *first.findChild<PageWidget*>(); }
    QString matchCount() { return part<QLabel>("matchCount").text(); }

    NotificationCenter center;
    UndoManager undo;
    WebViewFactory factory = [](QWidget* parent) {
        auto* made = new PageWidget(parent);
        return shownWebView{made, made};
    };
    QDialog dialog;
    CodeEditor first{factory, "/page", center, undo};
    CodeEditor second{factory, "/page", center, undo};
    WKAceView& bridge = first.aceView();
};

TEST_F(CodeEditorTest, FindsByKeysAndGivesTheFocusBack) {
    ASSERT_TRUE(page().hasFocus());
    press("Ctrl+F");
    EXPECT_TRUE(part<QLineEdit>("findField").hasFocus());
    EXPECT_FALSE(part<QLineEdit>("replaceField").isVisible());
    EXPECT_FALSE(second.findChild<QLineEdit*>("findField")->isVisible());
    press("'one' Return");
    EXPECT_EQ(matchCount(), "2 of 2");
    press("Shift+Return Shift+Return");
    EXPECT_EQ(matchCount(), "2 of 2, wrapped");
    press("Ctrl+Shift+G");
    EXPECT_EQ(bridge.firstSelectedRange(), (textRange{0, 3}));
    press("'x'");
    EXPECT_EQ(matchCount(), "Not found");
    press("Ctrl+F 'o'"); // instead of all that stood there
    part<QCheckBox>("matchCase").click();
    EXPECT_EQ(matchCount(), "1 of 2");

    page().taken();
    press("Esc");
    EXPECT_TRUE(page().hasFocus() && dialog.isVisible());
    EXPECT_FALSE(part<QLineEdit>("findField").isVisible());
    EXPECT_THAT(page().taken(), Contains("focusEditor();"));
    press("F3");
    EXPECT_EQ(bridge.firstSelectedRange(), (textRange{6, 1}));
}

TEST_F(CodeEditorTest, ReplacesAndReachesEveryPartOfTheBarByKeyboard) {
    press("Ctrl+H 'one'");
    QStringList order;
    for (; order.size() < 8; press("Tab")) {
        const QWidget* focused = QApplication::focusWidget();
        order << focused->accessibleName() + focused->property("text").toString();
    }
    EXPECT_EQ(order.join(' ').toStdString(), "Findone Previous Match Next Match Match &Case &Done "
                                             "Replace with &Replace Replace &All");

    press("Alt+T");
    EXPECT_TRUE(part<QLineEdit>("replaceField").hasFocus());
    press("'1' Alt+R");
    page().answer(bridge.string()); // that nothing was typed meanwhile
    ASSERT_TRUE(eventually([&] { return bridge.string() == "1 two One three"; }));
    page().answer(bridge.string());
    EXPECT_EQ(matchCount(), "1 of 1");
    press("Alt+A");
    page().answer(bridge.string());
    ASSERT_TRUE(eventually([&] { return bridge.string() == "1 two 1 three"; }));
    page().answer(bridge.string());
    EXPECT_EQ(matchCount(), "1 replaced");
}

TEST_F(CodeEditorTest, SaysThatThereIsNoPage) {
    CodeEditor absent([](QWidget*) { return shownWebView{}; }, "/page", center, undo);
    EXPECT_EQ(absent.findChild<QLabel*>("editorNotice")->text(),
              "The code editor cannot be shown on this machine.");
    absent.aceView().setString("kept");
    absent.aceView().beautify();
    EXPECT_FALSE(undo.canUndo());
    absent.focusEditor();
    EXPECT_EQ(absent.aceView().string(), "kept");

    CapturedLog log;
    for (int loss = 0; loss < 4; ++loss)
        page().observer->pageLost();
    EXPECT_TRUE(part<QLabel>("editorNotice").isVisible() && !page().isVisible());
    press("Ctrl+H"); // nothing to see, nothing to replace
    EXPECT_FALSE(part<QWidget>("findBar").isVisible());
}

} // namespace
} // namespace tessaril
