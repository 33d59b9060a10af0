#include "bench_folder.h"
#include "desktop/file_descriptor.h"
#include "desktop/folder_message_channel.h"
#include "desktop/posix_file_system.h"
#include "model/database_json.h"
#include "quiet_machine.h"
#include "sample_database.h"
#include "store/style_store.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>

namespace {

using namespace tessaril;

constexpr std::size_t megabyte = 1'000'000;

/// A store over a document of 50 MB that has been saved once.
struct LargeStore {
    LargeStore() {
        const auto bytes = encodeDatabase(bench::sampleDatabase(2000, 50 * megabyte));
        const std::string_view piece = *bytes;
        if (!files.stage(folder.path, std::span(&piece, 1))->publishAs(folder.path / "styledb.sdb"))
            std::abort();
        store.saveDatabase();
        store.finishSaves();
    }

    void toggle() {
        enabled = !enabled;
        store.setEnabled({1234}, enabled);
    }

    bench::Folder folder;
    PosixFileSystem files;
    FolderMessageChannel channel{files, folder.path};
    bench::NoAlerts alerts;
    bench::NoBackground dispatcher;
    NotificationCenter center;
    bench::NoPreferences stored;
    Preferences preferences{stored};
    StyleStore store{{.files = files,
                      .channel = channel,
                      .alerts = alerts,
                      .dispatcher = dispatcher,
                      .center = center,
                      .preferences = preferences,
                      .compileStyle = [](styleContainer&) { return [] {}; }},
                     folder.path};
    bool enabled = true;
};

void saveAfterToggle(benchmark::State& state) {
    LargeStore large;
    for (auto _ : state) {
        large.toggle();
        large.store.finishSaves();
    }
}

// Write, fsync and rename; less than a save does, which syncs the folder as well.
void saveReference(benchmark::State& state) {
    const bench::Folder folder;
    const std::string bytes = *encodeDatabase(bench::sampleDatabase(2000, 50 * megabyte));
    const std::filesystem::path temporary = folder.path / "temporary";
    for (auto _ : state) {
        const FileDescriptor file(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0600));
        for (std::size_t done = 0; done < bytes.size();) {
            const auto size = ::write(file.get(), bytes.data() + done, bytes.size() - done);
            if (size <= 0) std::abort();
            done += static_cast<std::size_t>(size);
        }
        if (::fsync(file.get()) != 0) std::abort();
        std::filesystem::rename(temporary, folder.path / "document");
    }
}

void callersShare(benchmark::State& state) {
    LargeStore large;
    for (auto _ : state) {
        large.toggle();
        state.PauseTiming();
        large.store.finishSaves();
        state.ResumeTiming();
    }
}

constexpr int saves = 12;

BENCHMARK(saveAfterToggle)
    ->Name("save/figure")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(saves);
BENCHMARK(saveReference)
    ->Name("save/reference")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(saves);
BENCHMARK(callersShare)
    ->Name("callersShare/figure")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(saves);

} // namespace
