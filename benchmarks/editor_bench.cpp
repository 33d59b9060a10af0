#include "desktop/web_engine.h"
#include "desktop/widget_style.h"
#include "editor/editor_configuration.h"
#include "platform/web_view.h"
#include "preferences/preferences.h"
#include "windows/code_editor.h"

#include <QApplication>
#include <QEventLoop>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <memory>
#include <optional>

// How long it takes until a further code editor is there, while another is open: from making the
// widget until its page is ready, and until the page holds 200 KB of code. The reference is an
// empty page in the same engine, from making its view until it has loaded.
namespace {

using namespace tessaril;

class NoPreferences : public PreferenceStore {
    std::optional<preferenceValue> value(std::string_view, const preferenceValue&) const override {
        return std::nullopt;
    }
    void setValue(std::string_view, const preferenceValue&) override {}
};

std::string sampleCode() {
    constexpr std::size_t size = 200'000;
    std::string code;
    while (code.size() < size)
        code += ".panel > a:hover {\n\tcolor: rgb(69, 42, 0);\n\tbackground: url(\"a.png\");\n}\n";
    return code;
}

struct surroundings {
    NoPreferences stored, storedShared;
    Preferences preferences{stored}, shared{storedShared};
    NotificationCenter center;
    std::string code = sampleCode();
    LazyWebEngine engine{TESSARIL_WEBENGINE};
};

std::unique_ptr<surroundings> world;

/// An editor in a window; quits the loop when its page holds the code.
struct Editor {
    explicit Editor(std::string ownCode) : code(std::move(ownCode)) {
        editor.resize(800, 600);
        editor.show();
    }

    void configure() {
        ready = true;
        if (stopsWhenReady) return loop.quit();
        // Statements run in order: this one answers when the code is in the page.
        web.view->evaluate("editor.session.getLength()", [this](const auto&) { loop.quit(); });
    }

    void wait() { loop.exec(); }

    std::string code;
    bool ready = false;
    bool stopsWhenReady = false;
    QEventLoop loop;
    UndoManager undo;
    shownWebView web;
    CodeEditor editor{[this](QWidget* parent) { return web = world->engine.makeView(parent); },
                      TESSARIL_RESOURCES "/Ace/index.html", world->center, undo};
    ConfiguredEditor configured{editor.aceView(), world->preferences, world->center,
                                [this] { return editorContent{.text = code}; },
                                [this] { configure(); }};
};

struct EmptyPage : WebViewObserver {
    EmptyPage() {
        window.resize(800, 600);
        shown = world->engine.makeView(&window);
        shown.widget->resize(window.size());
        shown.view->setObserver(this);
        shown.view->loadPage(TESSARIL_EMPTY_PAGE);
        window.show();
    }
    ~EmptyPage() override { shown.view->setObserver(nullptr); }
    void navigationFinished() override { loop.quit(); }
    void messageReceived(std::string_view, const scriptValue&) override {}
    void pageLost() override { std::abort(); }

    QEventLoop loop;
    QWidget window;
    shownWebView shown;
};

/// What closing a view leaves to be done is not the next one's.
void settle() {
    QEventLoop loop;
    QTimer::singleShot(std::chrono::milliseconds(100), &loop, &QEventLoop::quit);
    loop.exec();
}

void openEditor(benchmark::State& state, bool onlyReady) {
    for (auto _ : state) {
        auto editor = std::make_unique<Editor>(world->code);
        editor->stopsWhenReady = onlyReady;
        editor->wait();
        state.PauseTiming();
        editor.reset();
        settle();
        state.ResumeTiming();
    }
}

void openEmptyPage(benchmark::State& state) {
    for (auto _ : state) {
        auto page = std::make_unique<EmptyPage>();
        page->loop.exec();
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

    auto other = std::make_unique<Editor>("a {}");
    other->wait();

    const auto unit = benchmark::kMillisecond;
    benchmark::RegisterBenchmark("editorText/figure", openEditor, false)->Unit(unit)->UseRealTime();
    benchmark::RegisterBenchmark("editorText/reference", openEmptyPage)->Unit(unit)->UseRealTime();
    benchmark::RegisterBenchmark("a further editor until it is ready", openEditor, true)
        ->Unit(unit)
        ->UseRealTime();
    benchmark::RunSpecifiedBenchmarks();
    other.reset();
    world.reset();
}
