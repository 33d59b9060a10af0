#include "desktop/posix_file_system.h"
#include "support/temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>

namespace tessaril {
namespace {

using namespace testing;
namespace fs = std::filesystem;

class PosixFileSystemTest : public ::testing::Test {
protected:
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
    ASSERT_TRUE(read);
    EXPECT_EQ(*read, content);
    EXPECT_GE(read->capacity(), read->size() + 64);
    EXPECT_EQ(files.read(folder / "empty"), "");
    // A file whose size the system does not know beforehand.
    EXPECT_THAT(files.read("/proc/self/status").value_or(""), ::testing::HasSubstr("Name:"));

    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_FALSE(files.read(folder / "pipe"));
    EXPECT_FALSE(files.read(folder.path));
    EXPECT_FALSE(files.read("/dev/zero"));
    EXPECT_FALSE(files.read(folder / "missing"));
    fs::resize_file(folder / "empty", std::uintmax_t{5} << 30); // sparse
    EXPECT_FALSE(files.read(folder / "empty"));
}

TEST_F(PosixFileSystemTest, PublishesOneContentUnderSeveralNames) {
    writeFile(folder / "first", "old");
    const std::string_view pieces[] = {"one", "", "two"};
    auto staged = files.stage(folder.path, pieces);
    ASSERT_TRUE(staged);
    EXPECT_EQ(fileContent(folder / "first"), "old");
    EXPECT_TRUE(staged->publishAs(folder / "first"));
    EXPECT_TRUE(staged->publishAs(folder / "second"));
    EXPECT_TRUE(staged->publishAs(folder / "second")); // onto itself
    staged.reset();
    EXPECT_EQ(fileContent(folder / "first"), "onetwo");
    EXPECT_TRUE(fs::equivalent(folder / "first", folder / "second"));
    EXPECT_THAT(folder.names(), ::testing::UnorderedElementsAre("first", "second"));

    struct stat status {};
    ASSERT_EQ(::stat((folder / "first").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
}

TEST_F(PosixFileSystemTest, WritesMorePiecesThanOneSystemCallTakes) {
    const std::vector<std::string_view> pieces(5'000, "abc");
    auto staged = files.stage(folder.path, pieces);
    ASSERT_TRUE(staged && staged->publishAs(folder / "file"));
    EXPECT_EQ(fileContent(folder / "file").size(), 15'000u);
}

TEST_F(PosixFileSystemTest, CopiesWhereTheContentCannotBeLinked) {
    // Shared memory is a file system of its own.
    std::string name = "/dev/shm/tessaril-XXXXXX";
    ASSERT_TRUE(::mkdtemp(name.data()));
    const fs::path other(name);
    EXPECT_TRUE(stage("content")->publishAs(other / "file"));
    EXPECT_EQ(fileContent(other / "file"), "content");
    EXPECT_EQ(std::distance(fs::directory_iterator(other), {}), 1);
    EXPECT_THAT(folder.names(), ::testing::IsEmpty());
    fs::remove_all(other);
}

TEST_F(PosixFileSystemTest, LeavesNothingBehindWhereWritingFails) {
    EXPECT_FALSE(files.stage(folder / "missing", {}));

    // A disk that is full in the middle of a write.
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{100'000, before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
    const auto staged = stage(std::string(1 << 20, 'x'));
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_FALSE(staged);
    EXPECT_THAT(folder.names(), ::testing::IsEmpty());

    fs::create_directory(folder / "taken");
    EXPECT_FALSE(stage("content")->publishAs(folder / "taken"));
    EXPECT_FALSE(stage("content")->publishAs(folder / "missing" / "file"));
    EXPECT_THAT(folder.names(), ::testing::ElementsAre("taken"));
}

TEST_F(PosixFileSystemTest, ReplacesWhatASymbolicLinkLeadsTo) {
    fs::create_directory(folder / "elsewhere");
    writeFile(folder / "elsewhere" / "real", "old");
    fs::create_symlink("elsewhere/real", folder / "link");
    EXPECT_TRUE(stage("new")->publishAs(folder / "link"));
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
    EXPECT_EQ(fileContent(folder / "elsewhere" / "real"), "new");

    fs::create_symlink("elsewhere/dangling", folder / "dangling");
    EXPECT_FALSE(files.exists(folder / "dangling"));
    EXPECT_TRUE(stage("new")->publishAs(folder / "dangling"));
    EXPECT_EQ(fileContent(folder / "elsewhere" / "dangling"), "new");

    fs::create_symlink("circle", folder / "circle");
    EXPECT_TRUE(files.exists(folder / "circle"));
    EXPECT_FALSE(stage("new")->publishAs(folder / "circle"));
}

TEST_F(PosixFileSystemTest, KeepsAFileThroughItsReplacement) {
    writeFile(folder / "real", "old");
    fs::create_symlink("real", folder / "file");
    EXPECT_TRUE(files.keep(folder / "file", folder / "kept"));
    EXPECT_TRUE(stage("new")->publishAs(folder / "file"));
    EXPECT_EQ(fileContent(folder / "kept"), "old");
    EXPECT_EQ(fileContent(folder / "file"), "new");
    EXPECT_FALSE(files.keep(folder / "file", folder / "kept")); // not free
    EXPECT_EQ(fileContent(folder / "kept"), "old");
    EXPECT_FALSE(files.keep(folder / "missing", folder / "other"));
}

TEST_F(PosixFileSystemTest, RemovesOnlyWhatKilledProcessesLeft) {
    const auto staged = stage("content");
    const std::string staleName = folder.names().at(0);
    writeFile(folder / "styledb.sdb", "");
    writeFile(folder / ".tessaril-notes.staged", "");
    fs::create_directory(folder / ".tessaril-0123456789abcdef.staged");
    removeStaleStagedFiles(folder.path);
    EXPECT_THAT(folder.names(),
                ::testing::UnorderedElementsAre("styledb.sdb", ".tessaril-notes.staged",
                                                ".tessaril-0123456789abcdef.staged"));
    removeStaleStagedFiles(folder / "missing");
}

} // namespace
} // namespace tessaril
