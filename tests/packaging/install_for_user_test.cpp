#include "support/temporary_folder.h"
#include "support/test.h"

#include <QProcess>

namespace tessaril {
namespace {

namespace fs = std::filesystem;

int run(const QString& command, const QStringList& parameters, const fs::path& home) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CURRENT_DESKTOP",
                             "DESKTOP_SESSION", "WAYLAND_DISPLAY"})
        environment.remove(name);
    environment.insert("HOME", QString::fromStdString(home));
    // The opener looks at desktop entries only where there could be a display.
    environment.insert("DISPLAY", ":nowhere");
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(command, parameters);
    if (!process.waitForFinished()) return -1;
    EXPECT_EQ(process.readAllStandardError(), "");
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

TEST(InstallForUser, NamesTheProgramThatLinksReachAndChangesNothingTheSecondTime) {
    const TemporaryFolder home;
    const fs::path data = home / ".local/share";
    const fs::path entry = data / "applications/com.tessaril.app.desktop";
    for (const auto& [folder, word] : {std::pair{"a $ \"b\"", R"("%1/a \\$ \\"b\\"/tessaril")"},
                                       {"moved", "%1/moved/tessaril"}}) {
        // A program that writes its arguments down.
        const fs::path program = home / folder / "tessaril";
        fs::create_directory(home / folder);
        writeFile(program, "#!/bin/sh\nprintf '%s\\n' \"$@\" > \"$HOME/arguments\"\n");
        fs::permissions(program, fs::perms::owner_all);
        const auto install = [&] {
            return run(TESSARIL_PACKAGING "/install-for-user", {program.c_str()}, home.path);
        };
        ASSERT_EQ(install(), 0);
        fs::last_write_time(entry, {});
        EXPECT_EQ(install(), 0);
        EXPECT_EQ(fs::last_write_time(entry), fs::file_time_type());
        const QString line = "\nExec=" + QString(word).arg(home.path.c_str()) + " %U\n";
        EXPECT_THAT(fileContent(entry), HasSubstr(line.toStdString()));
    }
    EXPECT_TRUE(fs::exists(data / "mime/packages/com.tessaril.app.xml"));
    EXPECT_TRUE(fs::exists(data / "icons/hicolor/scalable/apps/com.tessaril.app.svg"));
    EXPECT_EQ(run("xdg-open", {"tessaril://openstyle/12"}, home.path), 0);
    EXPECT_EQ(fileContent(home / "arguments"), "tessaril://openstyle/12\n");
}

} // namespace
} // namespace tessaril
