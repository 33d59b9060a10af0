#include "support/running_web_engine.h"
#include "support/test.h"

#include <csignal>

namespace tessaril {
namespace {

using Value = std::optional<scriptValue>;

struct WebViewTest : ::testing::Test, WebViewObserver {
    WebViewTest() {
        shown.view->setObserver(this);
        shown.widget->setGeometry(0, 0, 800, 600);
        window.resize(800, 600);
        window.show();
        load();
    }

    void beginLoad() { shown.view->loadPage(editorPage); }
    void load() {
        const int before = loaded;
        beginLoad();
        EXPECT_TRUE(eventually([&] { return loaded > before; }));
    }
    Value value(std::string_view statement) { return evaluated(shown, statement); }

    void navigationFinished() override { ++loaded; }
    void messageReceived(std::string_view handler, const scriptValue& body) override {
        messages.emplace_back(handler, body);
    }
    void pageNotLoaded() override { ++failed; }
    void pageLost() override {
        ++lost;
        if (loadsAgain) beginLoad();
    }

    QWidget window;
    shownWebView shown = makeRealPage(&window);
    int loaded = 0, lost = 0, failed = 0;
    bool loadsAgain = false;
    std::vector<std::pair<std::string, scriptValue>> messages;
};

TEST_F(WebViewTest, GivesValuesInOrderAndNothingForFailures) {
    EXPECT_EQ(value("'\\u{2028} \u00e4 \U0001f600' + \"\u2029\""),
              Value("\u2028 \u00e4 \U0001f600\u2029"));
    EXPECT_EQ(value("1.5"), Value(1.5));
    EXPECT_EQ(value("true"), Value(true));
    EXPECT_EQ(value("[1]"), Value(std::monostate()));
    CapturedLog log;
    for (const char* failing : {"throw Error('thrown')", "editor.(", "undefined"})
        EXPECT_EQ(value(failing), std::nullopt) << failing;
    EXPECT_THAT(log.take(), HasSubstr("thrown"));
    for (int i = 1; i <= 50; ++i)
        shown.view->evaluate("window.order = (window.order ?? '') + '" + std::to_string(i) + ",'");
    EXPECT_TRUE(std::get<std::string>(*value("order")).ends_with(",49,50,"));

    value("messageHandlers.callback.postMessage('stringChanged');"
          "messageHandlers.other.postMessage({a: [1]}); 1");
    ASSERT_TRUE(eventually([&] { return messages.size() == 2; }));
    EXPECT_EQ(messages[0], std::pair(std::string("callback"), scriptValue("stringChanged")));
    EXPECT_EQ(messages[1], std::pair(std::string("other"), scriptValue()));
}

TEST_F(WebViewTest, StaysOnItsPageAndOffTheNetwork) {
    value("document.body.dataset.mark = 'here'");
    CapturedLog log;
    for (const char* leaving :
         {"location = 'https://a.example/'", "location = 'file:///etc/passwd'", "location.reload()",
          "open('https://a.example/') ?? 1",
          "document.forms; const f = document.createElement('form');"
          "f.action = 'https://a.example/'; document.body.append(f); f.submit(); 1",
          "const i = new Image(); i.src = 'https://a.example/i.png'; document.body.append(i); 1",
          "const s = document.createElement('script'); s.src = 'https://a.example/s.js';"
          "document.body.append(s); 1",
          "const e = document.createElement('iframe'); e.src = 'file:///etc/passwd';"
          "document.body.append(e); 1",
          "new WebSocket('wss://a.example/'); 1", "alert('a'); 1"})
        value(std::string("{") + leaving + "}");
    value("fetch('https://a.example/').catch(() => window.refused = true); 1");
    value("{ const s = document.createElement('script');"
          "s.src = '../less.min.js'; s.onerror = () => window.outside = 'refused';"
          "s.onload = () => window.outside = 'loaded'; document.body.append(s); } 1");
    const bool outside = eventually([&] { return value("window.outside") == Value("refused"); });
    const bool refused = eventually([&] { return value("window.refused ?? 0") == Value(true); });
    const Value mark = value("document.body.dataset.mark");
    const Value framed = value("frames[0].document.body.innerText");
    const std::string complaints = log.take();
    EXPECT_TRUE(refused && outside);
    EXPECT_THAT(complaints, HasSubstr("refused a request"));
    EXPECT_EQ(mark, Value("here"));
    EXPECT_TRUE(framed == std::nullopt || framed == Value(""));
    EXPECT_THAT(complaints, HasSubstr("stays on its page"));
    EXPECT_THAT(complaints, HasSubstr("Content Security Policy"));
    EXPECT_EQ(value("typeof RTCPeerConnection"), Value("undefined"));
    EXPECT_TRUE(loaded == 1 && lost == 0);
    value("location = 'about:blank'; 1");
    EXPECT_TRUE(eventually([&] { return lost == 1; }));
}

TEST_F(WebViewTest, TakesDroppedTextButNoFilesAndLinks) {
    for (const char* url : {"", "https://a.example/", "file:///styles/a.css"}) {
        QMimeData data;
        data.setText("a {}");
        if (*url) data.setUrls({QUrl(url)});
        QDragEnterEvent enters({100, 100}, Qt::CopyAction, &data, Qt::LeftButton, {});
        enters.ignore();
        QApplication::sendEvent(shown.widget, &enters);
        EXPECT_EQ(enters.isAccepted(), !*url) << url;
    }
}

TEST_F(WebViewTest, SaysWhenItsProcessEndedAndLoadsAgain) {
    value("window.before = true");
    CapturedLog log;
    ASSERT_EQ(kill(pageProcess(shown), SIGKILL), 0);
    ASSERT_TRUE(eventually([&] { return lost == 1; }));
    // Once more while the page loads.
    beginLoad();
    ASSERT_TRUE(eventually([&] { return pageProcess(shown) > 0; }));
    ASSERT_EQ(kill(pageProcess(shown), SIGKILL), 0);
    ASSERT_TRUE(eventually([&] { return lost == 2 || loaded == 2; }));
    // The engine may not know yet that the process is gone, and give the next page to it.
    loadsAgain = true;
    load();
    loadsAgain = false;
    EXPECT_EQ(value("window.before ?? 'new'"), Value("new"));
    value("messageHandlers.callback.postMessage('again'); 1");
    EXPECT_TRUE(eventually([&] { return messages.size() == 1; }));

    shown.view->loadPage(TESSARIL_RESOURCES "/Ace/missing.html");
    EXPECT_TRUE(eventually([&] { return failed == 1; }));
}

TEST_F(WebViewTest, MayGoWhileItsMenuIsOpen) {
    auto doomed = std::make_unique<QWidget>();
    doomed->resize(800, 600);
    shown.widget->setParent(doomed.get());
    shown.widget->show();
    doomed->show();
    QTest::mouseClick(shown.widget->focusProxy(), Qt::RightButton);
    QPointer<QMenu> menu;
    EXPECT_TRUE(eventually([&] { return (menu = shown.widget->findChild<QMenu*>()) != nullptr; }));
    shown.view->setObserver(nullptr);
    doomed.reset();
    EXPECT_FALSE(menu);
}

} // namespace
} // namespace tessaril
