#include "events/notification_names.h"
#include "icons/style_icons.h"
#include "preferences/preference_keys.h"
#include "support/map_url_loader.h"
#include "support/store_machine.h"
#include "support/test.h"
#include "support/thread_dispatcher.h"

namespace tessaril {
namespace {

using namespace std::chrono_literals;

using texts = std::vector<std::string>;

template <typename Tasks>
struct IconMachine : StoreMachine<Tasks> {
    IconMachine() {
        this->preferences.registerDefault(preferenceKeys::fetchSiteIcons, true);
        start();
    }

    /// As a new process does it.
    void start() {
        icons = std::make_unique<StyleIcons>(styleIconsSurroundings{
            .loader = loader,
            .decoder = pictures,
            .files = this->files,
            .dispatcher = this->dispatcher,
            .center = this->center,
            .preferences = this->preferences,
            .findStyle = [this](std::int64_t id) { return this->store.findStyle(id); },
            .cacheFolder = "/cache",
            .clock = [this] { return this->files.now; }});
        icons->setFoundHandler([this](std::int64_t id, const auto& icon, iconRequest why) {
            found.push_back(std::to_string(id) + (why == iconRequest::newRow ? " " : "! ") +
                            icon->png);
        });
    }
    void put(std::int64_t id, std::vector<styleSection> sections) {
        styleContainer style = namedStyle("style", id);
        style.styleData.sections = std::move(sections);
        this->store.appendStyle(style);
    }
    void putDomain(std::int64_t id, std::string domain) { put(id, {{.domains = {domain}}}); }
    void serve(const std::string& address, const std::string& picture) {
        loader.responses[address].body = "picture " + picture;
    }
    /// A style for NAME.example, which has an icon.
    void serveDomain(std::int64_t id, const std::string& name) {
        putDomain(id, name + ".example");
        serve("https://" + name + ".example/favicon.ico", name);
    }
    void turn(bool on) {
        this->preferences.set(preferenceKeys::fetchSiteIcons, on);
        this->center.post(notifications::preferencesDidChange);
    }
    auto known(std::int64_t id) { return icons->known(*this->store.findStyle(id)); }

