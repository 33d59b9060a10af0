#include "events/notification_names.h"
#include "support/memory_files.h"
#include "support/recording_alerts.h"
#include "support/sample_styles.h"
#include "support/stepped_dispatcher.h"
#include "windows/main_window.h"
#include "windows/style_row_delegate.h"

#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QListView>
#include <QMenuBar>
#include <QMimeData>
#include <QPainter>
#include <QPushButton>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tessaril {
namespace {

using namespace testing;

class MainWindowTest : public ::testing::Test {
protected:
    using Paths = std::vector<std::filesystem::path>;

    MainWindow& show() {
        window = std::make_unique<MainWindow>(
            list,
            mainWindowCommands{.canImport = [this] { return canImport; },
                               .importFiles = [this](const Paths& paths) { imported = paths; },
                               .openFiles = [this](const Paths& paths) { opened = paths; },
                               .emailSupport = [this] { ++emails; },
                               .openWebsite = [this] { ++visits; }});
        window->show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
        return *window;
    }

    void add(const styleContainer& style) {
        store.appendStyle(style);
        center.post(notifications::addLatestStyle);
    }

    QListView& view() { return *window->findChild<QListView*>("styleList"); }
    QPushButton& beginButton() { return *window->findChild<QPushButton*>("beginButton"); }

    bool isEnabled(std::int64_t id) { return store.styleWithID(id)->isEnabled; }

    QRect rowRect(int row) { return view().visualRect(view().model()->index(row, 0)); }

    QPoint checkBox(int row) {
        QStyleOptionViewItem option;
        option.initFrom(&view());
        option.widget = &view();
        option.rect = rowRect(row);
        return StyleRowDelegate::checkBoxRect(option).center();
    }

    void click(const QPoint& place) {
        QTest::mouseClick(view().viewport(), Qt::LeftButton, {}, place);
    }

    QAction* menuAction(const QString& text) {
        for (QAction* action : window->findChildren<QAction*>())
            if (action->text().remove('&') == text) return action;
        return nullptr;
    }

