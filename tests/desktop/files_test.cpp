#include "desktop/extension_state.h"
#include "desktop/folder_message_channel.h"
#include "desktop/own_folders.h"
#include "desktop/posix_file_system.h"
#include "desktop/settings_store.h"
#include "desktop/shared_container.h"
#include "model/database_json.h"
#include "store/database_backups.h"
#include "support/temporary_folder.h"
#include "support/test.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QSettings>

#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>

namespace tessaril {
namespace {

namespace fs = std::filesystem;

/// While it lives no file gets more bytes than this, as on a disk that is full in the middle of a
/// write.
class DiskFullBeyond {
public:
    explicit DiskFullBeyond(rlim_t bytes) {
        ::getrlimit(RLIMIT_FSIZE, &before);
        const rlimit small{bytes, before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &small);
    }
    ~DiskFullBeyond() {
        ::setrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, handler);
    }
    DiskFullBeyond(const DiskFullBeyond&) = delete;
    DiskFullBeyond& operator=(const DiskFullBeyond&) = delete;

private:
    rlimit before{};
    void (*handler)(int) = std::signal(SIGXFSZ, SIG_IGN);
};

struct PosixFileSystemTest : ::testing::Test {
    std::unique_ptr<StagedFile> stage(std::string_view content) {
        return files.stage(folder.path, std::span(&content, 1));
    }

