#include "import/file_import.h"
#include "import/paste_import.h"
#include "support/import_machine.h"
#include "support/test.h"
#include "support/url_machine.h"

namespace tessaril {
namespace {

struct FileImportTest : ::testing::Test, ImportMachine {
    /// Imports files of these names and contents together and gives the last style.
    styleContainer imported(const std::vector<std::pair<std::string, std::string>>& named) {
        std::vector<std::filesystem::path> paths;
        for (const auto& [name, text] : named) {
            paths.emplace_back("/in/" + name);
            files.contents[paths.back()] = text;
        }
        importer.importFiles(paths);
        dispatcher.runAll();
        return last();
    }

    FileImport importer{files, importing()};
};

std::string userCSS(const std::string& metadata) {
    return "/* ==UserStyle==\n" + metadata + "\n==/UserStyle== */\n" + block;
}

TEST_F(FileImportTest, plainCSSKeepsItsTextAndWarnsThatItAppliesEverywhere) {
    const std::string text = "\n/* ==UserStyle==\n@name Ignored\n==/UserStyle== */\nb { }\n";
    const styleContainer style = imported({{"dark.user.css", text}});
    EXPECT_TRUE(style.source == "custom" && style.userstyleID == -1);
    EXPECT_EQ(style.styleData, makeStyleJSON("dark", text)) << "metadata and blanks included";
    EXPECT_THAT(alerts.alerts.at(0).text, StartsWith("The style \"dark\" does not have"));
    EXPECT_THAT(alerts.taken(), ElementsAre("CSS File Imported With No Rules"));
}

TEST_F(FileImportTest, takesTheNameFromTheFileAndTheSourceFromTheUpdateAddress) {
    for (const auto& [file, text, name, source] :
         std::vector<std::tuple<std::string, std::string, std::string, std::string>>{
             {"site.user.css", block, "site", "custom"},
             {"site.css", block, "site", "custom"},
             {"site.user.v2.css", block, "site.user.v2", "custom"},
             {"a.user.b.user.css", block, "a", "custom"},
             {".user.css", "b {}", ".user", "custom"},
             {"\u00FC.user.styl", block, "\u00FC", "custom"},
             {"caf\xE9.css", block, "caf\uFFFD", "custom"}, // else no save would work any more
             {"DARK.CSS", block, "DARK", "custom"},
             {"x.css", userCSS("@name Named.user"), "Named", "custom"},
             {"x.css", userCSS("@name C\n@updateURL"), "C", "custom"},
             {"x.css", userCSS("@name A\n@updateURL https://a.example/"), "A", "usercss"}}) {
        const styleContainer style = imported({{file, text}});
        EXPECT_EQ(style.styleData.name, name) << file;
        EXPECT_EQ(style.source, source) << text;
    }
}

TEST_F(FileImportTest, eachFileIsOneStyleAndOneNotificationUnlessTheListIsLocked) {
    imported({{"a.css", block}, {"a.less", block}, {"a.css", block}});
    EXPECT_EQ(announced, 3);
    EXPECT_EQ(written().styles.size(), 3U) << "never merged with what is there";
    EXPECT_THAT(dispatcher.priorities, Each(taskPriority::utility));
    EXPECT_THAT(alerts.alerts, IsEmpty());

    EXPECT_TRUE(importer.canImport());
    list.setLockedForSync(true);
    EXPECT_FALSE(importer.canImport());
}

TEST_F(FileImportTest, saysWhichFileGivesNoStyleAndPassesOverWhatIsNoUTF8Text) {
    imported({{"typed.txt", block}, {"broken.user.css", "@-moz-document domain(\"a\") {"}});
    EXPECT_THAT(alerts.alerts.at(0).text, HasSubstr("the file \"typed.txt.\""));
    EXPECT_THAT(alerts.alerts.at(1).text, HasSubstr("the file \"broken.user.css.\""));
    EXPECT_THAT(alerts.taken(), ElementsAre("Invalid Style", "Invalid Style"));

    files.unreadable.insert("/in/folder.css");
    importer.importFiles({"/in/folder.css", "/in/gone.css"});
    imported({{"latin.css", "/* caf\xE9 */ " + block}});
    EXPECT_THAT(names(), IsEmpty());
    EXPECT_THAT(alerts.alerts, IsEmpty());

    EXPECT_EQ(imported({{"mark.css", "\xEF\xBB\xBF" + block}}).styleData.sections.size(), 1U)
        << "a byte-order mark is no code";
    EXPECT_EQ(imported({{"empty.css", ""}}).styleData.sections.at(0).code, "");
}

struct PasteImportTest : ::testing::Test, ImportMachine {
    std::optional<bool> import(const std::string& text) {
        std::optional<bool> outcome;
        const auto ticket = importer.importText(text, [&](bool imported) { outcome = imported; });
        EXPECT_THAT(dispatcher.mainTasks, IsEmpty()) << "read in the background";
        dispatcher.runAll();
        return outcome;
    }

