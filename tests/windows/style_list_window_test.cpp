#include "events/notification_names.h"
#include "model/text.h"
#include "support/list_window.h"
#include "support/test.h"

namespace tessaril {
namespace {

struct StyleListWindowTest : ::testing::Test, ListWindow {
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
            clickRow(view, row(position), Qt::ControlModifier);
        QCoreApplication::processEvents(); // what can be done follows the selection
    }
    void key(const char* words) { press(words, true); }
    std::string after(const char* words) { return key(words), rows(); }
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
    key("F2 '  New ' Return");
    EXPECT_EQ(stored(), "A New C");
    key("F2 'other' Esc");
    ASSERT_TRUE(eventually([&] { return view.hasFocus(); }));
    key("F2 'left'");
    filter.setFocus();
    EXPECT_EQ(stored(), "A left C");

    view.setFocus();
    key("F2 Del Return"); // a blank name
    EXPECT_THAT(machine.alerts.alerts, SizeIs(1));
    EXPECT_EQ(rows(), "A *left C");
    EXPECT_THAT(machine.alerts.questions, IsEmpty()) << "the key was the text's";

    // What is being typed outlives new rows.
    key("F2 'half'");
    application.styleList().showAgain(1); // as for an icon
    application.styleList().refreshTable();
    application.store().appendStyle(namedStyle("D", 4)); // as an import does
    application.notificationCenter().post(notifications::addLatestStyle);
    press("' done' Ctrl+A");
    EXPECT_EQ(rows(), "A *left C D") << "the key was the text's";
    key("Return");
    EXPECT_EQ(stored(), "A half done C D");
}

TEST_F(StyleListWindowTest, MovesDeletesDuplicatesAndTakesBackByKeys) {
    show(4);
    select({1, 2});
    EXPECT_EQ(after("Alt+Down Alt+Down"), "A D *B *C");
    EXPECT_EQ(after("Alt+Up Alt+Up Alt+Up"), "*B *C A D");
    select({1, 3});
    EXPECT_EQ(after("Alt+Up"), "*C *D B A");
    key("Ctrl+A");
    EXPECT_FALSE(menuAction("Move Up")->isEnabled() || menuAction("Move Down")->isEnabled());
    select({0, 2});
    answer(0);
    EXPECT_EQ(after("Del"), "*D A") << "the next key goes on from there";
    EXPECT_TRUE(menuAction("Undo Delete Style"));
    EXPECT_EQ(after("Ctrl+Z"), "*C D *B A");
    EXPECT_EQ(after("Ctrl+Shift+Z Ctrl+A Ctrl+D"), "D A Copy of D *Copy of A");
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
    key("Space");
    EXPECT_EQ(enabled(), "BD");
    select({0, 1});
    key("Space");
    EXPECT_EQ(enabled(), "ABD") << "not all were enabled";
    clickOn(part<QToolButton>("disableAllSegment"));
    settle();
    EXPECT_EQ(enabled(), "");
    EXPECT_EQ(rows(), "*A *B C D") << "rows made anew keep the selection";
    window.resize(window.minimumWidth(), window.height());
    ASSERT_TRUE(eventually([&] { return part<QToolButton>("toggleOverflow").isVisible(); }));
    EXPECT_FALSE(part<QToolButton>("disableAllSegment").isVisible());
    clickOn(part<QToolButton>("toggleOverflow"));
    settle();
    EXPECT_EQ(enabled(), "ABCD");
}

TEST_F(StyleListWindowTest, DragsRowsToBetweenOthers) {
    if (!isOnDisplay()) GTEST_SKIP() << "nothing can be dragged without a display";
    show(5);
    select({0, 1});
    const QPoint from = rowRect(0).center(), to(from.x(), rowRect(2).bottom() - 2);
    // The drag runs an event loop of its own; the mouse goes on in it.
    QTest::mousePress(view.viewport(), Qt::LeftButton, {}, from);
    QTimer::singleShot(0, [&] {
        const QPoint place = view.viewport()->mapTo(&window, to);
        QTest::mouseMove(window.windowHandle(), place - QPoint(0, 3));
        QTest::mouseMove(window.windowHandle(), place);
        QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, {}, place);
    });
    for (const int distance : {20, 40})
        QTest::mouseMove(view.viewport(), from + QPoint(0, distance));
    QCoreApplication::processEvents();
    EXPECT_EQ(rows(), "C *A *B D E");
}

