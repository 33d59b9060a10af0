#pragma once

#include "app/application.h"
#include "support/map_url_loader.h"
#include "support/memory_files.h"
#include "support/memory_records.h"
#include "support/recording_alerts.h"
#include "support/recording_compiler_errors.h"
#include "support/stepped_dispatcher.h"

#include <gmock/gmock.h>

namespace tessaril::testing {

/// A whole machine in memory for the application; it has no compilers.
struct StandInMachine {
    struct NoScripts : ScriptEngine, Resources {
        using Context = std::unique_ptr<ScriptContext>;
        Context makeContext(std::span<const scriptSource>, ExceptionHandler) override { return {}; }
        std::optional<scriptSource> script(std::string_view) const override { return {}; }
    };
    struct Extension : BrowserExtension {
        MOCK_METHOD(std::optional<bool>, isEnabled, (), (const, override));
        MOCK_METHOD(void, showPreferences, (), (override));
    };
    struct Externals : ExternalApplications {
        using view = std::string_view;
        MOCK_METHOD(bool, composeEmail, (view recipient, view subject), (override));
        MOCK_METHOD(bool, openAddress, (view address), (override));
    };

    applicationSurroundings surroundings() {
        return {files,    channel, alerts,         dispatcher, standard,   shared,
                scripts,  scripts, compilerErrors, extension,  externals,  urls,
                pictures, records, "/container",   "/cache",   "/imports", "/drafts"};
    }

    MemoryFiles files;
    MemoryChannel channel{files};
    RecordingAlerts alerts;
    SteppedDispatcher dispatcher;
    MemoryPreferences standard, shared;
    NoScripts scripts;
    RecordingCompilerErrors compilerErrors;
    MapUrlLoader urls;
    MarkedPictures pictures;
    MemoryRecordServer recordServer;
    MemoryRecordStore records{recordServer};
    ::testing::NiceMock<Extension> extension;
    ::testing::StrictMock<Externals> externals;
};

} // namespace tessaril::testing
