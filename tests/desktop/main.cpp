#include "desktop/widget_style.h"

#include <QApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdio>

// A home of its own for the whole run, so that no test touches the user's files, and windows
// without a display unless the caller asks for one.
int main(int argc, char** argv) {
    QTemporaryDir home;
    if (!home.isValid()) {
        std::fputs("Unable to make a temporary home folder.\n", stderr);
        return 1;
    }
    qputenv("HOME", home.path().toLocal8Bit());
    for (const char* name :
         {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"})
        qputenv(name, home.filePath(name).toLocal8Bit());
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");

    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setStyle(new tessaril::WidgetStyle);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
