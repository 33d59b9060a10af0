#pragma once

#include "events/notification_center.h"
#include "import/file_import.h"
#include "platform/alerts.h"
#include "platform/dispatcher.h"
#include "store/style_store.h"

#include <deque>
#include <filesystem>
#include <vector>

namespace tessaril {

/// Files that the system hands over, by their extension: a database is merged after a question, a
/// style file is imported, any other is ignored. Main thread only.
class OpenedFiles {
public:
    OpenedFiles(StyleStore& store, FileImport& importer, NotificationCenter& center,
                Dispatcher& dispatcher, Alerts& alerts);

    /// Files that arrive while a question is open wait for its answer.
    void open(const std::vector<std::filesystem::path>& files);

private:
    void openDatabase(const std::filesystem::path& file);

    StyleStore& store;
    FileImport& importer;
    NotificationCenter& center;
    Dispatcher& dispatcher;
    Alerts& alerts;
    std::deque<std::filesystem::path> waiting;
    bool isOpening = false;
};

} // namespace tessaril
