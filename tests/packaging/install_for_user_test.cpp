#include "support/temporary_folder.h"

#include <QProcess>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

namespace tessaril {
namespace {

using namespace testing;
namespace fs = std::filesystem;

/// A user's home and a program that writes its arguments down.
class InstallForUser : public ::testing::Test {
protected:
    void makeProgram(const fs::path& path) {
        fs::create_directories(path.parent_path());
        program = path;
        writeFile(program, "#!/bin/sh\nprintf '%s\\n' \"$@\" > '" + arguments.string() + "'\n");
        ::chmod(program.c_str(), 0700);
    }

    int run(const QString& command, const QStringList& parameters) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("HOME", QString::fromStdString(home.path));
        environment.remove("XDG_DATA_HOME");
        environment.remove("XDG_CONFIG_HOME");
        for (const char* name : {"XDG_CURRENT_DESKTOP", "DESKTOP_SESSION", "WAYLAND_DISPLAY"})
            environment.remove(name);
        // The opener looks at desktop entries only where there could be a display.
        environment.insert("DISPLAY", ":nowhere");
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(command, parameters);
        if (!process.waitForFinished()) return -1;
        EXPECT_EQ(process.readAllStandardError(), "");
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }

    int install() {
        return run(TESSARIL_PACKAGING "/install-for-user", {QString::fromStdString(program)});
    }

    const TemporaryFolder home;
    const fs::path arguments = home / "arguments";
    const fs::path entry = home / ".local/share/applications/com.tessaril.app.desktop";
    fs::path program;
};

TEST_F(InstallForUser, NamesTheProgramAndChangesNothingTheSecondTime) {
    makeProgram(home / "a $ \"b\"" / "tessaril");
    ASSERT_EQ(install(), 0);
    const std::string path = home.path.string();
    EXPECT_THAT(fileContent(entry), ::testing::HasSubstr("Exec=\"" + path +
                                                         R"(/a \\$ \\"b\\"/tessaril" %U)"
                                                         "\n"));
    EXPECT_TRUE(fs::exists(home / ".local/share/mime/packages/com.tessaril.app.xml"));
    EXPECT_TRUE(fs::exists(home / ".local/share/icons/hicolor/scalable/apps/com.tessaril.app.svg"));

    const fs::file_time_type before{};
    fs::last_write_time(entry, before);
    EXPECT_EQ(install(), 0);
    EXPECT_EQ(fs::last_write_time(entry), before);

    makeProgram(home / "moved" / "tessaril");
    EXPECT_EQ(install(), 0);
    EXPECT_THAT(fileContent(entry), ::testing::HasSubstr("Exec=" + path + "/moved/tessaril %U\n"));
}

TEST_F(InstallForUser, ALinkReachesTheProgram) {
    makeProgram(home / "tessaril");
    ASSERT_EQ(install(), 0);
    EXPECT_EQ(run("xdg-open", {"tessaril://openstyle/12"}), 0);
    EXPECT_EQ(fileContent(arguments), "tessaril://openstyle/12\n");
}

} // namespace
} // namespace tessaril
