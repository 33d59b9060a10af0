#include "desktop/widget_style.h"
#include "list_window.h"
#include "model/database_json.h"
#include "sample_database.h"

#include <QApplication>
#include <QLineEdit>

#include <benchmark/benchmark.h>

#include <deque>
#include <memory>

// The style list's window over 10,000 styles: what the main thread does, drawing included. Saves
// are asked for, but not carried out.
namespace {

using namespace tessaril;

constexpr std::size_t styleCount = 10'000;
constexpr std::size_t documentSize = 50'000'000;

/// A container with the document.
struct LargeContainer : bench::Container {
    LargeContainer() {
        const auto bytes = encodeDatabase(bench::sampleDatabase(styleCount, documentSize));
        const std::string_view piece = *bytes;
        if (!files.stage(container, std::span(&piece, 1))->publishAs(container / "styledb.sdb"))
            std::abort();
    }

    bench::NoBackground tasks;
    bench::NoNetwork network;
};

/// The window over it.
struct LargeList : LargeContainer, bench::ListWindow {
    LargeList() : ListWindow(*this, tasks, network) {
        show();
        draw();
    }

    /// Lets everything happen that the main thread has to do until the change is on the screen.
    void draw() {
        QCoreApplication::sendPostedEvents();
        view->viewport()->repaint();
    }

    QLineEdit* filter = window.findChild<QLineEdit*>("filterField");
};

std::unique_ptr<LargeList> world;

void buildList(benchmark::State& state) {
    for (auto _ : state) {
        world->list.refreshTable();
        world->draw();
    }
}

void decodeDocument(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        auto bytes =
            world->LargeContainer::files.read(world->LargeContainer::container / "styledb.sdb");
        state.ResumeTiming();
        auto decoded = decodeDatabase(*std::move(bytes));
        benchmark::DoNotOptimize(decoded);
        state.PauseTiming();
        decoded.reset();
        state.ResumeTiming();
    }
}

void toggle(benchmark::State& state) {
    for (auto _ : state) {
        world->commands.onToggle(5);
        world->draw();
    }
}

void rename(benchmark::State& state) {
    int count = 0;
    for (auto _ : state) {
        world->commands.endEditingName(5, "Name " + std::to_string(++count));
        world->draw();
    }
}

/// From the first place to the last and back: all rows between them shift.
void move(benchmark::State& state) {
    bool isFirst = true;
    for (auto _ : state) {
        if (isFirst)
            world->commands.dropRows({0}, styleCount);
        else
            world->commands.dropRows({styleCount - 1}, 0);
        isFirst = !isFirst;
        world->draw();
    }
}

/// The letters of a word that every name has, then a number that few have, one after another.
void typeFilter(benchmark::State& state) {
    const QString typed = "style 77";
    qsizetype length = 0;
    for (auto _ : state) {
        length = length % typed.size() + 1;
        world->filter->setText(typed.left(length));
        world->draw();
    }
    world->filter->clear();
}

} // namespace

int main(int argc, char* argv[]) {
    QApplication application(argc, argv);
    QApplication::setStyle(new WidgetStyle);
    benchmark::Initialize(&argc, argv);
    world = std::make_unique<LargeList>();
    const auto add = [](const char* name, void (*measured)(benchmark::State&)) {
        benchmark::RegisterBenchmark(name, measured)->Unit(benchmark::kMillisecond)->UseRealTime();
    };
    add("buildList/figure", buildList);
    add("buildList/reference", decodeDocument);
    add("listToggle/figure", toggle);
    add("listRename/figure", rename);
    add("listMove/figure", move);
    add("listFilter/figure", typeFilter);
    benchmark::RunSpecifiedBenchmarks();
    world.reset();
}