TEST_F(StyleListWindowTest, CommandsActOnWhatTheFilterShows) {
    show(3);
    styleContainer night = namedStyle("Night", 10);
    night.styleData.sections.front().domains = {"forum.example"};
    application.store().insertStyle(std::make_shared<const styleContainer>(night), 1);
    application.styleList().refreshTable();
    select({1, 2});
    EXPECT_EQ(after("Ctrl+F 'Forum.'"), "*Night");
    key("Down");
    ASSERT_TRUE(view.hasFocus());
    key("Space");
    EXPECT_FALSE(isEnabled(10));
    EXPECT_TRUE(isEnabled(1) && isEnabled(2));
    EXPECT_FALSE(menuAction("Move Up")->isEnabled());
    EXPECT_FALSE(view.model()->flags(row(0)) & Qt::ItemIsDragEnabled);
    EXPECT_EQ(after("Alt+Down Ctrl+D"), "Night *Copy of Night");
    EXPECT_EQ(stored(), "A Night B C Copy of Night");
    key("Ctrl+A");
    answer(0);
    key("Del");
    EXPECT_EQ(stored(), "A B C");

    auto& showAll = part<QPushButton>("showAllButton");
    EXPECT_TRUE(showAll.isVisible());
    EXPECT_EQ(after("Ctrl+Z"), "*Night *Copy of Night");
    filter.setText("nowhere");
    clickOn(showAll);
    EXPECT_TRUE(view.hasFocus() && filter.text().isEmpty());
    EXPECT_EQ(view.model()->rowCount(), 5);
}

TEST_F(StyleListWindowTest, TheKeysOfTheFilterAreItsOwnAndANewRowThatItHidesEndsIt) {
    show(3);
    view.selectAll();
    filter.setFocus();
    key("'abc ' Ctrl+A Del");
    EXPECT_TRUE(filter.text().isEmpty());
    menuAction("Undo")->trigger();
    EXPECT_EQ(filter.text(), "abc ");
    EXPECT_THAT(machine.alerts.questions, IsEmpty());
    EXPECT_TRUE(isEnabled(1) && view.model()->rowCount() == 0);
    key("Esc");
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
    key("Return");
    EXPECT_THAT(opened, ElementsAre(1, 10));
    key("Ctrl+E");
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
    key("Ctrl+N");
    auto* sheet = window.findChild<QDialog*>("newStyleSheet");
    ASSERT_TRUE(sheet && QTest::qWaitForWindowActive(sheet));
    auto& create = *sheet->findChild<QPushButton*>("createButton");
    press("'  '");
    EXPECT_FALSE(create.isEnabled());
    key("Return");
    EXPECT_TRUE(sheet->isVisible());
    press("'Ä'");
    sheet->findChild<QComboBox*>("ruleTypeMenu")->setCurrentIndex(1);
    sheet->findChild<QLineEdit*>("ruleField")->setText(" https://a.example/ ");
    sheet->findChild<QComboBox*>("preprocessorMenu")->setCurrentIndex(2);
    EXPECT_EQ(after("Return"), "*Ä");
    const auto style = application.store().styleAt(0);
    EXPECT_THAT(style->styleData.sections.front().urls, ElementsAre("https://a.example/"));
    EXPECT_EQ(style->preprocessor, "less");
}