    PasteImport importer{importing()};
};

TEST_F(PasteImportTest, TellsMarkedTextsFromPlainCSS) {
    const std::string metadata = "/* ==UserStyle==\n@name A\n==/UserStyle== */\nb {}";
    for (const auto& [text, name, source, code] : std::vector<std::array<std::string, 4>>{
             {" b {}\n", "New Style from CSS", "custom", " b {}\n"},
             {metadata, "A", "custom", "b {}"},
             {block, "Style from @-moz-document Format", "custom", "b { color: red }"},
             {userCSS("@updateURL u"), "Style from @-moz-document Format", "usercss",
              "b { color: red }"}}) {
        EXPECT_EQ(import(text), true);
        EXPECT_EQ(last().styleData.name, name);
        EXPECT_EQ(last().source, source);
        ASSERT_EQ(last().styleData.sections.size(), 1U);
        EXPECT_EQ(last().styleData.sections[0].code, code);
    }
    EXPECT_EQ(written().styles.size(), 4U);
    EXPECT_EQ(announced, 4);
    EXPECT_THAT(alerts.taken(), ElementsAre("CSS Imported With No Rules")) << "of the first";

    EXPECT_EQ(import("@-moz-document domain(\"a\") {"), false);
    EXPECT_THAT(alerts.taken(), ElementsAre("Invalid Style"));
    EXPECT_EQ(names().size(), 4U);
}

TEST_F(PasteImportTest, AddsNothingOnceItsTicketIsGone) {
    for (const bool isRead : {false, true}) {
        bool called = false;
        auto ticket = importer.importText(lessStyle, [&](bool) { called = true; });
        if (isRead) SteppedDispatcher::step(dispatcher.backgroundTasks);
        ticket.reset();
        dispatcher.runAll();
        EXPECT_FALSE(called);
    }
    EXPECT_THAT(names(), IsEmpty());
    EXPECT_THAT(alerts.alerts, IsEmpty());
    EXPECT_EQ(toldOfErrors, 0) << "though it was compiled";
    EXPECT_EQ(import(lessStyle), true);
    EXPECT_EQ(toldOfErrors, 1);
}

TEST_F(PasteImportTest, OnlyBeepsWhileTheListIsLocked) {
    EXPECT_TRUE(importer.canImport("b {}"));
    EXPECT_FALSE(importer.canImport(" \n"));
    EXPECT_EQ(alerts.beeps, 0);
    list.setLockedForSync(true);
    EXPECT_FALSE(importer.canImport("b {}"));
    EXPECT_EQ(import("b {}"), false) << "locked while it was read";
    EXPECT_EQ(alerts.beeps, 2);
    EXPECT_THAT(names(), IsEmpty());
    EXPECT_THAT(alerts.alerts, IsEmpty());
}

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
    const std::string styles = "https://site.example/styles/";
    serve(styles + "chrome/2.json", "{}");
    serveSiteStyle("3", "caf\xE9");
    for (const auto& [address, titles] :
         std::vector<std::pair<std::string, std::vector<std::string>>>{
             {"https://a.example/dark", {"Unsupported URL"}},
             {"https://a.example/gone.css", {"Error Getting Style"}},
             {"no address.css", {"Error Getting Style"}},
             {"https://a.example/latin.css", {"Error Getting Style"}},
             {"https://a.example/broken.css", {}},
             {"https://site.example/forum/1.css", {"Unsupported URL"}},
             {styles + "night", {"Unsupported URL"}},
             {styles + "1", {"Error Getting Style"}},
             {styles + "2", {"JSON Error"}},
             {styles + "3", {"JSON Error"}}}) {
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

TEST_F(UrlImportTest, KnowsTheAddressesOfItsStyles) {
    stored.setValue(preferenceKeys::siteAddress, " https://styles42.example:8443/ ");
    EXPECT_EQ(site.hostName(), "styles42.example:8443");
    const std::string base = "https://styles42.example:8443/styles/chrome/";
    for (const auto& [address, id, json] :
         std::vector<std::tuple<std::string, std::optional<std::int64_t>, std::string>>{
             {"http://www.styles42.example:8443/styles/x7y8", 7, base + "7.json"},
             {base + "9.json?a=1", 9, base + "9.json?a=1"},
             {base + "night", std::nullopt, base + "night"},
             {"http://styles42.example:8443/styles/chrome/9.json", 9, base + "9.json"},
             {"https://styles42.example:8443/styles/night", std::nullopt, ""},
             {"https://styles42.example:8443/forum/12", std::nullopt, ""},
             {"https://styles42.example.evil/styles/1", std::nullopt, ""},
             {"ftp://styles42.example:8443/styles/1", std::nullopt, ""}}) {
        EXPECT_EQ(site.siteStyleID(address), id) << address;
        EXPECT_EQ(site.siteJSONAddress(address), json) << address;
    }
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
    serve("https://b.example/x.less", lessStyle + " u {}");
    EXPECT_EQ(import("https://b.example/x.less"), state::finished) << "of that name, but another";

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
    EXPECT_THAT(names(), ElementsAre("Night", "x", "x", "Day"));
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
