#include "desktop/widget_style.h"
#include "support/temporary_folder.h"

#include <QApplication>

#include <gtest/gtest.h>

// A home of its own for the whole run, so that no test touches the user's files, and windows
// without a display unless the caller asks for one.
int main(int argc, char** argv) {
    const tessaril::testing::TemporaryFolder home;
    for (const char* name :
         {"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"})
        qputenv(name, (home / name).c_str());
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");

    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setStyle(new tessaril::WidgetStyle);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