TEST_F(StyleListWindowTest, TheCheckBoxWorksByItsOwnClicksOnly) {
    show(2);
    const auto drag = [&](const QPoint& from, const QPoint& to, Qt::MouseButton button) {
        QTest::mousePress(view.viewport(), button, {}, from);
        QTest::mouseRelease(view.viewport(), button, {}, to);
    };
    const QPoint box = place(1, rowControl::checkBox), name = rowRect(1).center();
    click(1, rowControl::checkBox);
    EXPECT_TRUE(isEnabled(1) && !isEnabled(2));
    // A press elsewhere that ends on the box, and one on the box of another row, are no clicks.
    drag(name, name, Qt::LeftButton);
    drag(name, box, Qt::LeftButton);
    drag(place(0, rowControl::checkBox), box, Qt::LeftButton);
    drag(box, box, Qt::RightButton);
    EXPECT_TRUE(isEnabled(1) && !isEnabled(2));
    click(1, rowControl::checkBox);
    EXPECT_TRUE(isEnabled(2));
}

TEST_F(StyleListWindowTest, SaysHowToBeginUntilThereIsAStyleToShow) {
    show(0);
    const auto& beginButton = part<QPushButton>("beginButton");
    EXPECT_TRUE(beginButton.isVisible() && beginButton.hasFocus());
    for (int id = 1; id <= 100; ++id) {
        application.store().appendStyle(namedStyle("Quiet %1\nNight", id));
        application.notificationCenter().post(notifications::addLatestStyle);
    }
    EXPECT_TRUE(view.isVisible() && view.hasFocus() && !beginButton.isVisible());
    EXPECT_EQ(view.selectionModel()->selectedIndexes(), QModelIndexList{row(99)});
    EXPECT_TRUE(view.viewport()->rect().contains(rowRect(99)));
    QAccessibleInterface* last = QAccessible::queryAccessibleInterface(&view)->child(99);
    EXPECT_EQ(last->text(QAccessible::Name), "Quiet %1 Night, Custom Style, enabled");
    click(99, rowControl::checkBox);
    EXPECT_FALSE(last->state().checked);
    press("Ctrl+,");
    EXPECT_TRUE(
        eventually([] { return QApplication::activeWindow()->windowTitle() == "Preferences"; }));
}

TEST_F(StyleListWindowTest, TakesFilesFromTheDialogAndByDropping) {
    show(0);
    press("Ctrl+O");
    EXPECT_FALSE(window.findChild<QFileDialog*>());
    canImport = true;
    clickOn(part<QPushButton>("beginButton"));
    auto* dialog = window.findChild<QFileDialog*>();
    ASSERT_TRUE(dialog);
    EXPECT_TRUE(dialog->nameFilters().join("").endsWith("(*.user.css *.css *.styl *.less)"));
    emit dialog->filesSelected({"/etc/ä b.user.css", "/etc/c.less"});
    EXPECT_THAT(importedFiles, ElementsAre("/etc/ä b.user.css", "/etc/c.less"));
    dialog->close();
    ASSERT_TRUE(eventually([&] { return !window.findChild<QFileDialog*>(); }));
    clickOn(part<QPushButton>("beginButton"));
    dialog = window.findChild<QFileDialog*>();
    EXPECT_EQ(dialog->directory(), QDir("/etc")) << "where the last one was";
    dialog->close();

    QMimeData data;
    const QUrl address("https://a.example/c.css");
    for (const QList<QUrl>& urls : {QList{address}, {QUrl("file:///styles/a%20b.css"), address}}) {
        data.setUrls(urls);
        QDragEnterEvent enters({10, 10}, Qt::CopyAction, &data, Qt::LeftButton, {});
        enters.ignore();
        QApplication::sendEvent(view.viewport(), &enters); // which leaves it to the window
        EXPECT_EQ(enters.isAccepted(), urls.size() == 2);
    }
    QDropEvent drop({10, 10}, Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&window, &drop);
    EXPECT_THAT(openedFiles, IsEmpty()); // the source of the drag does not wait
    QCoreApplication::processEvents();
    EXPECT_THAT(openedFiles, ElementsAre("/styles/a b.css"));
}

} // namespace
} // namespace tessaril
