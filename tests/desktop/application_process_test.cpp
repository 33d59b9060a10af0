#include "model/database_json.h"
#include "store/style_store.h"
#include "support/event_loop.h"
#include "support/temporary_folder.h"
#include "support/test.h"

#include <QProcess>

namespace tessaril {
namespace {

namespace fs = std::filesystem;

/// Programs as a user starts them, in a home of their own.
struct ApplicationProcess : ::testing::Test {
    std::unique_ptr<QProcess> start(const QStringList& arguments,
                                    const char* program = TESSARIL_PROGRAMS "/tessaril") const {
        const QString folder = home.path.c_str();
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME",
                                 "XDG_CURRENT_DESKTOP", "DESKTOP_SESSION", "WAYLAND_DISPLAY"})
            environment.remove(name);
        for (const char* name : {"HOME", "XDG_RUNTIME_DIR"})
            environment.insert(name, folder);
        environment.insert("QT_QPA_PLATFORM", "offscreen");
        // The opener of links looks at desktop entries only where there could be a display.
        environment.insert("DISPLAY", ":nowhere");
        auto process = std::make_unique<QProcess>();
        process->setProcessEnvironment(environment);
        process->setWorkingDirectory(folder);
        process->start(program, arguments);
        return process;
    }

    static int exitCode(const std::unique_ptr<QProcess>& process) {
        EXPECT_TRUE(eventually([&] { return process->state() == QProcess::NotRunning; }));
        return process->exitStatus() == QProcess::NormalExit ? process->exitCode() : -1;
    }

    bool isListening() const { return fs::exists(container / "instance.socket"); }
    std::vector<styleContainer> styles() const {
        const auto document = decodeDatabase(fileContent(container / "styledb.sdb"));
        return document ? document->styles : std::vector<styleContainer>();
    }

    bool messageIsTheDocument() const {
        return fileContent(container / "wormhole/styleDBUpdated") ==
               fileContent(container / "styledb.sdb");
    }

    const TemporaryFolder home;
    const fs::path share = home / ".local/share";
    const fs::path container = share / std::string(applicationGroup);
};

TEST_F(ApplicationProcess, StartsAfterAKilledOneOverADamagedDocument) {
    const std::string damaged = R"({"dbVersion":1,"styles":[{"uniqueID)";
    fs::create_directories(container);
    writeFile(container / "styledb.sdb", damaged);
    const auto killed = start({});
    ASSERT_TRUE(eventually([&] { return isListening(); }));
    killed->kill();
    EXPECT_EQ(exitCode(killed), -1);
    EXPECT_TRUE(isListening()); // the socket is in the next one's way

    QStringList examples;
    for (const auto& file : fs::directory_iterator(TESSARIL_EXAMPLES))
        examples.append(QString::fromStdString(file.path()));
    const auto next = start(examples);
    ASSERT_TRUE(eventually([&] { return styles().size() == std::size_t(examples.size()); }));
    EXPECT_TRUE(eventually([&] { return messageIsTheDocument(); }));
    for (const styleContainer& style : styles()) {
        const styleJSON& data = style.styleData;
        EXPECT_NE(data.compSections ? data.compSections->at(0).code
                                    : data.sections.at(0).compiledcode.value_or(""),
                  "")
            << data.name;
    }
    std::vector<std::string> kept;
    for (const auto& file : fs::directory_iterator(container))
        if (file.path().filename().string().starts_with("styledb-unreadable-"))
            kept.push_back(fileContent(file));
    EXPECT_THAT(kept, ElementsAre(damaged));
}

TEST_F(ApplicationProcess, TakesWhatLaterStartsHandOverUntilItIsToldToEnd) {
    writeFile(home / "late.css", R"(@-moz-document domain("a.example") { a { color: red } })");
    const auto first = start({});
    ASSERT_TRUE(eventually([&] { return isListening(); }));
    EXPECT_EQ(exitCode(start({"late.css", "tessaril://openstyle/12"})), 0);
    EXPECT_TRUE(eventually([&] { return styles().size() == 1; }));
    EXPECT_EQ(styles().at(0).styleData.name, "late");

    // Below a question that nobody answers, and with work for some time.
    EXPECT_EQ(exitCode(start({"backup.sdb"})), 0);
    EXPECT_EQ(exitCode(start(QStringList(30, TESSARIL_EXAMPLES "/night-forum.user.less"))), 0);
    EXPECT_EQ(first->state(), QProcess::Running);
    first->terminate();
    EXPECT_EQ(exitCode(first), 0);
    EXPECT_EQ(styles().size(), 31u);
    EXPECT_TRUE(messageIsTheDocument());
}

TEST_F(ApplicationProcess, LinksReachTheProgramThatWasInstalledLast) {
    const auto run = [&](const char* program, const QStringList& arguments) {
        const auto process = start(arguments, program);
        EXPECT_EQ(exitCode(process), 0);
        EXPECT_EQ(process->readAllStandardError(), "");
    };
    const fs::path entry = share / "applications/com.tessaril.app.desktop";
    for (const auto& [folder, word] : {std::pair{"a $ \"b\"", R"("%1/a \\$ \\"b\\"/tessaril")"},
                                       {"moved", "%1/moved/tessaril"}}) {
        // A program that writes its arguments down.
        const fs::path program = home / folder / "tessaril";
        fs::create_directory(home / folder);
        writeFile(program, "#!/bin/sh\nprintf '%s\\n' \"$@\" > \"$HOME/arguments\"\n");
        fs::permissions(program, fs::perms::owner_all);
        run(TESSARIL_PACKAGING "/install-for-user", {program.c_str()});
        fs::last_write_time(entry, {});
        run(TESSARIL_PACKAGING "/install-for-user", {program.c_str()});
        EXPECT_EQ(fs::last_write_time(entry), fs::file_time_type()) << "nothing to change";
        const QString line = "\nExec=" + QString(word).arg(home.path.c_str()) + " %U\n";
        EXPECT_THAT(fileContent(entry), HasSubstr(line.toStdString()));
    }
    EXPECT_TRUE(fs::exists(share / "mime/packages/com.tessaril.app.xml"));
    EXPECT_TRUE(fs::exists(share / "icons/hicolor/scalable/apps/com.tessaril.app.svg"));
    run("xdg-open", {"tessaril://openstyle/12"});
    EXPECT_EQ(fileContent(home / "arguments"), "tessaril://openstyle/12\n");
}

} // namespace
} // namespace tessaril
