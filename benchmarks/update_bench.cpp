#include "desktop/curl_url_loader.h"
#include "desktop/qt_dispatcher.h"
#include "desktop/widget_style.h"
#include "list_window.h"
#include "support/style_site_server.h"
#include "web/loaded_text.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <thread>

// Looking for newer versions of 200 styles in the list, from a server that answers after 20 ms. All
// have one. Saves are written.
namespace {

using namespace tessaril;
using namespace std::chrono_literals;

constexpr int styleCount = 200;

std::string styleText(int number, std::string_view version) {
    std::string text = "/* ==UserStyle==\n@name Style " + std::to_string(number) + "\n@version ";
    text.append(version).append("\n==/UserStyle== */\n@-moz-document domain(\"a.example\") {\n");
    for (int rule = 0; rule < 200; ++rule)
        text += ".rule-" + std::to_string(rule) + " { color: #1e1e2e; background: none }\n";
    return text + "}\n";
}

struct Machine : bench::Container {
    tessaril::testing::StyleSiteServer server;
    QtDispatcher tasks;
    CurlUrlLoader network;
};

/// The list's window over styles that the server has newer versions of.
struct UpdatedList : Machine, bench::ListWindow {
    UpdatedList() : ListWindow(*this, tasks, network) {
        for (int number = 0; number < styleCount; ++number)
            server.put(path(number), styleText(number, "2"), "delay=20");
        reset();
        updates.setObserver([this] {
            if (!updates.isRunning()) ended.quit();
        });
        show();
    }

    ~UpdatedList() {
        tasks.finish();
        store.finishSaves();
        tasks.finish();
    }

    static std::string path(int number) { return std::to_string(number) + ".user.css"; }
    std::string address(int number) const { return server.http("/" + path(number)); }

    /// The old versions again.
    void reset() {
        store.resetDatabase();
        for (int number = 0; number < styleCount; ++number) {
            styleContainer style =
                makeStyleContainer(makeStyleJSON("Style " + std::to_string(number), ""),
                                   sourceUserCSS, noUserstyleID, number + 1);
            style.downloadedFrom = address(number);
            store.appendStyle(std::move(style));
        }
        list.refreshTable();
        store.finishSaves();
    }

    void update() {
        updates.updateAllClicked();
        ended.exec();
        const auto isOld = [](const auto& style) { return style->version != "2"; };
        if (std::ranges::any_of(store.snapshot().styles, isOld)) std::abort();
    }

    QEventLoop ended;
};

std::unique_ptr<UpdatedList> world;

void updateAll(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        world->reset();
        state.ResumeTiming();
        world->update();
    }
}

void downloadInTurn(benchmark::State& state) {
    for (auto _ : state) {
        std::jthread([] {
            for (int number = 0; number < styleCount; ++number)
                if (!loadText(world->loader, {.address = world->address(number)})) std::abort();
        }).join();
    }
}

/// The longest time for which the event loop did not come round while styles were updated.
void longestPause(benchmark::State& state) {
    for (auto _ : state) {
        world->reset();
        QCoreApplication::processEvents();
        constexpr auto interval = 1ms;
        QTimer ticks;
        ticks.setTimerType(Qt::PreciseTimer);
        QElapsedTimer sinceTick;
        qint64 longest = 0; // nanoseconds
        QObject::connect(&ticks, &QTimer::timeout, [&] {
            longest = std::max(longest, sinceTick.nsecsElapsed());
            sinceTick.restart();
        });
        ticks.start(interval);
        sinceTick.start();
        world->update();
        longest = std::max(longest, sinceTick.nsecsElapsed());
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::nanoseconds(longest) - interval).count());
    }
}

} // namespace

int main(int argc, char* argv[]) {
    QApplication application(argc, argv);
    QApplication::setStyle(new WidgetStyle);
    benchmark::Initialize(&argc, argv);
    world = std::make_unique<UpdatedList>();
    const auto add = [](const char* name, void (*measured)(benchmark::State&)) {
        return benchmark::RegisterBenchmark(name, measured)
            ->Unit(benchmark::kMillisecond)
            ->Iterations(1)
            ->Repetitions(5);
    };
    add("updateAll/figure", updateAll)->UseRealTime();
    add("updateAll/reference", downloadInTurn)->UseRealTime();
    add("updatePause/figure", longestPause)->UseManualTime();
    benchmark::RunSpecifiedBenchmarks();
    world.reset();
}
