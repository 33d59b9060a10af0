// Changes the styles of a container and saves them without end, for a test that kills it. In state
// N every style's code begins with N; the styles are changed in order. Prints N after N is saved.
// With a second argument it sets preferences in that file instead: in state N the keys "first" and
// "last" are set to N, in this order.

#include "desktop/folder_message_channel.h"
#include "desktop/own_folders.h"
#include "desktop/posix_file_system.h"
#include "desktop/settings_store.h"
#include "store/style_store.h"
#include "support/memory_files.h"
#include "support/recording_alerts.h"
#include "support/sample_styles.h"
#include "support/thread_dispatcher.h"

#include <cstdio>
#include <cstdlib>

using namespace tessaril;
using namespace tessaril::testing;

namespace {

void confirm(int state) {
    std::printf("%d\n", state);
    std::fflush(stdout);
}

[[noreturn]] void setWithoutEnd(const std::filesystem::path& file) {
    SettingsStore store(file);
    const auto last = store.value("last", std::int64_t{});
    for (std::int64_t state = last ? std::get<std::int64_t>(*last) + 1 : 1;; ++state) {
        store.setValue("first", state);
        store.setValue("last", state);
        confirm(static_cast<int>(state));
    }
}

} // namespace

int main(int argc, char* argv[]) {
    const std::filesystem::path container = argv[1];
    if (argc > 2) setWithoutEnd(container / argv[2]);
    makeBackupFolder(container);
    PosixFileSystem files;
    FolderMessageChannel channel(files, container);
    RecordingAlerts alerts;
    ThreadDispatcher dispatcher;
    NotificationCenter center;
    MemoryPreferences stored;
    Preferences preferences(stored);
    StyleStore store({.files = files,
                      .channel = channel,
                      .alerts = alerts,
                      .dispatcher = dispatcher,
                      .center = center,
                      .preferences = preferences,
                      .compileStyle = [](styleContainer&) { return [] {}; }},
                     container);

    constexpr std::int64_t styleCount = 6;
    for (std::int64_t id = 0; id < styleCount; ++id)
        if (!store.styleWithID(id)) store.appendStyle(namedStyle(std::to_string(id), id));
    const std::string last = store.styleWithID(0)->styleData.sections.front().code;
    for (int state = std::atoi(last.c_str()) + 1;; ++state) {
        const std::string code = std::to_string(state) + std::string(20000, ' ');
        for (std::int64_t id = 0; id < styleCount; ++id) {
            store.setStyleData(id, makeStyleJSON(std::to_string(id), code));
            if (id % 2 == 0) store.saveDatabase();
        }
        store.saveDatabase();
        store.finishSaves();
        confirm(state);
        if (!alerts.alerts.empty()) return 1;
    }
}
