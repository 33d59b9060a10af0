// Changes the styles of a container and saves them without end, for a test that kills it. In state
// N every style's code begins with N; the styles are changed in order. Prints N after N is saved.

#include "desktop/folder_message_channel.h"
#include "desktop/posix_file_system.h"
#include "store/style_store.h"
#include "support/memory_files.h"
#include "support/recording_alerts.h"
#include "support/sample_styles.h"
#include "support/thread_dispatcher.h"

#include <charconv>
#include <cstdio>

namespace {

using namespace tessaril;
using namespace tessaril::testing;

constexpr std::int64_t styleCount = 6;
constexpr int savesPerState = 3;

std::int64_t stateOf(const styleContainer& style) {
    const std::string& code = style.styleData.sections.front().code;
    std::int64_t state = 0;
    std::from_chars(code.data(), code.data() + code.size(), state);
    return state;
}

} // namespace

int main(int, char* argv[]) {
    const std::filesystem::path container = argv[1];
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
                      .compileStyle = [](styleContainer&) {}},
                     container);

    for (std::int64_t id = 0; id < styleCount; ++id)
        if (!store.styleWithID(id)) store.appendStyle(namedStyle(std::to_string(id), id));
    for (std::int64_t state = stateOf(*store.styleWithID(0)) + 1;; ++state) {
        const std::string code = std::to_string(state) + std::string(20000, ' ');
        for (std::int64_t id = 0; id < styleCount; ++id) {
            store.setStyleData(id, makeStyleJSON(std::to_string(id), code));
            if (id % (styleCount / savesPerState) == 0) store.saveDatabase();
        }
        store.saveDatabase();
        store.finishSaves();
        std::printf("%lld\n", static_cast<long long>(state));
        std::fflush(stdout);
        if (!alerts.alerts.empty()) return 1;
    }
}
