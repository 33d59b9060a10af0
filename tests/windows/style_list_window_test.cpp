#include "events/notification_names.h"
#include "model/text.h"
#include "support/list_window.h"
#include "support/test.h"

namespace tessaril {
namespace {

/// The window over styles with the names A, B, C, ... and the identifiers 1, 2, 3, ...
struct StyleListWindowTest : ::testing::Test, ListWindow {
    void show(int count) {
        for (int id = 1; id <= count; ++id)
            application.store().appendStyle(namedStyle(std::string(1, char('A' + id - 1)), id));
        showWindow();
    }

    std::string stored() {
        std::string names;
        for (const auto& row : application.store().styleRows())
            names += row->name + " ";
        return std::string(trimmed(names));
    }
    /// The names that are shown, a star before the selected ones. What no filter hides is stored.
    std::string rows() {
        std::string names, marked;
        for (int position = 0; position < view.model()->rowCount(); ++position) {
            const std::string name = row(position).data().toString().toStdString() + " ";
            names += name;
            marked += (view.selectionModel()->isSelected(row(position)) ? "*" : "") + name;
        }
        EXPECT_TRUE(!filter.text().isEmpty() || trimmed(names) == stored()) << names;
        return std::string(trimmed(marked));
    }
    void select(std::initializer_list<int> positions) {
        view.clearSelection();
        for (const int position : positions)
            QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::ControlModifier,
                              rowRect(position).center());
        QCoreApplication::processEvents(); // what can be done follows the selection
    }
    void key(Qt::Key key, Qt::KeyboardModifiers with = {}) {
        QTest::keyClick(QApplication::focusWidget(), key, with);
        QCoreApplication::processEvents();
    }
    void type(const QString& text) { QTest::keyClicks(QApplication::focusWidget(), text); }
    QLineEdit* nameEditor() { return qobject_cast<QLineEdit*>(QApplication::focusWidget()); }
    void answer(int button) { machine.alerts.answers.push_back({button, false}); }

    QAction* menuAction(const QString& text) {
        for (QAction* menu : window.menuBar()->actions())
            for (QAction* action : menu->menu()->actions())
                if (action->text().remove('&') == text && action->isVisible()) return action;
        return nullptr;
    }

