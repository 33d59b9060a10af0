#pragma once

#include "desktop/folder_message_channel.h"
#include "desktop/own_folders.h"
#include "desktop/posix_file_system.h"
#include "desktop/qt_dispatcher.h"
#include "desktop/settings_store.h"
#include "records/sql_record_store.h"
#include "support/stand_in_machine.h"

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

namespace tessaril::testing {

/// A machine for the application with what sync needs: real files and preferences in a folder of
/// its own, real threads and a real record store. The rest stands in.
struct SyncingMachine : StandInMachine {
    SyncingMachine(const std::filesystem::path& folder, const std::string& address,
                   const std::string& password, Alerts& ownAlerts)
        : container(folder)
        , shownAlerts(ownAlerts)
        , preferences(folder / "preferences.ini")
        , sqlRecords(
              {.address = [address] { return address; },
               .passwords = [password](const auto&,
                                       auto) { return passwordAnswer{.password = password}; },
               .operationTime = std::chrono::minutes(1)}) {
        makeBackupFolder(container);
        std::filesystem::create_directory(container / "wormhole");
    }

    applicationSurroundings real() {
        return {.files = posixFiles,
                .channel = folderChannel,
                .alerts = shownAlerts,
                .dispatcher = tasks,
                .standardPreferences = preferences,
                .sharedPreferences = shared,
                .scripts = scripts,
                .resources = scripts,
                .compilerErrors = compilerErrors,
                .extension = extension,
                .externals = externals,
                .urls = urls,
                .iconDecoder = pictures,
                .records = sqlRecords,
                .container = container,
                .iconCache = {},
                .importFolder = {},
                .draftFolder = makeDraftFolder(container)};
    }

    std::filesystem::path container;
    Alerts& shownAlerts;
    PosixFileSystem posixFiles;
    FolderMessageChannel folderChannel{posixFiles, container};
    QtDispatcher tasks;
    SettingsStore preferences;
    SqlRecordStore sqlRecords;
};

} // namespace tessaril::testing