    MapUrlLoader loader;
    MarkedPictures pictures;
    texts found;
    std::unique_ptr<StyleIcons> icons;
};

struct StyleIconsTest : ::testing::Test, IconMachine<SteppedDispatcher> {
    /// The addresses that are asked for it.
    texts fetch(std::vector<std::int64_t> ids, iconRequest why = iconRequest::newRow) {
        found.clear();
        icons->fetch(ids, why);
        dispatcher.runAll();
        return loader.taken();
    }
    /// What is found once that is wanted again.
    texts turnOn() {
        found.clear();
        turn(true);
        dispatcher.runAll();
        return found;
    }
};

TEST_F(StyleIconsTest, AsksSectionBySectionAndStopsAtTheFirstIconOfANewRow) {
    put(1, {{.urls = {"https://exact.example/"}, .regexps = {"https://.*"}},
            {.urlPrefixes = {"https://p.co.uk", "http://p.com", "https://www.q.org/"},
             .domains = {"a.example", "b.example"}},
            {.domains = {"c.example"}}});
    serve("https://p.com/favicon.ico", "p");
    serve("https://c.example/favicon.ico", "c");
    EXPECT_THAT(fetch({1}),
                ElementsAre("https://a.example/favicon.ico", "https://www.a.example/favicon.ico",
                            "https://a.example/", "https://a.example/apple-touch-icon.png",
                            "https://b.example/favicon.ico", "https://www.b.example/favicon.ico",
                            "https://b.example/", "https://b.example/apple-touch-icon.png",
                            "https://p.com/", "https://p.com/favicon.ico"));
    EXPECT_THAT(found, ElementsAre("1 picture p"));
    EXPECT_EQ(known(1)->png, "picture p");

    EXPECT_THAT(fetch({1}, iconRequest::rulesChanged),
                ElementsAre("https://c.example/favicon.ico"));
    EXPECT_THAT(found, ElementsAre("1! picture p", "1! picture c"));
    EXPECT_THAT(fetch({2}), IsEmpty()) << "no such style";
    EXPECT_TRUE(loader.allForPublicHosts);
}

TEST_F(StyleIconsTest, FindsTheIconThatAPagePrefers) {
    putDomain(1, "a.example");
    loader.responses["https://a.example/"] = {
        .body = "<link rel=icon sizes=16x16 href=small.png><link rel=manifest href=m.json>",
        .finalAddress = "https://www.a.example/start/"};
    loader.responses["https://www.a.example/start/m.json"].body =
        R"({"icons":[{"src":"/broken.png","sizes":"64x64"},{"src":"/large.png","sizes":"192x192"}]})";
    loader.responses["https://www.a.example/broken.png"].body = "<html>";
    serve("https://www.a.example/large.png", "large");
    EXPECT_THAT(fetch({1}),
                ElementsAre("https://a.example/favicon.ico", "https://www.a.example/favicon.ico",
                            "https://a.example/", "https://www.a.example/start/m.json",
                            "https://www.a.example/broken.png", "https://www.a.example/large.png"));
    EXPECT_THAT(found, ElementsAre("1 picture large"));
}

TEST_F(StyleIconsTest, LeavesTheUsersOwnMachineAndNetworkAlone) {
    const texts hosts{"localhost",   "router",     "nas.local",      "192.168.0.1",
                      "[::1]",       "2130706433", "a.example:8080", "me@a.example",
                      "a b.example", "",           "printer.home",   "x/../"};
    put(1, {{.domains = hosts}});
    put(2, {{.urlPrefixes = {"https://localhost/a.com", "https://10.0.0.1/.net", "x.org", ".com",
                             "ftp://a.com", "file:///a.com"}}});
    EXPECT_THAT(fetch({1, 2}), IsEmpty());
}

TEST_F(StyleIconsTest, SpendsLittleOnAnyOneStyle) {
    styleSection many;
    for (int i = 0; i < 40; ++i)
        many.domains.push_back(std::to_string(i) + ".example");
    put(1, {many});
    put(2, {{.domains = {"6.example", "has.example"}}});
    serve("https://has.example/favicon.ico", "icon");
    EXPECT_EQ(fetch({1}).size(), 30U * 4) << "of so many sites";

    start();
    loader.onLoad = [this](const urlRequest&) { files.now += 10s; };
    loader.responses["https://1.example/favicon.ico"].body = "a page";
    EXPECT_EQ(fetch({1, 2}).size(), 6U + 5) << "after a minute the next has its turn";
    EXPECT_THAT(found, ElementsAre("2 picture icon"));
    loader.onLoad = nullptr;
    start();
    EXPECT_EQ(fetch({1}).size(), 30U * 4) << "one not searched to the end may have one";
}

TEST_F(StyleIconsTest, ServesTheRowsOnTheScreenFirstAndEachOnce) {
    for (std::int64_t id = 1; id <= 4; ++id)
        serveDomain(id, std::to_string(id));
    icons->fetch(std::vector<std::int64_t>{1, 2, 3, 4}, iconRequest::newRow);
    icons->fetch(std::vector<std::int64_t>{2}, iconRequest::rulesChanged);
    icons->setOnScreen({9, 3, 4});
    dispatcher.runAll();
    EXPECT_THAT(found, ElementsAre("3 picture 3", "4 picture 4", "1 picture 1", "2! picture 2"));
    EXPECT_THAT(dispatcher.priorities, Each(taskPriority::background));

    icons->fetch(std::vector<std::int64_t>{1, 2}, iconRequest::rulesChanged);
    icons->stop();
    found.clear();
    dispatcher.runAll();
    EXPECT_THAT(found, IsEmpty());
}

TEST_F(StyleIconsTest, RemembersAcrossStartsWhatItLearned) {
    const char* domains[] = {"has.net", "none.net", "off.net", "refuses.net"};
    for (std::int64_t id = 1; id <= 4; ++id)
        putDomain(id, domains[id - 1]);
    serve("https://has.net/favicon.ico", "icon");
    loader.responses["https://none.net/"].body = "a page";
    loader.responses["https://www.refuses.net/favicon.ico"].hasFailed = true;
    EXPECT_EQ(fetch({1, 2, 3, 4}).size(), 1U + 4 + 4 + 4);
    start();
    EXPECT_EQ(fetch({1, 2, 3, 4}).size(), 4U) << "that one was not reached";
    EXPECT_THAT(fetch({3}), IsEmpty()) << "not at once again";
    files.now += 1h;
    EXPECT_EQ(fetch({3}).size(), 4U);
    files.now += 31 * 24h;
    start();
    loader.responses.clear();
    EXPECT_EQ(fetch({1}).size(), 4U);
    EXPECT_THAT(found, ElementsAre("1 picture icon")) << "an old one is better than none";
}

TEST_F(StyleIconsTest, AsksNobodyWhileThePreferenceIsOff) {
    serveDomain(1, "a");
    serveDomain(2, "b");
    fetch({1});
    start();
    turn(false);
    EXPECT_THAT(fetch({1, 2}), IsEmpty());
    EXPECT_THAT(found, ElementsAre("1 picture a")) << "from the cache";
    EXPECT_THAT(turnOn(), ElementsAre("1 picture a", "2 picture b"));
    EXPECT_THAT(loader.taken(), ElementsAre("https://b.example/favicon.ico"));

    // Asked for between the switching on and its announcement.
    turn(false);
    putDomain(4, "b.example");
    fetch({4});
    preferences.set(preferenceKeys::fetchSiteIcons, true);
    fetch({1});
    EXPECT_THAT(turnOn(), Contains("4 picture b"));

    // Switched off in the middle, it is not taken for a site without an icon.
    putDomain(3, "c.example");
    loader.responses["https://c.example/"].body = "a page";
    loader.onLoad = [this](const urlRequest& request) {
        if (request.address == "https://c.example/") turn(false);
    };
    EXPECT_EQ(fetch({3}).size(), 3U);
    loader.onLoad = nullptr;
    serve("https://c.example/favicon.ico", "c");
    EXPECT_THAT(turnOn(), Contains("3 picture c"));
}

TEST(StyleIconsThreads, ShareEachSiteAndKeepToAFewRequestsAtOnce) {
    IconMachine<ThreadDispatcher> machine;
    std::vector<std::int64_t> ids;
    for (std::int64_t id = 1; id <= 200; ++id) {
        machine.serveDomain(id, std::to_string(id % 10));
        ids.push_back(id);
    }
    machine.loader.responses.erase("https://0.example/favicon.ico");
    std::atomic<int> running = 0;
    std::atomic<bool> tooMany = false;
    machine.loader.onLoad = [&](const urlRequest&) {
        if (++running > 4) tooMany = true;
        std::this_thread::yield();
        --running;
    };
    machine.icons->fetch(ids, iconRequest::newRow);
    machine.icons->setOnScreen({150, 151});
    for (const std::int64_t id : ids)
        machine.known(id);
    machine.dispatcher.join();
    machine.dispatcher.runMain();
    EXPECT_EQ(machine.found.size(), 180U);
    EXPECT_FALSE(tooMany);
    EXPECT_EQ(machine.loader.taken().size(), 9U + 4) << "each site once";
    EXPECT_EQ(machine.known(1), machine.known(191));
}

} // namespace
} // namespace tessaril