    QLineEdit& filter = part<QLineEdit>("filterField");
};

TEST_F(StyleListWindowTest, RenamesInPlaceAndKeepsTheNameThatWasNotToBeChanged) {
    show(3);
    select({1});
    key(Qt::Key_F2);
    type("  New ");
    key(Qt::Key_Return);
    EXPECT_EQ(stored(), "A New C");
    EXPECT_TRUE(view.hasFocus());

    key(Qt::Key_F2);
    type("other");
    key(Qt::Key_Escape);
    ASSERT_TRUE(eventually([&] { return !nameEditor(); }));
    key(Qt::Key_F2);
    type("left");
    filter.setFocus();
    EXPECT_EQ(stored(), "A left C");

    view.setFocus();
    key(Qt::Key_F2);
    key(Qt::Key_Delete);
    key(Qt::Key_Return); // a blank name
    EXPECT_THAT(machine.alerts.alerts, SizeIs(1));
    EXPECT_EQ(rows(), "A *left C");
    EXPECT_THAT(machine.alerts.questions, IsEmpty()) << "the key was the text's";
}

TEST_F(StyleListWindowTest, WhatIsBeingTypedOutlivesNewRows) {
    show(3);
    select({1});
    key(Qt::Key_F2);
    type("half");
    application.styleList().showAgain(1); // as for an icon
    application.styleList().refreshTable();
    application.store().appendStyle(namedStyle("D", 4)); // as an import does
    application.notificationCenter().post(notifications::addLatestStyle);
    QTest::keyClicks(nameEditor(), " done");
    QTest::keyClick(nameEditor(), Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(rows(), "A *B C D") << "the key was the text's";
    QTest::keyClick(nameEditor(), Qt::Key_Return);
    QCoreApplication::processEvents();
    EXPECT_EQ(stored(), "A half done C D");
}

TEST_F(StyleListWindowTest, DeletesDuplicatesAndTakesBackByKeys) {
    show(4);
    select({0, 2});
    answer(0);
    key(Qt::Key_Delete);
    EXPECT_EQ(rows(), "*B D") << "the next key goes on from there";
    EXPECT_TRUE(menuAction("Undo Delete Style"));
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(rows(), "*A B *C D");
    key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    key(Qt::Key_A, Qt::ControlModifier);
    key(Qt::Key_D, Qt::ControlModifier);
    EXPECT_EQ(rows(), "B D Copy of B *Copy of D");
}

TEST_F(StyleListWindowTest, SpaceTurnsAllSelectedAndTheControlTurnsAll) {
    show(4);
    const auto enabled = [&] {
        std::string names;
        for (const auto& row : application.store().styleRows())
            if (row->isEnabled) names += row->name;
        return names;
    };
    select({0, 2});
    key(Qt::Key_Space);
    EXPECT_EQ(enabled(), "BD");
    select({0, 1});
    key(Qt::Key_Space);
    EXPECT_EQ(enabled(), "ABD") << "not all were enabled";
    const auto press = [&](const char* button) {
        QTest::mouseClick(&part<QToolButton>(button), Qt::LeftButton);
        machine.dispatcher.runAll();
    };
    press("disableAllSegment");
    EXPECT_EQ(enabled(), "");
    EXPECT_EQ(rows(), "*A *B C D") << "rows made anew keep the selection";
    window.resize(window.minimumWidth(), window.height());
    ASSERT_TRUE(eventually([&] { return part<QToolButton>("toggleOverflow").isVisible(); }));
    EXPECT_FALSE(part<QToolButton>("disableAllSegment").isVisible());
    press("toggleOverflow");
    EXPECT_EQ(enabled(), "ABCD");
}

TEST_F(StyleListWindowTest, MovesRowsByKeysAsFarAsTheyGo) {
    show(5);
    select({1, 2});
    key(Qt::Key_Down, Qt::AltModifier);
    EXPECT_EQ(rows(), "A D *B *C E");
    for (int times = 0; times < 4; ++times)
        key(Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(rows(), "*B *C A D E");
    select({1, 4});
    key(Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(rows(), "*C *E B A D");
    key(Qt::Key_A, Qt::ControlModifier);
    EXPECT_FALSE(menuAction("Move Up")->isEnabled() || menuAction("Move Down")->isEnabled());
}

TEST_F(StyleListWindowTest, DragsRowsToBetweenOthers) {
    if (!isOnDisplay()) GTEST_SKIP() << "nothing can be dragged without a display";
    show(5);
    select({0, 1});
    // The drag runs an event loop of its own; the mouse goes on in it.
    const auto drag = [&](int from, const QPoint& to) {
        QTest::mousePress(view.viewport(), Qt::LeftButton, {}, rowRect(from).center());
        QTimer::singleShot(0, [&] {
            const QPoint place = view.viewport()->mapTo(&window, to);
            QTest::mouseMove(window.windowHandle(), place - QPoint(0, 3));
            QTest::mouseMove(window.windowHandle(), place);
            QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, {}, place);
        });
        for (const int distance : {20, 40})
            QTest::mouseMove(view.viewport(), rowRect(from).center() + QPoint(0, distance));
        QCoreApplication::processEvents();
    };
    drag(0, {rowRect(2).center().x(), rowRect(2).bottom() - 2});
    EXPECT_EQ(rows(), "C *A *B D E");
}

TEST_F(StyleListWindowTest, CommandsActOnWhatTheFilterShows) {
    show(3);
    styleContainer night = namedStyle("Night", 10);
    night.styleData.sections.front().domains = {"forum.example"};
    application.store().insertStyle(std::make_shared<const styleContainer>(night), 1);
    application.styleList().refreshTable();
    select({1, 2});
    key(Qt::Key_F, Qt::ControlModifier);
    type("Forum.");
    EXPECT_EQ(rows(), "*Night");
    key(Qt::Key_Down);
    ASSERT_TRUE(view.hasFocus());
    key(Qt::Key_Space);
    EXPECT_FALSE(isEnabled(10));
    EXPECT_TRUE(isEnabled(1) && isEnabled(2));
    EXPECT_FALSE(menuAction("Move Up")->isEnabled());
    EXPECT_FALSE(view.model()->flags(row(0)) & Qt::ItemIsDragEnabled);
    key(Qt::Key_Down, Qt::AltModifier);
    key(Qt::Key_D, Qt::ControlModifier);
    EXPECT_EQ(rows(), "Night *Copy of Night");
    EXPECT_EQ(stored(), "A Night B C Copy of Night");
    key(Qt::Key_A, Qt::ControlModifier);
    answer(0);
    key(Qt::Key_Delete);
    EXPECT_EQ(stored(), "A B C");

    auto& showAll = part<QPushButton>("showAllButton");
    EXPECT_TRUE(showAll.isVisible());
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(rows(), "*Night *Copy of Night");
    filter.setText("nowhere");
    QTest::mouseClick(&showAll, Qt::LeftButton);
    EXPECT_TRUE(view.hasFocus() && filter.text().isEmpty());
    EXPECT_EQ(view.model()->rowCount(), 5);
}

TEST_F(StyleListWindowTest, TheKeysOfTheFilterAreItsOwnAndANewRowThatItHidesEndsIt) {
    show(3);
    view.selectAll();
    filter.setFocus();
    type("abc ");
    key(Qt::Key_A, Qt::ControlModifier);
    key(Qt::Key_Delete);
    EXPECT_TRUE(filter.text().isEmpty());
    menuAction("Undo")->trigger();
    EXPECT_EQ(filter.text(), "abc ");
    EXPECT_THAT(machine.alerts.questions, IsEmpty());
    EXPECT_TRUE(isEnabled(1) && view.model()->rowCount() == 0);
    key(Qt::Key_Escape);
    EXPECT_TRUE(view.hasFocus() && view.model()->rowCount() == 3);

    filter.setText("b");
    application.store().appendStyle(namedStyle("New", 10));
    application.notificationCenter().post(notifications::addLatestStyle);
    EXPECT_EQ(rows(), "A B C *New");
}

TEST_F(StyleListWindowTest, OffersInARowWhatItsRoutesAllow) {
    styleContainer imported = namedStyle("Imported", 10);
    imported.source = sourceUserCSS;
    application.store().appendStyle(imported);
    show(2);
    std::vector<std::int64_t> updated, configured, opened, exported;
    click(0, rowControl::update);
    EXPECT_EQ(menuAction("Properties"), nullptr);
    EXPECT_EQ(menuAction("Check for Update"), nullptr);
    application.listCommands().setRoutes(
        {.openStyleForEditing = [&](auto id, bool) { return opened.push_back(id), true; },
         .openStyleProps = [&](auto id) { return configured.push_back(id), false; },
         .exportFromStyleList = [&](const auto& style) { exported.push_back(style.uniqueID); },
         .updateIndividual = [&](auto id) { updated.push_back(id); }});
    for (const int position : {0, 1}) {
        click(position, rowControl::update);
        click(position, rowControl::properties);
    }
    EXPECT_THAT(updated, ElementsAre(10)) << "written here, so never updated";
    EXPECT_THAT(configured, ElementsAre(10, 1));

    application.styleList().styles()[0]->updateStatus = "checking";
    application.styleList().showAgain(0);
    for (const rowControl control :
         {rowControl::update, rowControl::properties, rowControl::checkBox})
        click(0, control);
    EXPECT_TRUE(updated.size() == 1 && configured.size() == 2 && isEnabled(10));
    application.styleList().styles()[0]->updateStatus = "error";
    EXPECT_EQ(row(0).data(Qt::AccessibleTextRole), "Imported, Update error., enabled");

    QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, rowRect(1).center());
    select({0});
    view.setFocus();
    QCoreApplication::processEvents();
    key(Qt::Key_Return);
    EXPECT_THAT(opened, ElementsAre(1, 10));
    key(Qt::Key_E, Qt::ControlModifier);
    EXPECT_THAT(exported, ElementsAre(10));
}

TEST_F(StyleListWindowTest, TheContextMenuIsAboutTheRowsItWasOpenedOn) {
    show(4);
    select({0, 1});
    const auto menu = [&] { return window.findChild<QMenu*>("styleMenu"); };
    const auto openMenu = [&](int position) {
        const QPoint place = rowRect(position).center();
        QTest::mousePress(view.viewport(), Qt::RightButton, {}, place);
        QContextMenuEvent event(QContextMenuEvent::Mouse, place,
                                view.viewport()->mapToGlobal(place));
        QApplication::sendEvent(view.viewport(), &event);
        QTest::mouseRelease(view.viewport(), Qt::RightButton, {}, place);
        ASSERT_TRUE(menu()->isVisible());
    };
    openMenu(1);
    EXPECT_EQ(rows(), "*A *B C D");
    menu()->close();
    openMenu(3);
    EXPECT_EQ(rows(), "A B C *D");
    application.notificationCenter().post(notifications::addToOpenStyles, 4);
    menu()->actions().last()->trigger();
    ASSERT_EQ(machine.alerts.alerts.size(), 1U);
    EXPECT_TRUE(machine.alerts.alerts[0].text.starts_with("This style is")) << "not of a selection";
    menu()->close();
    QContextMenuEvent byKey(QContextMenuEvent::Keyboard, {}, {});
    QApplication::sendEvent(view.viewport(), &byKey);
    EXPECT_TRUE(menu()->isVisible());
    menu()->close();
}

TEST_F(StyleListWindowTest, TheNewStyleSheetMakesAStyleOfWhatWasTyped) {
    show(0);
    key(Qt::Key_N, Qt::ControlModifier);
    auto* sheet = window.findChild<QDialog*>("newStyleSheet");
    ASSERT_TRUE(sheet && QTest::qWaitForWindowActive(sheet));
    auto& create = *sheet->findChild<QPushButton*>("createButton");
    type("  ");
    EXPECT_FALSE(create.isEnabled());
    key(Qt::Key_Return);
    EXPECT_TRUE(sheet->isVisible());
    type("Ä");
    sheet->findChild<QComboBox*>("ruleTypeMenu")->setCurrentIndex(1);
    sheet->findChild<QLineEdit*>("ruleField")->setText(" https://a.example/ ");
    sheet->findChild<QComboBox*>("preprocessorMenu")->setCurrentIndex(2);
    key(Qt::Key_Return);
    EXPECT_EQ(rows(), "*Ä");
    const auto style = application.store().styleAt(0);
    EXPECT_THAT(style->styleData.sections.front().urls, ElementsAre("https://a.example/"));
    EXPECT_EQ(style->preprocessor, "less");
}

} // namespace
} // namespace tessaril
