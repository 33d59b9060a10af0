#include "desktop/widget_style.h"
#include "model/database_json.h"
#include "quiet_machine.h"
#include "sample_database.h"
#include "support/sql_records.h"
#include "support/syncing_machine.h"
#include "support/syncing_process.h"
#include "support/window_commands.h"
#include "windows/main_window.h"
#include "windows/style_list_view.h"

#include <QApplication>
#include <QWindow>

#include <benchmark/benchmark.h>

#include <memory>
#include <semaphore>
#include <string>
#include <utility>

// A style renamed by one process until its row is drawn in the window of another, through a server
// on this machine. Both hold 1,000 styles of 10 MB.
namespace {

using namespace tessaril;
using namespace tessaril::testing;

constexpr std::size_t styleCount = 1000;
constexpr std::size_t documentSize = 10'000'000;

void require(bool isGood) {
    if (!isGood) std::abort();
}

template <class Records>
std::string passwordFor(const Records& records) {
    if constexpr (requires { records.user; }) return records.user;
    return {};
}

/// A container with the document.
struct FilledFolder {
    FilledFolder() {
        writeFile(folder / "styledb.sdb",
                  *encodeDatabase(bench::sampleDatabase(styleCount, documentSize)));
    }
    TemporaryFolder folder;
};

/// The application whose window is looked at, and the process that saves.
template <class Records>
struct TwoMachines : FilledFolder {
    TwoMachines() {
        application.preferences().set(preferenceKeys::hasConfigurediCloud, true);
        application.preferences().set(preferenceKeys::useiCloud, true);
        application.styleList().refreshTable();
        window.show();
        // Nothing is drawn before the display has shown the window.
        while (!window.windowHandle()->isExposed())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        application.cloudSync().begin();
        require(eventually([this] { return !application.cloudSync().syncInProgress(); }));
        saver.tell("on");
        require(
            eventually([this] { return saver.shown().find(" Style 999") != std::string::npos; }));
        renameElsewhere(); // the first one makes what all later ones find
    }
    ~TwoMachines() {
        saver.quit();
        machine.tasks.finish();
        application.finish();
        machine.tasks.finish();
    }

    void renameElsewhere() {
        const std::string name = "Name" + std::to_string(++renames);
        saver.tell("rename 0 " + name);
        while (application.styleList().styles().front()->name != name)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        QCoreApplication::sendPostedEvents();
        view->viewport()->repaint();
    }

    Records records;
    bench::NoAlerts alerts;
    SyncingMachine machine{folder.path, records.address(), passwordFor(records), alerts};
    Application application{machine.real()};
    MainWindow window{windowCommands(application)};
    StyleListView* view = window.findChild<StyleListView*>("styleList");
    SyncingProcess saver{records.address(), passwordFor(records)};
    int renames = 0;
};

/// The same bytes from one store to another, and nothing besides.
template <class Records>
struct BareStores : FilledFolder {
    BareStores() {
        receiver->setChangeHandler([this] {
            receiver->fetchRecords({record.id}, [this](const recordFetch& fetched) {
                require(fetched.records && fetched.records->at(record.id).file);
                arrived.release();
            });
        });
        receiver->saveSubscription(record.id.type, [this](const auto& error) {
            require(!error);
            saved.release();
        });
        saved.acquire();
        send();
    }

    void send() {
        sender->modifyRecords({record}, [this](const recordSave& answer) {
            require(!answer.error);
            record.changeTag = answer.changeTags.front();
            saved.release();
        });
        saved.acquire();
        arrived.acquire();
    }

    Records records;
    cloudRecord record{
        .id = {"styleDatabase", "styleDatabase"},
        .file = std::make_shared<const std::string>(fileContent(folder / "styledb.sdb"))};
    std::binary_semaphore saved{0}, arrived{0};
    std::unique_ptr<RecordStore> sender = records.client(), receiver = records.client();
};

template <class Records>
void saveToRow(benchmark::State& state) {
    TwoMachines<Records> machines;
    for (auto _ : state)
        machines.renameElsewhere();
}

template <class Records>
void documentAlone(benchmark::State& state) {
    BareStores<Records> stores;
    for (auto _ : state)
        stores.send();
}

} // namespace

int main(int argc, char* argv[]) {
    QApplication application(argc, argv);
    QApplication::setStyle(new WidgetStyle);
    benchmark::Initialize(&argc, argv);
    const auto add = [](const char* name, void (*measured)(benchmark::State&)) {
        benchmark::RegisterBenchmark(name, measured)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime()
            ->Iterations(5);
    };
    add("syncSqlite/figure", saveToRow<SqliteRecords>);
    add("syncSqlite/reference", documentAlone<SqliteRecords>);
    add("syncPostgres/figure", saveToRow<PostgresRecords>);
    add("syncPostgres/reference", documentAlone<PostgresRecords>);
    benchmark::RunSpecifiedBenchmarks();
}
