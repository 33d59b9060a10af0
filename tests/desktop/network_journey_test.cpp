#include "desktop/curl_url_loader.h"
#include "desktop/directory_resources.h"
#include "desktop/javascript_core_engine.h"
#include "desktop/qt_dispatcher.h"
#include "support/event_loop.h"
#include "support/stand_in_machine.h"
#include "support/style_site_server.h"
#include "support/test.h"
#include "support/url_machine.h"

namespace tessaril {
namespace {

/// The application with the real loader, compilers and threads, and a server that plays the site
/// and everyone else.
struct NetworkJourneyTest : ::testing::Test, StandInMachine {
    NetworkJourneyTest() {
        standard.setValue(preferenceKeys::siteAddress, server.https());
        standard.setValue(preferenceKeys::fetchSiteIcons, false);
        application.styleList(); // read by nobody else here
    }
    ~NetworkJourneyTest() override {
        application.stopLoading();
        tasks.finish();
        application.finish();
        tasks.finish();
    }

    static std::string userCSS(const std::string& version, const std::string& rest) {
        return "/* ==UserStyle==\n@version " + version + "\n" + rest;
    }
    static std::string block(const std::string& code) {
        return "@-moz-document domain(\"a.example\") {" + code + "}";
    }

    importSheetState import(const std::string& address) {
        std::optional<importSheetState> state;
        const auto ticket =
            application.urlImport().importClicked(address, [&](auto shown) { state = shown; });
        EXPECT_TRUE(eventually([&] { return state.has_value(); }));
        return state.value_or(importSheetState::idle);
    }
    /// Opens the link and answers its question with Yes.
    void install(const std::string& link) {
        const std::size_t before = styles().size();
        alerts.answers.push_back({.button = 0});
        application.openLink("tessaril://" + link);
        EXPECT_TRUE(eventually([&] { return styles().size() == before + 1; })) << link;
    }
    liveDatabase::styleList styles() { return application.store().snapshot().styles; }
    std::string compiled(std::size_t index) {
        return styles().at(index)->styleData.compSections.value().at(0).code;
    }
    void updateAll() {
        application.styleUpdates().updateAllClicked();
        EXPECT_TRUE(eventually([&] { return !application.styleUpdates().isRunning(); }));
    }
    std::vector<std::string> statuses() {
        std::vector<std::string> all;
        for (const auto& row : application.styleList().styles())
            all.push_back(row->updateStatus);
        return all;
    }

    StyleSiteServer server;
    CurlUrlLoader loader{server.certificateAuthorities()};
    QtDispatcher tasks;
    JavaScriptCoreEngine engine;
    DirectoryResources compilers{TESSARIL_RESOURCES};
    Application application{{files, channel, alerts, tasks, standard, shared, engine, compilers,
                             compilerErrors, extension, externals, loader, pictures, records,
                             "/container", "", "/container/imports"}};
};

TEST_F(NetworkJourneyTest, InstallsAndUpdatesFromTheSiteFromFilesAndByLinks) {
    server.put("styles/chrome/12.json", siteDocument("Twelve"), "gzip");
    server.put("styles/chrome/34.json", siteDocument("Thirty-four"));
    server.put("a.user.css", userCSS("1", "==/UserStyle== */") + block("b {}"), "chunked");
    server.put("moved.css", "", "redirect=" + server.https("/a.user.css"));
    server.put("lib/colors.less", "@shade: #111;");
    server.put("lib/all.less", "@import \"colors.less\";\n.dark() { color: @shade; }");
    server.put("dark.user.less",
               userCSS("1", "@preprocessor less\n@var text size \"Size\" 1\n==/UserStyle== */\n"
                            "@import \"" +
                                server.https("/lib/all.less") + "\";\n") +
                   block("b { .dark(); width: @size }"));

    EXPECT_EQ(import(server.https("/styles/12/a-slug")), importSheetState::finished);
    install("install/34/a=b");
    install("usercss/" + server.http("/moved.css"));
    EXPECT_EQ(import(" " + server.http("/dark.user.less") + "\n"), importSheetState::finished);
    EXPECT_THAT(server.requests(), Contains(StartsWith("/styles/chrome/34.json?a=b\t")));
    ASSERT_EQ(styles().size(), 4U);
    EXPECT_EQ(styles().at(0)->userstyleID, 12);
    EXPECT_EQ(styles().at(1)->userstyleID, 34);
    EXPECT_EQ(styles().at(2)->styleData.name, "moved");
    EXPECT_EQ(styles().at(3)->downloadedFrom, server.http("/dark.user.less"));
    EXPECT_THAT(compiled(3), AllOf(HasSubstr("color: #111"), HasSubstr("width: 1")));

    server.put("lib/colors.less", "@shade: #222;");
    updateAll();
    EXPECT_THAT(statuses(), ElementsAre("error", "error", "noupdates", "updated"))
        << "the site's documents name no address here";
    EXPECT_THAT(compiled(3), HasSubstr("color: #222")) << "what it imports counts, too";
    server.put("a.user.css", userCSS("2", "==/UserStyle== */") + block("i {}"));
    server.put("dark.user.less", userCSS("2", "==/UserStyle== */") + block("u {}"), "truncated");
    updateAll();
    EXPECT_EQ(styles().at(2)->styleData.sections.at(0).code, "i {}");
    EXPECT_EQ(styles().at(2)->version, "2");
    EXPECT_EQ(styles().at(3)->version, "1");
    EXPECT_THAT(statuses(), ElementsAre("error", "error", "updated", "error"));
}

} // namespace
} // namespace tessaril
