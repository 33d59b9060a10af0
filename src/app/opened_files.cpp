#include "app/opened_files.h"

#include "events/notification_names.h"
#include "model/text.h"

namespace tessaril {

OpenedFiles::OpenedFiles(StyleStore& styleStore, FileImport& fileImporter, NotificationCenter& bus,
                         Dispatcher& taskDispatcher, Alerts& alertPresenter)
    : store(styleStore)
    , importer(fileImporter)
    , center(bus)
    , dispatcher(taskDispatcher)
    , alerts(alertPresenter) {}

void OpenedFiles::open(const std::vector<std::filesystem::path>& files) {
    waiting.insert(waiting.end(), files.begin(), files.end());
    if (isOpening) return;
    isOpening = true;
    while (!waiting.empty()) {
        const std::filesystem::path file = std::move(waiting.front());
        waiting.pop_front();
        const std::string extension = file.extension().string();
        if (extension == ".sdb") openDatabase(file);
        if (extension == ".css" || extension == ".styl" || extension == ".less")
            importer.importFiles({file});
    }
    isOpening = false;
}

void OpenedFiles::openDatabase(const std::filesystem::path& file) {
    const alertAnswer answer = alerts.ask(
        {.title = "Do you want to import the styles from the Style Database file at " +
                  validUTF8(file.string()) + "?",
         .text = "This will add the styles from this file to your current style database.",
         .buttons = {"Yes", "No"}});
    if (answer.button != 0) return;
    dispatcher.inBackground(taskPriority::utility, [this, file] {
        store.importDatabase(file);
        dispatcher.onMain([this] { center.post(notifications::refreshTable); });
    });
}

} // namespace tessaril
