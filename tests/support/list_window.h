#pragma once

#include "support/event_loop.h"
#include "support/sample_styles.h"
#include "support/stand_in_machine.h"
#include "support/window_commands.h"
#include "windows/style_list_view.h"

#include <QtWidgets>

namespace tessaril::testing {

/// The main window over an application in memory.
struct ListWindow {
    using Adjust = std::function<void(mainWindowCommands&)>;

    explicit ListWindow(const Adjust& adjust = [](auto&) {})
        : window([&] {
            mainWindowCommands commands = windowCommands(application);
            adjust(commands);
            return commands;
        }()) {}

    static bool isOnDisplay() { return QGuiApplication::platformName() != "offscreen"; }
    void showWindow() {
        application.styleList().refreshTable();
        window.show();
        // A bare display has nobody who makes a window the active one.
        EXPECT_TRUE(isOnDisplay() ? QTest::qWaitForWindowExposed(&window)
                                  : QTest::qWaitForWindowActive(&window));
    }
    bool isEnabled(std::int64_t id) { return application.store().findStyle(id)->isEnabled; }

    QModelIndex row(int position) { return view.model()->index(position, 0); }
    QRect rowRect(int position) { return view.visualRect(row(position)); }
    QPoint place(int position, rowControl control) {
        QStyleOptionViewItem option;
        option.initFrom(&view);
        option.rect = rowRect(position);
        return StyleRowDelegate::controlRect(control, option).center();
    }
    void click(int position, rowControl control) {
        QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, place(position, control));
    }
    template <class Widget>
    Widget& part(const char* name) {
        return *window.findChild<Widget*>(name);
    }

    StandInMachine machine;
    Application application{machine.surroundings()};
    MainWindow window;
    StyleListView& view = part<StyleListView>("styleList");
};

} // namespace tessaril::testing
