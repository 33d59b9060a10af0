#include "support/test.h"
#include "support/url_machine.h"

namespace tessaril {
namespace {

using shown = RecordingAlerts::shown;
using state = importSheetState;

shown duplicate(const std::string& name) {
    return {"Duplicate Style", "The style \"" + name + "\" is already installed."};
}

struct UrlImportTest : ::testing::Test, UrlMachine {
    /// What the sheet shows after the import of that address.
    std::optional<state> import(const std::string& address) {
        std::optional<state> next;
        const auto ticket =
            urlImport.importClicked(address, [&](state entered) { next = entered; });
        EXPECT_THAT(dispatcher.mainTasks, IsEmpty()) << "loaded in the background";
        EXPECT_EQ(dispatcher.priorities.back(), taskPriority::background);
        dispatcher.runAll();
        return next;
    }
};

TEST_F(UrlImportTest, ReadsAFileByItsMarkersAndNamesItAfterItsAddress) {
    const std::string metadata = "/* ==UserStyle==\n@name A\n==/UserStyle== */\nb {}";
    for (const auto& [address, text, name, isPlain] :
         std::vector<std::tuple<std::string, std::string, std::string, bool>>{
             {"https://a.example/d/my%20night.user.css?v=1.2", block, "my night.user", false},
             {"https://a.example/x.styl", metadata, "A", false},
             {"http://a.example/plain.css", " i {}\n", "plain", true},
             {"https://a.example/?file=x.less", "u {}", "New Style from CSS", true}}) {
        serve(address, text);
        EXPECT_EQ(import(" " + address + "\n"), state::finished);
        EXPECT_EQ(last().styleData.name, name);
        EXPECT_EQ(last().source, isPlain ? "custom" : "usercss");
        EXPECT_EQ(last().downloadedFrom, isPlain ? "" : address);
        if (isPlain) {
            EXPECT_EQ(last().styleData.sections, makeStyleJSON("", text).sections);
        }
        const std::vector<std::string> titles{"CSS File Imported With No Rules"};
        EXPECT_EQ(alerts.taken(), isPlain ? titles : std::vector<std::string>());
    }
    EXPECT_EQ(announced, 4);
    EXPECT_EQ(written().styles.size(), 4U);
}

TEST_F(UrlImportTest, SaysWhyThereIsNoStyle) {
    serve("https://a.example/latin.css", "caf\xE9");
    serve("https://a.example/broken.css", "@-moz-document domain(\"a\") {");
    serve("https://site.example/styles/chrome/2.json", "{}");
    for (const auto& [address, titles] :
         std::vector<std::pair<std::string, std::vector<std::string>>>{
             {"https://a.example/dark", {"Unsupported URL"}},
             {"https://a.example/gone.css", {"Error Getting Style"}},
             {"no address.css", {"Error Getting Style"}},
             {"https://a.example/latin.css", {"Error Getting Style"}},
             {"https://a.example/broken.css", {}},
             {"https://site.example/forum/1.css", {"Unsupported URL"}},
             {"https://site.example/styles/1", {"Error Getting Style"}},
             {"https://site.example/styles/2", {"JSON Error"}}}) {
        EXPECT_EQ(import(address), state::failed) << address;
        EXPECT_EQ(alerts.taken(), titles) << address;
    }
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(UrlImportTest, DoesNotTakeARedirectedTextForOneOfTheOwnNetwork) {
    const std::string own = "http://localhost/x.less", elsewhere = "https://a.example/x.less";
    serve(own, lessStyle);
    EXPECT_EQ(import(own), state::finished);
    EXPECT_TRUE(reachedOwnNetwork);
    store.resetDatabase();
    urls.responses[own].finalAddress = elsewhere;
    EXPECT_EQ(import(own), state::finished);
    EXPECT_FALSE(reachedOwnNetwork);
    EXPECT_EQ(last().updateURL, elsewhere);
}

TEST_F(UrlImportTest, AddsAStyleOnce) {
    serveSiteStyle("12", "Night");
    EXPECT_EQ(import("http://www.site.example/styles/12/night"), state::finished);
    EXPECT_EQ(last().source, "usorg");
    EXPECT_EQ(last().userstyleID, 12);
    serveSiteStyle("12", "Night 2");
    EXPECT_EQ(import("https://site.example/styles/chrome/12.json"), state::failed);

    serve("https://a.example/x.less", lessStyle);
    serve("https://b.example/x.less", lessStyle);
    EXPECT_EQ(import("https://a.example/x.less"), state::finished);
    EXPECT_EQ(import("https://b.example/x.less"), state::idle);
    EXPECT_EQ(toldOfErrors, 1) << "of the style that was taken";

    serveSiteStyle("13", "Day");
    std::optional<state> next;
    const auto ticket = urlImport.importClicked("https://site.example/styles/13",
                                                [&](state entered) { next = entered; });
    SteppedDispatcher::step(dispatcher.backgroundTasks);
    styleContainer meanwhile = namedStyle("Day", 5);
    meanwhile.userstyleID = 13;
    store.appendStyle(meanwhile);
    dispatcher.runAll();
    EXPECT_EQ(next, state::idle);
    EXPECT_THAT(alerts.alerts, ElementsAre(duplicate("Night 2"), duplicate("x"), duplicate("Day")));
    EXPECT_THAT(names(), ElementsAre("Night", "x", "Day"));
}

TEST_F(UrlImportTest, IsAbandonedAtAnyTime) {
    const std::string address = "https://a.example/x.less";
    serve(address, lessStyle);
    const std::vector<std::string> addresses = {address, "https://a.example/gone.css", "other"};
    for (const std::string& each : addresses) {
        for (int steps = 0; steps < 3; ++steps) {
            bool called = false;
            auto ticket = urlImport.importClicked(each, [&](state) { called = true; });
            bool wasStopped = steps != 1;
            urls.onLoad = [&](const urlRequest& request) {
                if (steps != 1) return;
                ticket.reset();
                wasStopped = request.stop.stop_requested();
            };
            if (steps > 0) SteppedDispatcher::step(dispatcher.backgroundTasks);
            ticket.reset();
            dispatcher.runAll();
            EXPECT_FALSE(called);
            EXPECT_TRUE(wasStopped || each == "other") << each;
        }
    }
    urls.onLoad = [&](const urlRequest&) { urlImport.stop(); };
    EXPECT_EQ(import(address), std::nullopt) << "quitting";
    EXPECT_THAT(names(), IsEmpty());
    EXPECT_THAT(alerts.alerts, IsEmpty());
    EXPECT_EQ(toldOfErrors, 0);
}

TEST_F(UrlImportTest, OnlyBeepsWhileTheListIsLocked) {
    EXPECT_TRUE(urlImport.mayBegin());
    list.setLockedForSync(true);
    EXPECT_FALSE(urlImport.mayBegin());
    serve("https://a.example/x.less", lessStyle);
    EXPECT_EQ(import("https://a.example/x.less"), state::idle) << "locked while it was loaded";
    EXPECT_EQ(alerts.beeps, 2);
    EXPECT_EQ(toldOfErrors, 0);
    EXPECT_THAT(names(), IsEmpty());
}

TEST(UrlImport, OffersASingleAddressOfTheClipboard) {
    const auto offered = UrlImport::addressInClipboard;
    EXPECT_EQ(offered(" https://a.example/x.css?a=b#c\n"), "https://a.example/x.css?a=b#c");
    for (const char* none : {"", "a.example", "file:///x.css", "https://a.example is nice",
                             "https://a.example\nhttps://b.example", "password"})
        EXPECT_EQ(offered(none), "") << none;
    EXPECT_EQ(offered("https://a.example/" + std::string(100'000, 'x')), "");
}

} // namespace
} // namespace tessaril
