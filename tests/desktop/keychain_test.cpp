#include "desktop/keychain.h"
#include "support/event_loop.h"
#include "support/test.h"

#include <future>

namespace tessaril {
namespace {

// The tests' desktop has no keychain, which must be no error and hold nobody up.
TEST(Keychain, WithoutOneNothingIsKeptAndNothingFound) {
    Keychain keychain;
    std::optional<bool> isAvailable, isKept;
    keychain.askAvailable([&](bool answer) { isAvailable = answer; });
    EXPECT_TRUE(eventually([&] { return isAvailable.has_value(); }));
    if (*isAvailable) GTEST_SKIP() << "this desktop has one, which is left alone";
    keychain.keep("postgresql://me@tests.example/x", "secret", [&](bool done) { isKept = done; });
    EXPECT_TRUE(eventually([&] { return isKept.has_value(); }));
    EXPECT_FALSE(*isKept);

    using namespace std::chrono_literals;
    const auto source = Keychain::source();
    auto found = std::async(std::launch::async,
                            [&] { return source("postgresql://me@tests.example/x", 1min); });
    EXPECT_TRUE(eventually([&] { return found.wait_for(0s) == std::future_status::ready; }));
    const passwordAnswer none = found.get();
    EXPECT_FALSE(none.password || none.isUnknown);
    // Nobody turns the event loop, as while the user is still unlocking a keychain.
    const passwordAnswer late = source("postgresql://me@tests.example/x", 0ms);
    EXPECT_FALSE(late.password);
    EXPECT_TRUE(late.isUnknown);
}

} // namespace
} // namespace tessaril