    MemoryFiles files;
    MemoryChannel channel{files};
    MemoryPreferences preferenceStore;
    Preferences preferences{preferenceStore};
    RecordingAlerts alerts;
    SteppedDispatcher dispatcher;
    NotificationCenter center;
    StyleStore store{{.files = files,
                      .channel = channel,
                      .alerts = alerts,
                      .dispatcher = dispatcher,
                      .center = center,
                      .preferences = preferences,
                      .compileStyle = [](styleContainer&) {}},
                     "/container"};
    StyleList list{store, center, dispatcher, alerts};
    bool canImport = true;
    Paths imported;
    Paths opened;
    int emails = 0;
    int visits = 0;
    std::unique_ptr<MainWindow> window;
};

TEST_F(MainWindowTest, SaysHowToBeginOnlyWhileThereIsNoStyle) {
    show();
    EXPECT_TRUE(beginButton().isVisible());
    EXPECT_TRUE(beginButton().hasFocus());
    EXPECT_FALSE(view().isVisible());

    add(namedStyle("First", 1));
    EXPECT_FALSE(beginButton().isVisible());
    EXPECT_TRUE(view().isVisible());
    EXPECT_TRUE(view().hasFocus());

    store.resetDatabase();
    center.post(notifications::refreshTable);
    dispatcher.runAll();
    EXPECT_TRUE(beginButton().isVisible());
    EXPECT_FALSE(view().isVisible());
}

TEST_F(MainWindowTest, TheCheckBoxWorksByMouseAndSpaceKeyOnly) {
    add(namedStyle("One", 1));
    add(namedStyle("Two", 2));
    show();
    click(checkBox(1));
    EXPECT_TRUE(isEnabled(1));
    EXPECT_FALSE(isEnabled(2));
    EXPECT_EQ(view().currentIndex().data(Qt::CheckStateRole), Qt::Unchecked);
    click(checkBox(1));
    EXPECT_TRUE(isEnabled(2));

    click(rowRect(0).center()); // selects
    EXPECT_TRUE(isEnabled(1));
    QTest::keyClick(&view(), Qt::Key_Space);
    EXPECT_FALSE(isEnabled(1));
    QTest::keyClick(&view(), Qt::Key_Down);
    QTest::keyClick(&view(), Qt::Key_Space);
    EXPECT_FALSE(isEnabled(2));
    QTest::keyClick(&view(), Qt::Key_Space);
    EXPECT_TRUE(isEnabled(2));

    // A press elsewhere that ends on the box, and one on the box of another row, are no clicks.
    QTest::mousePress(view().viewport(), Qt::LeftButton, {}, rowRect(1).center());
    QTest::mouseRelease(view().viewport(), Qt::LeftButton, {}, checkBox(1));
    QTest::mousePress(view().viewport(), Qt::LeftButton, {}, checkBox(0));
    QTest::mouseRelease(view().viewport(), Qt::LeftButton, {}, checkBox(1));
    QTest::mouseClick(view().viewport(), Qt::RightButton, {}, checkBox(1));
    EXPECT_TRUE(isEnabled(2));

    list.setLockedForSync(true);
    click(checkBox(1));
    EXPECT_TRUE(isEnabled(2));
    EXPECT_EQ(alerts.beeps, 1);
}

TEST_F(MainWindowTest, ScrollsToAndSelectsANewStyle) {
    for (int id = 1; id <= 200; ++id)
        store.appendStyle(namedStyle("Style", id));
    show();
    EXPECT_FALSE(view().viewport()->rect().intersects(rowRect(199)));
    add(namedStyle("Newest", 201));
    EXPECT_EQ(view().selectionModel()->selectedIndexes(),
              QModelIndexList{view().model()->index(200, 0)});
    EXPECT_TRUE(view().viewport()->rect().contains(rowRect(200)));
}

TEST_F(MainWindowTest, PaintsNoMoreRowsThanItShows) {
    class CountingDelegate : public StyleRowDelegate {
    public:
        void paint(QPainter* painter, const QStyleOptionViewItem& option,
                   const QModelIndex& index) const override {
            ++painted;
            StyleRowDelegate::paint(painter, option, index);
        }
        QSize sizeHint(const QStyleOptionViewItem& option,
                       const QModelIndex& index) const override {
            ++measured;
            return StyleRowDelegate::sizeHint(option, index);
        }
        mutable int painted = 0;
        mutable int measured = 0;
    } delegate;
    for (int id = 1; id <= 10'000; ++id)
        store.appendStyle(namedStyle("Style", id));
    show();
    view().setItemDelegate(&delegate);
    view().grab();
    EXPECT_GT(delegate.painted, 0);
    EXPECT_LT(delegate.painted, 100);
    EXPECT_LT(delegate.measured, 100);
    window.reset();
}

TEST_F(MainWindowTest, DrawsADisabledStyleWeaker) {
    add(namedStyle("Same name", 1));
    styleContainer disabled = namedStyle("Same name", 2);
    disabled.isEnabled = false;
    add(disabled);
    show();
    view().clearSelection();
    view().setCurrentIndex({});
    const auto darkestText = [this](int row) {
        // Right of the icon.
        const QImage text = view().viewport()->grab(rowRect(row).adjusted(80, 0, 0, 0)).toImage();
        int darkest = 255;
        for (int y = 0; y < text.height(); ++y)
            for (int x = 0; x < text.width(); ++x)
                darkest = std::min(darkest, qGray(text.pixel(x, y)));
        return darkest;
    };
    EXPECT_LT(darkestText(0) + 50, darkestText(1));
    EXPECT_LT(darkestText(1), 160); // weaker, and still there to be read
}

TEST_F(MainWindowTest, TellsAssistiveTechnologyWhatARowIs) {
    add(namedStyle("Quiet %1\nNight", 1));
    show();
    QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&view());
    ASSERT_TRUE(accessible);
    EXPECT_EQ(accessible->text(QAccessible::Name), "Styles");
    QAccessibleInterface* row = accessible->child(0);
    ASSERT_TRUE(row);
    EXPECT_EQ(row->text(QAccessible::Name), "Quiet %1 Night, Custom Style, enabled");
    EXPECT_TRUE(row->state().checkable);
    EXPECT_TRUE(row->state().checked);
    click(checkBox(0));
    EXPECT_FALSE(row->state().checked);
}

TEST_F(MainWindowTest, ImportsTheFilesChosenInTheDialog) {
    show();
    canImport = false;
    QTest::keyClick(window.get(), Qt::Key_O, Qt::ControlModifier);
    EXPECT_FALSE(window->findChild<QFileDialog*>());

    canImport = true;
    QTest::mouseClick(&beginButton(), Qt::LeftButton);
    auto* dialog = window->findChild<QFileDialog*>();
    ASSERT_TRUE(dialog);
    EXPECT_EQ(dialog->windowTitle(), "Import User CSS File");
    EXPECT_EQ(dialog->fileMode(), QFileDialog::ExistingFiles);
    EXPECT_THAT(dialog->nameFilters().join("").toStdString(),
                ::testing::EndsWith("(*.user.css *.css *.styl *.less)"));
    emit dialog->filesSelected({"/styles/ä b.user.css", "/styles/c.less"});
    EXPECT_THAT(imported, ::testing::ElementsAre("/styles/ä b.user.css", "/styles/c.less"));
    dialog->close();
}

TEST_F(MainWindowTest, OpensDroppedFilesAndNothingElse) {
    show();
    QMimeData text;
    text.setText("a { color: red }");
    QDragEnterEvent textEnters({10, 10}, Qt::CopyAction, &text, Qt::LeftButton, {});
    textEnters.ignore();
    QApplication::sendEvent(window.get(), &textEnters);
    EXPECT_FALSE(textEnters.isAccepted());

    QMimeData dropped;
    dropped.setUrls({QUrl("file:///styles/a%20b.css"), QUrl("https://a.example/c.css"),
                     QUrl("file:///styles/d.sdb")});
    QDragEnterEvent enters({10, 10}, Qt::CopyAction, &dropped, Qt::LeftButton, {});
    QApplication::sendEvent(window.get(), &enters);
    EXPECT_TRUE(enters.isAccepted());
    QDropEvent drop({10, 10}, Qt::CopyAction, &dropped, Qt::LeftButton, {});
    QApplication::sendEvent(window.get(), &drop);
    EXPECT_THAT(opened, ::testing::IsEmpty()); // the source of the drag does not wait
    QCoreApplication::processEvents();
    EXPECT_THAT(opened, ::testing::ElementsAre("/styles/a b.css", "/styles/d.sdb"));
}

TEST_F(MainWindowTest, ForwardsTheHelpMenu) {
    show();
    menuAction("Tessaril Support…")->trigger();
    menuAction("Tessaril Web Site")->trigger();
    EXPECT_EQ(emails, 1);
    EXPECT_EQ(visits, 1);
}

} // namespace
} // namespace tessaril
