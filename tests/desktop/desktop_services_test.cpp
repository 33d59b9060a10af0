#include "desktop/desktop_applications.h"
#include "desktop/extension_state.h"
#include "desktop/posix_file_system.h"
#include "desktop/shared_container.h"
#include "support/temporary_folder.h"

#include <QDesktopServices>
#include <QObject>
#include <QUrl>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace tessaril {
namespace {

using namespace testing;

/// Stands in for the programs of the desktop.
class OpenedAddresses : public QObject {
    Q_OBJECT

public:
    OpenedAddresses() {
        for (const char* scheme : {"mailto", "https", "file"})
            QDesktopServices::setUrlHandler(scheme, this, "open");
    }
    ~OpenedAddresses() override {
        for (const char* scheme : {"mailto", "https", "file"})
            QDesktopServices::unsetUrlHandler(scheme);
    }

    QByteArray last;

public slots:
    void open(const QUrl& url) { last = url.toEncoded(); }
};

/// Puts a program that answers which e-mail program the desktop has before all others.
class ChosenEmailProgram {
public:
    explicit ChosenEmailProgram(const std::string& answer) : path(qgetenv("PATH")) {
        writeFile(folder / "xdg-mime", "#!/bin/sh\necho '" + answer + "'\n");
        ::chmod((folder / "xdg-mime").c_str(), 0700);
        qputenv("PATH", QByteArray::fromStdString(folder.path.string()) + ":" + path);
    }
    ~ChosenEmailProgram() { qputenv("PATH", path); }

private:
    TemporaryFolder folder;
    QByteArray path;
};

TEST(DesktopApplications, ComposesAMessageWhereThereIsAProgramForIt) {
    OpenedAddresses opened;
    DesktopApplications applications;
    {
        const ChosenEmailProgram chosen("mail.desktop");
        EXPECT_TRUE(applications.composeEmail("help+me@tessaril.example", "I need & \"help\"!"));
        EXPECT_EQ(opened.last,
                  "mailto:help%2Bme@tessaril.example?subject=I%20need%20%26%20%22help%22%21");
    }
    const ChosenEmailProgram chosen("");
    opened.last.clear();
    EXPECT_FALSE(applications.composeEmail("help@tessaril.example", ""));
    EXPECT_EQ(opened.last, "");
}

TEST(DesktopApplications, OpensAddressesThatAreValid) {
    OpenedAddresses opened;
    DesktopApplications applications;
    EXPECT_TRUE(applications.openAddress("https://tessaril.example/"));
    EXPECT_EQ(opened.last, "https://tessaril.example/");
    EXPECT_FALSE(applications.openAddress("https://bad host/"));
    EXPECT_FALSE(applications.openAddress(""));
}

TEST(ExtensionState, IsWhatTheBrowserSideWroteLast) {
    const TemporaryFolder container;
    const PosixFileSystem files;
    ExtensionState extension(files, container.path, container / "how to.html");
    EXPECT_EQ(extension.isEnabled(), std::nullopt);
    writeFile(container / "extension-state", "enabled\r\nversion 2\n");
    EXPECT_EQ(extension.isEnabled(), true);
    writeFile(container / "extension-state", "disabled\nenabled\n");
    EXPECT_EQ(extension.isEnabled(), false);
    writeFile(container / "extension-state", "");
    EXPECT_EQ(extension.isEnabled(), false);

    OpenedAddresses opened;
    extension.showPreferences();
    EXPECT_EQ(opened.last,
              "file://" + QByteArray::fromStdString(container.path) + "/how%20to.html");
}

TEST(SharedContainer, IsMadeForThisUserOnlyOrNotAtAll) {
    const QByteArray before = qgetenv("XDG_DATA_HOME");
    const TemporaryFolder folder;
    qputenv("XDG_DATA_HOME", QByteArray::fromStdString(folder / "new" / "data"));
    const auto container = makeSharedContainer();
    ASSERT_TRUE(container);
    EXPECT_EQ(*container, folder / "new/data/7RX2KD84QM.group.com.tessaril.shared");
    struct stat status {};
    ASSERT_EQ(::stat(container->c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700u);
    EXPECT_EQ(makeSharedContainer(), container);

    std::filesystem::remove(*container);
    writeFile(*container, "in the way");
    EXPECT_FALSE(makeSharedContainer());
    qputenv("XDG_DATA_HOME", "/proc/nowhere");
    EXPECT_FALSE(makeSharedContainer());
    qputenv("XDG_DATA_HOME", before);
}

} // namespace
} // namespace tessaril

#include "desktop_services_test.moc"
