#include "desktop/directory_resources.h"
#include "desktop/folder_message_channel.h"
#include "desktop/javascript_core_engine.h"
#include "desktop/posix_file_system.h"
#include "model/database_json.h"
#include "support/event_loop.h"
#include "support/stand_in_machine.h"
#include "support/temporary_folder.h"
#include "windows/main_window.h"
#include "windows/other_windows.h"
#include "windows/style_list_view.h"

#include <QApplication>
#include <QDialog>
#include <QFileDialog>
#include <QLineEdit>
#include <QPushButton>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tessaril {
namespace {

using namespace testing;
using ::testing::ElementsAre;

/// The application from an empty container on, driven by keys alone, over real files and the real
/// compilers.
class ListJourneyTest : public ::testing::Test {
protected:
    ListJourneyTest() {
        std::filesystem::create_directory(folder / "wormhole");
        application.listCommands().setRoutes({.exportFromStyleList = [this](const auto& style) {
            others.openExportSheet(style, window);
        }});
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    void run() { machine.dispatcher.runAll(); }
    void key(Qt::Key key, Qt::KeyboardModifiers with = {}, int times = 1) {
        for (; times > 0; --times)
            QTest::keyClick(QApplication::focusWidget(), key, with);
        QCoreApplication::processEvents();
        run();
    }

    /// The dialog on top, once it has the keys.
    QDialog* dialog(const QString& title) {
        QDialog* found = nullptr;
        EXPECT_TRUE(eventually([&] {
            found = qobject_cast<QDialog*>(QApplication::activeWindow());
            return found && found->windowTitle().startsWith(title);
        })) << title.toStdString();
        return found;
    }
    void giveToPanel(const QString& title, const QStringList& chosen) {
        QDialog* panel = dialog(title);
        QWidget* owner = panel->parentWidget()->window();
        panel->findChild<QLineEdit*>("fileNameEdit")
            ->setText(chosen.size() == 1 ? chosen.front() : "\"" + chosen.join("\" \"") + "\"");
        key(Qt::Key_Return);
        activate(*owner);
        run();
    }
    /// As a desktop does with the window below one that has gone.
    void activate(QWidget& below) {
        EXPECT_TRUE(eventually([] { return !QApplication::activeWindow(); }));
        below.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&below));
    }
    void importFiles(const QStringList& chosen) {
        key(Qt::Key_O, Qt::ControlModifier);
        giveToPanel("Import User CSS File", chosen);
    }

    styleDatabase written() { return *decodeDatabase(fileContent(folder / "styledb.sdb")); }
    std::vector<std::string> names() {
        std::vector<std::string> names;
        for (const styleContainer& style : written().styles)
            names.push_back(style.styleData.name);
        return names;
    }

    TemporaryFolder folder;
    StandInMachine machine;
    PosixFileSystem files;
    FolderMessageChannel channel{files, folder.path};
    JavaScriptCoreEngine scripts;
    DirectoryResources resources{TESSARIL_RESOURCES};
    Application application{{files, channel, machine.alerts, machine.dispatcher, machine.standard,
                             machine.shared, scripts, resources, machine.compilerErrors,
                             machine.extension, machine.externals, machine.urls, machine.pictures,
                             folder.path, ""}};
    OtherWindows others{application, [](QWidget*) { return shownWebView{}; }, "/none"};
    MainWindow window{
        {.list = application.styleList(),
         .listCommands = application.listCommands(),
         .newStyle = application.newStyle(),
         .listUndo = application.listUndo(),
         .updates = application.styleUpdates(),
         .canImport = [this] { return application.fileImport().canImport(); },
         .importFiles =
             [this](const auto& chosen) { application.fileImport().importFiles(chosen); },
         .openFiles = [](const auto&) {},
         .openPreferences = [] {},
         .emailSupport = [] {},
         .openWebsite = [] {}}};
};

TEST_F(ListJourneyTest, FromAnEmptyContainerToExportedStylesImportedAgain) {
    QStringList examples;
    for (const auto& file : std::filesystem::directory_iterator(TESSARIL_EXAMPLES))
        examples.append(QString::fromStdString(file.path()));
    ASSERT_EQ(examples.size(), 4);
    examples.sort();
    importFiles(examples);
    EXPECT_THAT(names(),
                ElementsAre("Calm Reading", "Header Colours", "Night Forum", "Tidy Board"));
    EXPECT_TRUE(written().styles[2].styleData.compSections);

    key(Qt::Key_Home);
    key(Qt::Key_F2);
    QTest::keyClicks(QApplication::focusWidget(), " Reading, renamed ");
    key(Qt::Key_Return);
    key(Qt::Key_Down, Qt::ShiftModifier);
    key(Qt::Key_D, Qt::ControlModifier);
    EXPECT_THAT(names(),
                ElementsAre("Reading, renamed", "Header Colours", "Night Forum", "Tidy Board",
                            "Copy of Reading, renamed", "Copy of Header Colours"));

    const auto before = written().styles;
    key(Qt::Key_Home);
    key(Qt::Key_Down, Qt::ShiftModifier, 2);
    machine.alerts.answers.push_back({0});
    key(Qt::Key_Delete);
    EXPECT_THAT(names(),
                ElementsAre("Tidy Board", "Copy of Reading, renamed", "Copy of Header Colours"));
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(written().styles, before);

    key(Qt::Key_Home);
    key(Qt::Key_Down, Qt::ShiftModifier, 4);
    key(Qt::Key_Down, Qt::AltModifier);
    EXPECT_THAT(names(), ElementsAre("Copy of Header Colours", "Reading, renamed", "Header Colours",
                                     "Night Forum", "Tidy Board", "Copy of Reading, renamed"));
    QTest::mouseClick(window.findChild<QAbstractButton*>("disableAllSegment"), Qt::LeftButton);
    run();
    const std::vector<styleContainer> kept = written().styles;
    EXPECT_THAT(kept, ::testing::Each(::testing::Field(&styleContainer::isEnabled, false)));

    QStringList exported;
    key(Qt::Key_Home);
    for (int row = 0; row < 6; ++row) {
        exported.append(QString::fromStdString(folder / (std::to_string(row) + ".user.css")));
        key(Qt::Key_E, Qt::ControlModifier);
        dialog("Export “");
        key(Qt::Key_S, Qt::ControlModifier);
        giveToPanel("Export User CSS File", {exported.back()});
        key(Qt::Key_Escape);
        activate(window);
        key(Qt::Key_Down);
    }
    importFiles(exported);
    const std::vector<styleContainer> all = written().styles;
    ASSERT_EQ(all.size(), 12U);
    for (std::size_t row = 0; row < 6; ++row) {
        EXPECT_EQ(all[row], kept[row]);
        const styleContainer& again = all[row + 6];
        EXPECT_EQ(again.styleData.name, kept[row].styleData.name);
        EXPECT_EQ(again.styleData.compSections, kept[row].styleData.compSections);
        EXPECT_EQ(again.styleData.sections.size(), kept[row].styleData.sections.size());
        EXPECT_EQ(again.userVariables->size(), kept[row].userVariables->size());
        EXPECT_TRUE(again.isEnabled);
    }
    EXPECT_THAT(machine.alerts.alerts, ::testing::IsEmpty());
    EXPECT_EQ(*decodeDatabase(fileContent(folder / "wormhole/styleDBUpdated")), written());
}

} // namespace
} // namespace tessaril
