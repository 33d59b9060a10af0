// An application without windows in a folder of its own, for tests of several that share records:
// real files, preferences, threads and record store. Carries out the commands of its standard
// input, a line each; what it has to say begins with "> ".
//
// Arguments: the folder, the record store's address, the password.

#include "app/application.h"
#include "events/notification_names.h"
#include "events/observe_on_main.h"
#include "preferences/preference_keys.h"
#include "support/sample_styles.h"
#include "support/syncing_machine.h"

#include <QCoreApplication>

#include <cstdio>
#include <functional>
#include <iostream>
#include <map>
#include <numeric>
#include <sstream>
#include <thread>

using namespace tessaril;
using namespace tessaril::testing;

namespace {

void say(const std::string& text) {
    const std::string line = "> " + text + "\n";
    std::fwrite(line.data(), 1, line.size(), stdout);
    std::fflush(stdout);
}

struct SpokenAlerts : RecordingAlerts {
    void showAlert(std::string_view title, std::string_view) override {
        say("alert " + std::string(title));
    }
};

struct Commands {
    explicit Commands(Application& ownApplication) : application(ownApplication) {
        auto& center = application.notificationCenter();
        const auto follow = [&](std::string_view name,
                                std::function<void(const notification&)> what) {
            subscriptions.push_back(
                observeOnMain(center, dispatcher, name, alive, std::move(what)));
        };
        follow(notifications::iCloudError, [](const auto&) { say("error"); });
        follow(notifications::stylesChangedInCloud, [](const auto&) { say("news"); });
        // As an editor does.
        follow(notifications::stylesChangedInCloud, [this](const notification& posted) {
            for (const std::int64_t id : *posted.info<std::vector<std::int64_t>>("changedIDs"))
                if (application.openStyles().contains(id)) {
                    application.notificationCenter().post(notifications::removeFromOpenStyles, id);
                    say("closed " + std::to_string(id));
                }
        });
        application.cloudSwitch().setChangeHandler([this] {
            if (!std::exchange(wantsSync, false)) return;
            application.cloudSwitch().turn(true);
            say("turned on");
        });
    }

    void carryOut(const std::string& line) {
        std::istringstream words(line);
        std::string command, text;
        std::int64_t id = 0;
        words >> command >> id >> text;
        StyleStore& store = application.store();
        if (command == "on") {
            wantsSync = true;
            application.cloudSwitch().paneShown();
        } else if (command == "add") {
            store.appendStyle(namedStyle(text, id));
            store.saveDatabase();
            say("added " + std::to_string(id));
        } else if (command == "addLarge") {
            styleContainer style = namedStyle(text, id);
            style.styleData.sections[0].code.assign(20'000'000, ' ');
            store.appendStyle(style);
            store.saveDatabase();
        } else if (command == "rename") {
            store.renameStyle(*store.indexOfStyle(id), text);
        } else if (command == "edit") {
            styleContainer style = *store.findStyle(id);
            style.styleData.sections[0].code = text;
            style.dateModified = now();
            store.applyEditorChanges(id, style);
        } else if (command == "delete") {
            store.deleteStyle(*store.indexOfStyle(id));
        } else if (command == "open") {
            application.notificationCenter().post(notifications::addToOpenStyles, id);
        } else if (command == "reset") {
            store.resetDatabase();
            application.cloudSync().databaseWasReset();
        } else if (command == "save") {
            store.saveDatabase();
        } else if (command == "retry") {
            application.cloudSync().retry();
        } else if (command == "offline") {
            application.cloudSync().workOffline();
        } else if (command == "recover") {
            std::vector<std::size_t> all(application.recoveryList().names().size());
            std::iota(all.begin(), all.end(), 0);
            application.recoveryList().recover(all);
        } else if (command == "quit") {
            QCoreApplication::quit();
        } else {
            show();
        }
    }

    void show() {
        std::string state = application.cloudSwitch().isOn() ? "on" : "off";
        if (application.styleList().isLockedForSync()) state += " locked";
        state += ":";
        for (const auto& style : application.store().snapshot().styles) {
            const std::string& code = style->styleData.sections[0].code;
            state += " " + style->styleData.name;
            if (code.size() < 100 && code != "a { color: red }") state += "=" + code;
        }
        for (const std::string& name : application.recoveryList().names())
            state += " -" + name;
        say(state);
    }

    Application& application;
    Dispatcher& dispatcher = application.styleEditor().dispatcher;
    bool wantsSync = false;
    std::shared_ptr<int> alive = std::make_shared<int>();
    std::vector<NotificationCenter::Subscription> subscriptions;
};

} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication qt(argc, argv);
    SpokenAlerts spoken;
    SyncingMachine machine(argv[1], argv[2], argv[3], spoken);
    Application application(machine.real());
    // As after an earlier launch: what the first one does about sync is no matter here.
    application.preferences().set(preferenceKeys::hasConfigurediCloud, true);
    Commands commands(application);
    application.styleList().refreshTable();
    application.styleListShown();
    std::thread reader([&] {
        for (std::string line; std::getline(std::cin, line);)
            machine.tasks.onMain([&commands, line] { commands.carryOut(line); });
        machine.tasks.onMain([] { QCoreApplication::quit(); });
    });
    QCoreApplication::exec();
    machine.tasks.finish();
    application.finish();
    machine.tasks.finish();
    say("end");
    reader.join(); // the test closes the input
    return 0;
}
