#include "desktop/web_engine.h"
#include "desktop/widget_style.h"
#include "editor/editor_configuration.h"
#include "platform/web_view.h"
#include "preferences/preferences.h"
#include "quiet_machine.h"
#include "sample_code.h"
#include "windows/code_editor.h"

#include <QApplication>
#include <QEventLoop>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <functional>
#include <memory>
#include <optional>

// How long it takes until a further code editor is there, while another is open: from making the
// widget until its page is ready, and until the page holds 200 KB of code. The reference is an
// empty page in the same engine, from making its view until it has loaded.
namespace {

using namespace tessaril;

const std::string sample = bench::sampleCode(
    ".panel > a:hover {\n\tcolor: rgb(69, 42, 0);\n\tbackground: url(\"a.png\");\n}\n");

struct surroundings {
    bench::NoPreferences stored, storedShared;
    Preferences preferences{stored}, shared{storedShared};
    NotificationCenter center;
    std::string code = sample;
    LazyWebEngine engine{TESSARIL_WEBENGINE};
};

std::unique_ptr<surroundings> world;

/// Tells when the page has taken a text.
class WatchedWebView : public WebView {
public:
    explicit WatchedWebView(WebView& ownView) : view(ownView) {}

    void setObserver(WebViewObserver* observer) override { view.setObserver(observer); }
    void loadPage(const std::filesystem::path& page) override { view.loadPage(page); }
    void evaluate(std::string_view statement, Completion completion) override {
        if (!statement.starts_with("editor.setValue(")) return view.evaluate(statement, completion);
        view.evaluate(statement, [this, completion](const std::optional<scriptValue>& result) {
            completion(result);
            textTaken();
        });
    }

    std::function<void()> textTaken;

private:
    WebView& view;
};

enum class stage { ready, holdsText, configured };

/// An editor in a window, which waits until it has come to a stage.
class Editor {
public:
    Editor(std::string ownCode, stage wantedStage) : code(std::move(ownCode)), wanted(wantedStage) {
        watched->textTaken = [this] { reached(stage::holdsText); };
        editor.resize(800, 600);
        editor.show();
        loop.exec();
    }

private:
    shownWebView makeView(QWidget* parent) {
        shownWebView made = world->engine.makeView(parent);
        watched = std::make_unique<WatchedWebView>(*made.view);
        made.view = watched.get();
        return made;
    }
    void configuring() {
        reached(stage::ready);
        // Statements run in order: this one answers when all before it have run.
        watched->evaluate("1", [this](const auto&) { reached(stage::configured); });
    }
    void reached(stage now) {
        if (now == wanted) loop.quit();
    }

    std::string code;
    stage wanted;
    QEventLoop loop;
    UndoManager undo;
    std::unique_ptr<WatchedWebView> watched;
    CodeEditor editor{[this](QWidget* parent) { return makeView(parent); },
                      TESSARIL_RESOURCES "/Ace/index.html", world->center, undo};
    ConfiguredEditor configured{editor.aceView(), world->preferences, world->center,
                                [this] { return editorContent{.text = code}; },
                                [this] { configuring(); }};
};

/// An empty page of an address that nobody has asked for before, so that none is loaded ahead.
class EmptyPage : public WebViewObserver {
public:
    EmptyPage() {
        static int number = 0;
        const QString file = folder().filePath(QString::number(++number) + ".html");
        QFile::copy(TESSARIL_EMPTY_PAGE, file);
        window.resize(800, 600);
        shown = world->engine.makeView(&window);
        shown.widget->resize(window.size());
        shown.view->setObserver(this);
        shown.view->loadPage(file.toStdString());
        window.show();
        loop.exec();
    }
    ~EmptyPage() override { shown.view->setObserver(nullptr); }
    void navigationFinished() override { loop.quit(); }
    void messageReceived(std::string_view, const scriptValue&) override {}
    void pageNotLoaded() override { std::abort(); }
    void pageLost() override { std::abort(); }

private:
    static const QTemporaryDir& folder() {
        static const QTemporaryDir one;
        return one;
    }

    QEventLoop loop;
    QWidget window;
    shownWebView shown;
};

/// What closing a view leaves to be done is not the next one's; the page that is loaded ahead is
/// there, as when a person opens one editor after another.
void settle() {
    QEventLoop loop;
    QTimer::singleShot(std::chrono::milliseconds(500), &loop, &QEventLoop::quit);
    loop.exec();
}

void openEditor(benchmark::State& state, stage wanted) {
    // Whatever was opened last, the page that is loaded ahead is the editor's.
    Editor("a {}", stage::configured);
    settle();
    for (auto _ : state) {
        auto editor = std::make_unique<Editor>(world->code, wanted);
        state.PauseTiming();
        editor.reset();
        settle();
        state.ResumeTiming();
    }
}

void openEditorFromScratch(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        EmptyPage(); // so that the page loaded ahead is not the editor's
        settle();
        state.ResumeTiming();
        auto editor = std::make_unique<Editor>(world->code, stage::holdsText);
        state.PauseTiming();
        editor.reset();
        settle();
        state.ResumeTiming();
    }
}

void openEmptyPage(benchmark::State& state) {
    for (auto _ : state) {
        auto page = std::make_unique<EmptyPage>();
        state.PauseTiming();
        page.reset();
        settle();
        state.ResumeTiming();
    }
}

} // namespace

int main(int argc, char* argv[]) {
    QApplication application(argc, argv);
    QApplication::setStyle(new WidgetStyle);
    QApplication::setQuitOnLastWindowClosed(false);
    benchmark::Initialize(&argc, argv);
    world = std::make_unique<surroundings>();
    registerPreferenceDefaults(world->preferences, world->shared, 1, false);

    auto other = std::make_unique<Editor>("a {}", stage::configured);
    settle();

    const auto add = [](const char* name, auto... how) {
        benchmark::RegisterBenchmark(name, how...)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime()
            ->Iterations(5);
    };
    add("editorText/figure", openEditor, stage::holdsText);
    add("editorText/reference", openEmptyPage);
    add("the same, no page loaded ahead", openEditorFromScratch);
    add("a further editor until it is ready", openEditor, stage::ready);
    add("a further editor until all is set up", openEditor, stage::configured);
    benchmark::RunSpecifiedBenchmarks();
    other.reset();
    world.reset();
}
