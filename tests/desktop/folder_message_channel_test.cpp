#include "desktop/folder_message_channel.h"
#include "desktop/posix_file_system.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace tessaril {
namespace {

using namespace testing;

TEST(FolderMessageChannel, HoldsTheLastMessageOfEachIdentifier) {
    const TemporaryFolder container;
    PosixFileSystem files;
    FolderMessageChannel channel(files, container.path);
    const std::string_view pieces[] = {"first ", "message"};
    EXPECT_TRUE(channel.send("changed", pieces));
    EXPECT_TRUE(channel.send("other", pieces));
    const auto payload = files.stage(container.path, std::span(pieces).last(1));
    EXPECT_TRUE(channel.send("changed", *payload));
    EXPECT_TRUE(payload->publishAs(container / "document"));

    const std::filesystem::path folder = container / "wormhole";
    EXPECT_EQ(fileContent(folder / "changed"), "message");
    EXPECT_EQ(fileContent(folder / "other"), "first message");
    // One written file serves the message and the document.
    EXPECT_TRUE(std::filesystem::equivalent(folder / "changed", container / "document"));
    struct stat status {};
    ASSERT_EQ(::stat(folder.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700u);

    // The browser side may clear the folder away.
    std::filesystem::remove_all(folder);
    EXPECT_TRUE(channel.send("changed", *payload));
    EXPECT_FALSE(channel.send("../escaped", *payload));
    EXPECT_FALSE(std::filesystem::exists(container / "escaped"));
}

} // namespace
} // namespace tessaril
