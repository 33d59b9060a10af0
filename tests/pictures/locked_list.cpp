#include "desktop/appearance.h"
#include "support/sample_styles.h"
#include "support/stand_in_machine.h"
#include "support/window_commands.h"

#include <QApplication>

// Shows the style list as it is while the cloud's copy is being fetched, until it is closed: a
// state that passes too quickly to take its picture.
int main(int argc, char* argv[]) {
    using namespace tessaril;
    QApplication qt(argc, argv);
    applyAppearance();
    tessaril::testing::StandInMachine machine;
    Application application(machine.surroundings());
    std::int64_t id = 0;
    for (const char* name : {"Calm Reading", "Header Colours", "Night Forum", "Tidy Board"})
        application.store().appendStyle(tessaril::testing::namedStyle(name, ++id));
    application.styleList().setLockedForSync(true);
    mainWindowCommands commands = tessaril::testing::windowCommands(application);
    commands.pasteStyle = [] {}; // or it would not be offered
    MainWindow window(commands);
    window.show();
    return QApplication::exec();
}
