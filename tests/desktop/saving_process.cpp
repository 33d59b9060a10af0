// Changes the styles of a container and saves them without end, for a test that kills it. In state
// N every style's code begins with N; the styles are changed in order, after the preference "first"
// is set to N and before "last" is. Prints N after all of that is stored.

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

using namespace tessaril;
using namespace tessaril::testing;

int main(int, char* argv[]) {
    const std::filesystem::path container = argv[1];
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
    SettingsStore settings(container / "tessaril.conf");
    const auto last = settings.value("last", std::int64_t{});
    for (std::int64_t state = last ? std::get<std::int64_t>(*last) + 1 : 1;; ++state) {
        settings.setValue("first", state);
        const std::string code = std::to_string(state) + std::string(20000, ' ');
        for (std::int64_t id = 0; id < styleCount; ++id) {
            store.setStyleData(id, makeStyleJSON(std::to_string(id), code));
            if (id % 2 == 0) store.saveDatabase();
        }
        store.saveDatabase();
        store.finishSaves();
        settings.setValue("last", state);
        std::printf("%d\n", static_cast<int>(state));
        std::fflush(stdout);
        if (!alerts.alerts.empty()) return 1;
    }
}
