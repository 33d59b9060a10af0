#pragma once

#include "model/database_json.h"
#include "store/style_store.h"
#include "support/memory_files.h"
#include "support/recording_alerts.h"
#include "support/sample_styles.h"
#include "support/stepped_dispatcher.h"

#include <chrono>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace tessaril::testing {

/// A store and what it needs of the machine, in memory. The store loads at its first access.
template <typename Tasks = SteppedDispatcher>
struct StoreMachine {
    inline static const std::filesystem::path document = "/container/styledb.sdb";

    void putDocument(std::vector<styleContainer> styles,
                     const std::filesystem::path& path = document) {
        files.contents[path] = *encodeDatabase({.styles = std::move(styles), .randomHash = -1});
    }
    styleDatabase written(const std::filesystem::path& path = document) {
        return decodeDatabase(files.contents.at(path)).value();
    }
    /// The names in the live database.
    std::vector<std::string> names() {
        std::vector<std::string> result;
        for (const auto& row : store.styleRows())
            result.push_back(row->name);
        return result;
    }
    /// The identifiers in the live database.
    std::set<std::int64_t> identifiers() {
        std::set<std::int64_t> result;
        for (const auto& style : store.snapshot().styles)
            result.insert(style->uniqueID);
        return result;
    }
    void setEnabled(std::int64_t id, bool enabled) { store.setEnabled({id}, enabled); }

    MemoryFiles files;
    MemoryChannel channel{files};
    RecordingAlerts alerts;
    Tasks dispatcher;
    NotificationCenter center;
    MemoryPreferences stored;
    Preferences preferences{stored};
    std::function<void(styleContainer&)> compile = [](styleContainer&) {};
    std::function<void()> afterStoring = [] {};
    std::chrono::sys_seconds clock = systemSeconds();
    StyleStore store{{files, channel, alerts, dispatcher, center, preferences,
                      [this](styleContainer& style) {
                          compile(style);
                          return [this] { afterStoring(); };
                      },
                      [this] { return clock; }},
                     document.parent_path()};
};

} // namespace tessaril::testing
