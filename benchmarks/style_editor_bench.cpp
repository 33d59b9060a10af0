#include "desktop/web_engine.h"
#include "desktop/widget_style.h"
#include "editor/editor_configuration.h"
#include "events/notification_names.h"
#include "preferences/preferences.h"
#include "sample_code.h"
#include "support/list_window.h"
#include "windows/code_editor.h"
#include "windows/other_windows.h"
#include "windows/style_editor_window.h"

#include <QApplication>
#include <QEventLoop>
#include <QPointer>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <ctime>
#include <functional>
#include <memory>
#include <vector>

// Opening a Style Editor on 200 KB of Less, from the double click in the list until the page is set
// up and has the focus, beside the bare code editor, set up in the same way. Then what a key press
// in it takes of the application's main thread.
namespace {

using namespace tessaril;

const std::string sample = bench::sampleCode(
    ".panel {\n\t> a:hover { color: darken(#452a00, 10%); }\n\twidth: (@width + 2);\n}\n");

/// Tells when the page has carried out what sets it up, the last of which is the focus.
class WatchedWebView : public WebView {
public:
    WatchedWebView(WebView& ownView, QEventLoop& waiting) : view(ownView), loop(waiting) {}

    void setObserver(WebViewObserver* observer) override { view.setObserver(observer); }
    void loadPage(const std::filesystem::path& page) override { view.loadPage(page); }
    void evaluate(std::string_view statement, Completion completion) override {
        view.evaluate(statement, std::move(completion));
        if (statement == "focusEditor();") view.evaluate("1", [this](const auto&) { loop.quit(); });
    }

private:
    WebView& view;
    QEventLoop& loop;
};

struct World {
    World() {
        styleContainer style;
        style.styleData.name = "Sample";
        style.source = sourceCustom;
        style.preprocessor = "less";
        style.styleData.sections = {{.code = sample}};
        list.application.store().appendStyle(style);
        list.application.listCommands().setRoutes(
            {.openStyleForEditing = [this](std::int64_t id, bool) {
                return others.openStyleEditor(id, list.window);
            }});
        list.showWindow();
    }

    shownWebView makeView(QWidget* parent) {
        shownWebView made = engine.makeView(parent);
        watched.push_back(std::make_unique<WatchedWebView>(*made.view, ready));
        made.view = watched.back().get();
        return made;
    }

    LazyWebEngine engine{TESSARIL_WEBENGINE};
    QEventLoop ready;
    std::vector<std::unique_ptr<WatchedWebView>> watched; ///< of all editors, as they end later
    tessaril::testing::ListWindow list;
    OtherWindows others{list.application, [this](QWidget* parent) { return makeView(parent); },
                        TESSARIL_RESOURCES "/Ace/index.html"};
};

std::unique_ptr<World> world;

/// What closing a view leaves to be done is not the next one's.
void settle() {
    QEventLoop loop;
    QTimer::singleShot(std::chrono::milliseconds(500), &loop, &QEventLoop::quit);
    loop.exec();
}

struct StyleEditor {
    StyleEditor() {
        QWidget* row = world->list.view.viewport();
        QTest::mouseDClick(row, Qt::LeftButton, {}, world->list.rowRect(0).center());
        world->ready.exec();
        for (QWidget* shown : QApplication::topLevelWidgets())
            if (shown->objectName() == "styleEditorWindow") window = shown;
    }
    ~StyleEditor() { delete window; }

    QPointer<QWidget> window;
};

struct BareEditor {
    BareEditor() {
        editor.resize(920, 700);
        editor.show();
        world->ready.exec();
    }

    std::string code = sample;
    UndoManager undo;
    Application& application = world->list.application;
    CodeEditor editor{[](QWidget* parent) { return world->makeView(parent); },
                      TESSARIL_RESOURCES "/Ace/index.html", application.notificationCenter(), undo};
    ConfiguredEditor configured{editor.aceView(), application.preferences(),
                                application.notificationCenter(),
                                [this] { return editorContent{.text = code, .mode = "less"}; },
                                [this] { editor.focusEditor(); }};
};

template <typename Editor>
void open(benchmark::State& state) {
    for (auto _ : state) {
        auto editor = std::make_unique<Editor>();
        state.PauseTiming();
        editor.reset();
        settle();
        state.ResumeTiming();
    }
}

double mainThreadSeconds() {
    timespec used{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return static_cast<double>(used.tv_sec) + 1e-9 * static_cast<double>(used.tv_nsec);
}

// Processor time of the main thread, everything in it: from the key until the working copy has it.
void pressKey(benchmark::State& state) {
    const StyleEditor editor;
    settle();
    QEventLoop known;
    const auto changed = world->list.application.notificationCenter().observe(
        notifications::ACEDidChange, [&](const auto&) { known.quit(); });
    QWidget* page = editor.window->focusWidget();
    for (auto _ : state) {
        const double before = mainThreadSeconds();
        QTest::keyClick(page, Qt::Key_X);
        known.exec();
        state.SetIterationTime(mainThreadSeconds() - before);
    }
}

} // namespace

int main(int argc, char* argv[]) {
    QApplication application(argc, argv);
    QApplication::setStyle(new WidgetStyle);
    QApplication::setQuitOnLastWindowClosed(false);
    benchmark::Initialize(&argc, argv);
    world = std::make_unique<World>();
    // As for a person who has opened one before: the engine runs, the next page is loaded ahead.
    auto other = std::make_unique<BareEditor>();
    settle();

    const auto add = [](const char* name, auto run) {
        return benchmark::RegisterBenchmark(name, run)->Unit(benchmark::kMillisecond);
    };
    add("openStyleEditor/figure", open<StyleEditor>)->UseRealTime()->Iterations(5);
    add("openStyleEditor/reference", open<BareEditor>)->UseRealTime()->Iterations(5);
    add("styleEditorKey/figure", pressKey)->UseManualTime()->Iterations(40);
    benchmark::RunSpecifiedBenchmarks();
    other.reset();
    world.reset();
}