    TemporaryFolder folder;
    PosixFileSystem files;
};

TEST_F(PosixFileSystemTest, ReadsWholeRegularFilesOnly) {
    std::string content(300'000, 'x');
    content[7] = '\0';
    writeFile(folder / "file", content);
    writeFile(folder / "empty", "");
    const auto read = files.read(folder / "file");
    ASSERT_TRUE(read == content);
    EXPECT_GE(read->capacity(), read->size() + 64);
    EXPECT_EQ(files.read(folder / "empty"), "");
    // A file whose size the system does not know beforehand.
    EXPECT_THAT(files.read("/proc/self/status").value_or(""), HasSubstr("Name:"));

    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    fs::resize_file(folder / "empty", std::uintmax_t{5} << 30); // sparse
    for (const fs::path& none : {folder / "pipe", folder.path, fs::path("/dev/zero"),
                                 folder / "missing", folder / "empty"})
        EXPECT_FALSE(files.read(none)) << none;
}

TEST_F(PosixFileSystemTest, PublishesOneContentUnderSeveralNames) {
    writeFile(folder / "first", "old");
    std::vector<std::string_view> pieces(5'000, "abc"); // more than one system call takes
    pieces[1] = "";
    auto staged = files.stage(folder.path, pieces);
    ASSERT_TRUE(staged && fileContent(folder / "first") == "old");
    for (const char* name : {"first", "second", "second"}) // at last onto itself
        EXPECT_TRUE(staged->publishAs(folder / name));
    staged.reset();
    EXPECT_EQ(fileContent(folder / "first").size(), 3 * 4'999u);
    EXPECT_TRUE(fs::equivalent(folder / "first", folder / "second"));
    EXPECT_THAT(folder.names(), UnorderedElementsAre("first", "second"));
    EXPECT_EQ(fs::status(folder / "first").permissions(),
              fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(PosixFileSystemTest, LeavesNothingBehindWhereWritingFails) {
    EXPECT_FALSE(files.stage(folder / "missing", {}));

    {
        const DiskFullBeyond limit(100'000);
        EXPECT_FALSE(stage(std::string(1 << 20, 'x')));
    }
    EXPECT_THAT(folder.names(), IsEmpty());

    fs::create_directory(folder / "taken");
    EXPECT_FALSE(stage("content")->publishAs(folder / "taken"));
    EXPECT_FALSE(stage("content")->publishAs(folder / "missing" / "file"));
    EXPECT_THAT(folder.names(), ElementsAre("taken"));
}

TEST_F(PosixFileSystemTest, OverwritesAFileInPlace) {
    EXPECT_TRUE(files.overwrite(folder / "file", "first"));
    fs::create_hard_link(folder / "file", folder / "second name");
    fs::create_symlink("file", folder / "link");
    fs::permissions(folder / "file", fs::perms::owner_write | fs::perms::owner_read);
    for (const std::string& content : {std::string("longer than before"), std::string("x"),
                                       std::string(), std::string(1 << 20, 'y')}) {
        EXPECT_TRUE(files.overwrite(folder / "link", content));
        EXPECT_TRUE(fileContent(folder / "second name") == content);
    }
    EXPECT_TRUE(fs::is_symlink(folder / "link"));

    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    for (const fs::path& none : {folder / "pipe", folder.path, folder / "missing" / "file",
                                 fs::path("/dev/full"), fs::path("/proc/version")})
        EXPECT_FALSE(files.overwrite(none, "content")) << none;

    const DiskFullBeyond limit(100'000);
    fs::create_symlink("new", folder / "dangling");
    for (const char* name : {"new", "dangling"})
        EXPECT_FALSE(files.overwrite(folder / name, std::string(1 << 20, 'x')));
    EXPECT_THAT(folder.names(),
                UnorderedElementsAre("file", "second name", "link", "pipe", "dangling"))
        << "nothing in part";
}

TEST_F(PosixFileSystemTest, ReplacesWhatASymbolicLinkLeadsTo) {
    fs::create_directory(folder / "elsewhere");
    writeFile(folder / "elsewhere" / "real", "old");
    for (const char* name : {"real", "dangling"}) {
        const fs::path link = folder / (std::string("to ") + name);
        fs::create_symlink(fs::path("elsewhere") / name, link);
        EXPECT_EQ(files.exists(link), fs::exists(link));
        EXPECT_TRUE(stage("new")->publishAs(link));
        EXPECT_TRUE(fs::is_symlink(link));
        EXPECT_EQ(fileContent(folder / "elsewhere" / name), "new");
    }
    fs::create_symlink("circle", folder / "circle");
    EXPECT_TRUE(files.exists(folder / "circle"));
    EXPECT_FALSE(stage("new")->publishAs(folder / "circle"));
}

TEST_F(PosixFileSystemTest, KeepsWhatIsReplacedUnderAFreeName) {
    writeFile(folder / "file", "first");
    fs::create_symlink("file", folder / "link");
    for (const auto how : {&PosixFileSystem::keep, &PosixFileSystem::keepCopy}) {
        const fs::path kept = folder / (how == &PosixFileSystem::keep ? "kept" : "copy");
        const auto keep = [&](const char* name, const fs::path& as) {
            return (files.*how)(folder / name, as);
        };
        const std::string before = fileContent(folder / "file");
        EXPECT_TRUE(keep("link", kept));
        EXPECT_TRUE(fs::equivalent(folder / "file", kept)) << "no copying";
        EXPECT_FALSE(fs::is_symlink(kept));
        EXPECT_TRUE(stage("next")->publishAs(folder / "link"));
        EXPECT_EQ(fileContent(folder / "file"), "next");
        EXPECT_FALSE(keep("file", kept)) << "not free";
        EXPECT_EQ(fileContent(kept), before);
        EXPECT_FALSE(keep("missing", folder / "other"));
        EXPECT_FALSE(keep("file", folder / "no" / "such" / "other"));
    }
    EXPECT_TRUE(files.keepCopy(folder / "file", folder / "removed" / "other"));
    EXPECT_EQ(fs::status(folder / "removed").permissions(), fs::perms::owner_all);
    EXPECT_FALSE(files.keepCopy(folder.path, folder / "other"));
}

TEST_F(PosixFileSystemTest, CopiesToAnotherFileSystem) {
    std::string name = "/dev/shm/tessaril-XXXXXX";
    ASSERT_TRUE(::mkdtemp(name.data()));
    const fs::path other = name;
    EXPECT_TRUE(stage("content")->publishAs(other / "file"));
    EXPECT_EQ(fileContent(other / "file"), "content");
    EXPECT_THAT(folder.names(), IsEmpty());
    writeFile(folder / "file", "first");
    fs::create_symlink("file", folder / "link");
    for (const char* content : {"first", "second"}) {
        writeFile(folder / "file", content);
        EXPECT_EQ(files.keepCopy(folder / "link", other / "copy"), *content == 'f') << "not free";
        EXPECT_EQ(fileContent(folder / "link"), content);
        EXPECT_EQ(fileContent(other / "copy"), "first");
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(other), {}), 2);
    fs::remove_all(other);
}

TEST_F(PosixFileSystemTest, ComparesFilesByTheirBytes) {
    std::string content(2'500'000, 'x'); // of several pieces
    writeFile(folder / "a", content);
    writeFile(folder / "b", content);
    content.back() = 'y';
    writeFile(folder / "other end", content);
    writeFile(folder / "longer", content + "y");
    ASSERT_TRUE(files.keepCopy(folder / "a", folder / "same"));
    for (const auto& [one, other, wanted] : {std::tuple("a", "b", true),
                                             {"a", "same", true},
                                             {"a", "other end", false},
                                             {"other end", "longer", false},
                                             {"a", "missing", false},
                                             {".", ".", false}})
        EXPECT_EQ(files.haveSameContent(folder / one, folder / other), wanted) << one << other;
}

TEST_F(PosixFileSystemTest, SendsMessagesThatShareTheirFileWithTheDocument) {
    FolderMessageChannel channel(files, folder.path);
    const fs::path messages = folder / "wormhole";
    const std::string_view pieces[] = {"first ", "message"};
    EXPECT_TRUE(channel.send("changed", pieces) && channel.send("other", pieces));
    const auto payload = stage("message");
    EXPECT_TRUE(channel.send("changed", *payload) && payload->publishAs(folder / "document"));
    EXPECT_EQ(fileContent(messages / "other"), "first message");
    EXPECT_TRUE(fs::equivalent(messages / "changed", folder / "document"));
    EXPECT_EQ(fs::status(messages).permissions(), fs::perms::owner_all);

    fs::remove_all(messages); // as the browser side may
    EXPECT_TRUE(channel.send("changed", *payload));
    EXPECT_FALSE(channel.send("../escaped", *payload));
}

TEST_F(PosixFileSystemTest, RemovesOnlyWhatKilledProcessesLeft) {
    const auto staged = stage("content");
    writeFile(folder / "styledb.sdb", "");
    writeFile(folder / ".tessaril-notes.staged", "");
    fs::create_directory(folder / ".tessaril-0123456789abcdef.staged");
    removeStaleStagedFiles(folder.path);
    EXPECT_THAT(folder.names(), UnorderedElementsAre("styledb.sdb", ".tessaril-notes.staged",
                                                     ".tessaril-0123456789abcdef.staged"));
}

/// The state of every style in the document, in order; nothing when it is not whole or not as a
/// save may have found the styles: all in one state, or the first ones one further.
std::optional<std::vector<int>> expectedStatesIn(const std::filesystem::path& file) {
    const auto document = decodeDatabase(fileContent(file));
    if (!document || document->styles.size() != 6) return std::nullopt;
    std::vector<int> states;
    for (const styleContainer& style : document->styles)
        states.push_back(std::atoi(style.styleData.sections.front().code.c_str()));
    const bool isOrdered = std::is_sorted(states.rbegin(), states.rend());
    return isOrdered && states.front() - states.back() <= 1 ? std::optional(states) : std::nullopt;
}

/// Runs the saving process until it has confirmed some states, and kills it at a random instant
/// within the next ones. Gives the last state that it has confirmed; nothing when it did not run.
std::optional<int> killedSavingProcess(const fs::path& container, std::mt19937& random) {
    QProcess process;
    process.start(TESSARIL_PROGRAMS "/tessaril_saving_process", {container.c_str()});
    int confirmed = 0;
    for (auto confirmations = 1 + random() % 3; confirmations > 0; --confirmations) {
        while (!process.canReadLine())
            if (!process.waitForReadyRead(60000)) return std::nullopt;
        confirmed = process.readLine().trimmed().toInt();
    }
    const auto instant = static_cast<qint64>(random() % 6'000'000); // nanoseconds
    QElapsedTimer timer;
    timer.start();
    while (timer.nsecsElapsed() < instant) {
    }
    if (::kill(static_cast<pid_t>(process.processId()), SIGKILL) != 0 ||
        !process.waitForFinished(60000) || process.exitStatus() != QProcess::CrashExit)
        return std::nullopt; // it ended by itself
    while (process.canReadLine())
        confirmed = process.readLine().trimmed().toInt();
    return confirmed;
}

TEST(KilledSaves, LeaveWholeFilesInAnExpectedStateThatNeverGoesBack) {
    constexpr int kills = 220;
    const TemporaryFolder container;
    std::mt19937 random(17);
    std::optional<int> confirmed;
    for (int kill = 0; kill < kills; ++kill) {
        SCOPED_TRACE(kill);
        confirmed = killedSavingProcess(container.path, random);
        ASSERT_TRUE(confirmed);
        const auto document = expectedStatesIn(container / "styledb.sdb");
        ASSERT_TRUE(document && expectedStatesIn(container / "wormhole/styleDBUpdated"));
        ASSERT_GE(document->back(), *confirmed) << "a finished save is lost";
        const SettingsStore settings(container / "tessaril.conf");
        const auto first = settings.value("first", std::int64_t{});
        const auto last = settings.value("last", std::int64_t{});
        ASSERT_TRUE(first && last);
        ASSERT_GE(std::get<std::int64_t>(*last), *confirmed) << "a finished set is lost";
        ASSERT_LE(std::get<std::int64_t>(*first) - std::get<std::int64_t>(*last), 1);
    }
    EXPECT_GT(confirmed, kills);

    removeStaleStagedFiles(container.path);
    removeStaleStagedFiles(container / "wormhole");
    EXPECT_THAT(container.names(),
                UnorderedElementsAre("styledb.sdb", "wormhole", "backups", "tessaril.conf"))
        << "nothing torn, no lock";
    PosixFileSystem files;
    const auto kept = DatabaseBackups(files, container / "backups", {}, systemSeconds).list();
    EXPECT_FALSE(kept.empty());
    for (const databaseBackup& each : kept)
        EXPECT_TRUE(decodeDatabase(fileContent(each.file)));
}

TEST(ExtensionState, IsWhatTheBrowserSideWroteLast) {
    const TemporaryFolder container;
    const PosixFileSystem files;
    const ExtensionState extension(files, container.path, {});
    EXPECT_EQ(extension.isEnabled(), std::nullopt);
    writeFile(container / "extension-state", "enabled\r\nversion 2\n");
    EXPECT_EQ(extension.isEnabled(), true);
    writeFile(container / "extension-state", "disabled\nenabled\n");
    EXPECT_EQ(extension.isEnabled(), false);
}

TEST_F(PosixFileSystemTest, ListsAndRemovesFilesOnly) {
    writeFile(folder / "file", "content");
    fs::create_directory(folder / "sub");
    fs::create_symlink("/missing", folder / "dangling");
    const auto found = files.list(folder.path);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_TRUE(found[0].path == folder / "file" && found[0].size == 7);
    EXPECT_LT(std::chrono::abs(std::chrono::system_clock::now() - found[0].modified),
              std::chrono::hours(1));
    EXPECT_THAT(files.list(folder / "missing"), IsEmpty());
    for (const char* name : {"file", "sub", "missing"})
        files.remove(folder / name);
    EXPECT_THAT(folder.names(), UnorderedElementsAre("sub", "dangling"));
}

TEST(UsersFolders, AreMadeForThisUserOnlyOrNotAtAll) {
    const auto container = [] { return makeSharedContainer().value_or(""); };
    const std::tuple<const char*, std::function<fs::path()>, fs::path> folders[] = {
        {"XDG_CACHE_HOME", makeIconCacheFolder, "new/tessaril/icons"},
        {"XDG_DATA_HOME", container, "new/7RX2KD84QM.group.com.tessaril.shared"},
        {"XDG_DATA_HOME", [&] { return makeBackupFolder(container()); },
         "new/7RX2KD84QM.group.com.tessaril.shared/backups"}};
    for (const auto& [variable, make, path] : folders) {
        const QByteArray before = qgetenv(variable);
        const TemporaryFolder folder;
        qputenv(variable, QByteArray::fromStdString(folder / "new"));
        for (int start = 0; start < 2; ++start)
            EXPECT_EQ(make(), folder / path);
        EXPECT_EQ(fs::status(folder / path).permissions(), fs::perms::owner_all);
        fs::remove(folder / path);
        writeFile(folder / path, "in the way");
        EXPECT_TRUE(make().empty());
        qputenv(variable, before);
    }
}

TEST(SettingsStore, KeepsEveryTypeInAFileThatOtherProgramsReadAndWrite) {
    const TemporaryFolder folder;
    const fs::path file = folder / "new" / "settings.ini";
    const std::pair<std::string_view, preferenceValue> values[] = {
        {"no", false},
        {"large", std::numeric_limits<std::int64_t>::min()},
        {"past", std::numeric_limits<double>::lowest()},
        {"text", std::string("@Invalid(), \"ünïcode\" \\ ; # = %1\n\t漢字 ")}};
    for (const auto& [key, value] : values)
        SettingsStore(file).setValue(key, value);
    for (const auto& [key, value] : values)
        EXPECT_EQ(SettingsStore(file).value(key, value), value) << key;
    EXPECT_FALSE(SettingsStore(file).value("text", true));
    writeFile(file, "[General]\nauthor=Doe, Jane\nflag=1\n"); // typed
    EXPECT_EQ(SettingsStore(file).value("author", ""), preferenceValue("Doe, Jane"));
    EXPECT_EQ(SettingsStore(file).value("flag", false), preferenceValue(true));

    SettingsStore(file).setValue("author", "Jane; @");
    const QSettings others(QString::fromStdString(file.string()), QSettings::IniFormat);
    EXPECT_EQ(others.value("author").toString(), "Jane; @");

    CapturedLog log;
    SettingsStore blocked("/proc/tessaril/settings.ini");
    blocked.setValue("flag", true);
    EXPECT_EQ(blocked.value("flag", false), preferenceValue(true)) << "for this process";
    EXPECT_THAT(log.take(), HasSubstr("Error writing preferences: /proc"));
}

TEST(SettingsStore, KeepsWhatItCannotReadBesideItAndStartsEmpty) {
    const TemporaryFolder folder;
    const fs::path file = folder / "settings.ini";
    std::size_t kept = 0;
    const auto startOver = [&] {
        CapturedLog log;
        SettingsStore store(file);
        EXPECT_FALSE(store.value("x", ""));
        EXPECT_THAT(log.take(), HasSubstr("kept as " + (folder / "settings-unreadable-").string()));
        store.setValue("y", "1");
        EXPECT_EQ(fileContent(file), "[General]\ny=1\n");
        EXPECT_EQ(folder.names().size(), ++kept + 1) << "each kept once";
    };
    for (const char* damaged : {"x=1\n\xFF\xFE\n", "[General\nx=1"}) {
        writeFile(file, damaged);
        startOver();
    }
    fs::remove(file);
    fs::create_directory(file);
    startOver();
}

TEST(SettingsStore, LosesNothingWhileOthersDamageDeleteOrChangeTheFile) {
    const TemporaryFolder folder;
    const fs::path file = folder / "settings.ini";
    SettingsStore store(file);
    store.setValue("author", "Jane");
    const auto setOver = [&](std::int64_t count) {
        store.setValue("count", count);
        const SettingsStore next(file);
        EXPECT_EQ(next.value("author", ""), preferenceValue("Jane"));
        EXPECT_EQ(next.value("count", std::int64_t{}), preferenceValue(count));
    };
    fs::remove(file);
    setOver(1);
    CapturedLog log;
    // Empty, damaged, and cut short.
    for (const char* content : {"", "author=\xFF", "[General]\nauthor=Ja"}) {
        writeFile(file, content);
        setOver(2 + *content);
    }
    writeFile(file, "[General]\nauthor=Jane\ncou");
    EXPECT_EQ(SettingsStore(file).value("author", ""), preferenceValue("Jane"));
    EXPECT_EQ(folder.names().size(), 4U) << "what was not whole is kept";
    writeFile(file, "; a note and no value\n");
    SettingsStore(file).setValue("author", "Jane");
    EXPECT_THAT(fileContent(file), HasSubstr("; a note"));

    writeFile(file, "; note\n[General]\ntheme=nord\nauthor=Jane\ncount=7\n");
    setOver(5);
    EXPECT_EQ(store.value("theme", ""), preferenceValue("nord"));
    EXPECT_THAT(fileContent(file), HasSubstr("; note\n"));
}

} // namespace
} // namespace tessaril
