#pragma once

#include "app/application.h"
#include "support/memory_files.h"
#include "support/recording_alerts.h"
#include "support/stepped_dispatcher.h"

#include <string>
#include <vector>

namespace tessaril::testing {

/// A whole machine in memory for the application.
struct StandInMachine {
    class NoScripts : public ScriptEngine {
        std::unique_ptr<ScriptContext> makeContext(std::span<const scriptSource>,
                                                   ExceptionHandler) override {
            return nullptr;
        }
    };
    class NoResources : public Resources {
        std::optional<scriptSource> script(std::string_view) const override { return {}; }
    };
    class NoErrorWindows : public CompilerErrors {
        void show(compilerError) override {}
    };
    class Extension : public BrowserExtension {
    public:
        std::optional<bool> isEnabled() const override { return enabled; }
        void showPreferences() override { ++preferencesShown; }
        std::optional<bool> enabled;
        int preferencesShown = 0;
    };
    class Externals : public ExternalApplications {
    public:
        bool composeEmail(std::string_view recipient, std::string_view subject) override {
            emails.push_back(std::string(recipient) + ": " + std::string(subject));
            return hasEmail;
        }
        bool openAddress(std::string_view address) override {
            addresses.emplace_back(address);
            return true;
        }
        bool hasEmail = true;
        std::vector<std::string> emails;
        std::vector<std::string> addresses;
    };

    applicationSurroundings surroundings() {
        return {.files = files,
                .channel = channel,
                .alerts = alerts,
                .dispatcher = dispatcher,
                .standardPreferences = standard,
                .sharedPreferences = shared,
                .scripts = scripts,
                .resources = resources,
                .compilerErrors = compilerErrors,
                .extension = extension,
                .externals = externals,
                .container = "/container"};
    }

    MemoryFiles files;
    MemoryChannel channel{files};
    RecordingAlerts alerts;
    SteppedDispatcher dispatcher;
    MemoryPreferences standard;
    MemoryPreferences shared;
    NoScripts scripts;
    NoResources resources;
    NoErrorWindows compilerErrors;
    Extension extension;
    Externals externals;
};

} // namespace tessaril::testing
