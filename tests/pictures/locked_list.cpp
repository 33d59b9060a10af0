#include "desktop/appearance.h"
#include "events/notification_names.h"
#include "support/sample_styles.h"
#include "support/stand_in_machine.h"
#include "support/window_commands.h"
#include "windows/recovery_panel.h"

#include <QApplication>

// Shows, until it is closed, a state that passes too quickly to take its picture, or that takes a
// cloud: the style list while the cloud's copy is being fetched; given "failed", once that has
// failed; given "removed", also the styles that a merge removed.
int main(int argc, char* argv[]) {
    using namespace tessaril;
    QApplication qt(argc, argv);
    applyAppearance();
    const QStringList arguments = QApplication::arguments();
    tessaril::testing::StandInMachine machine;
    Application application(machine.surroundings());
    std::int64_t id = 0;
    for (const char* name : {"Calm Reading", "Header Colours", "Night Forum", "Tidy Board"})
        application.store().appendStyle(tessaril::testing::namedStyle(name, ++id));
    mainWindowCommands commands = tessaril::testing::windowCommands(application);
    commands.pasteStyle = [] {}; // or it would not be offered
    MainWindow window(commands);
    window.show();
    if (arguments.contains("removed")) {
        for (const char* name : {"Plain Recipes", "Wide Wiki", "Quiet News"})
            application.recoveryList().add({std::make_shared<const styleContainer>(
                tessaril::testing::namedStyle(name, ++id))});
        (new RecoveryPanel({application.recoveryList(), application.listCommands(),
                            application.notificationCenter(), application.dispatcher()},
                           &window))
            ->bringForward();
    } else {
        application.styleList().setLockedForSync(true);
    }
    if (arguments.contains("failed"))
        application.notificationCenter().post(notifications::iCloudError);
    machine.dispatcher.runAll();
    return QApplication::exec();
}
