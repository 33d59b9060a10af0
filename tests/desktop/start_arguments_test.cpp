#include "desktop/start_arguments.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tessaril {
namespace {

TEST(StartArguments, MeanTheSameInAnotherProcess) {
    const std::vector<std::string> arguments = {
        "tessaril://openstyle/12?a=%20#b",
        "dark.user.css",
        "./here.css",
        "../up.css",
        "/absolute/a b.less",
        "",
        "file:///home/a%20b/%E6%BC%A2.styl",
        "FILE://localhost/x%2523.css?query#fragment",
        "file://elsewhere/x.css",
        "file:",
        "not utf-8 \xff\xfe.css",
        "odd name: // here.css",
        "1a://name.css",
    };
    EXPECT_THAT(absoluteArguments(arguments, "/work"),
                ::testing::ElementsAre("tessaril://openstyle/12?a=%20#b", "/work/dark.user.css",
                                       "/work/here.css", "/work/../up.css", "/absolute/a b.less",
                                       "/home/a b/\xE6\xBC\xA2.styl", "/x%23.css",
                                       "/work/file:", "/work/not utf-8 \xff\xfe.css",
                                       "/work/odd name: // here.css", "/work/1a://name.css"));
}

} // namespace
} // namespace tessaril
