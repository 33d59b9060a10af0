#include "desktop/curl_url_loader.h"
#include "desktop/directory_resources.h"
#include "desktop/javascript_core_engine.h"
#include "desktop/qt_dispatcher.h"
#include "preferences/preference_keys.h"
#include "support/captured_log.h"
#include "support/event_loop.h"
#include "support/stand_in_machine.h"
#include "support/style_site_server.h"

#include <gmock/gmock.h>

#include <array>

namespace tessaril {
namespace {

using namespace testing;
using ::testing::AllOf, ::testing::Contains, ::testing::ElementsAre, ::testing::HasSubstr,
    ::testing::IsEmpty, ::testing::StartsWith, ::testing::UnorderedElementsAre;

/// The application with the real loader, compilers and threads, and a server that plays the site
/// and everyone else.
class NetworkJourneyTest : public ::testing::Test, protected StandInMachine {
protected:
    NetworkJourneyTest() {
        standard.setValue(preferenceKeys::siteAddress, server.https());
        standard.setValue(preferenceKeys::fetchSiteIcons, false);
        application.styleList(); // read by nobody else here
    }
    ~NetworkJourneyTest() override {
        server.release();
        application.stopLoading();
        tasks.finish();
        application.finish();
        tasks.finish();
    }

    static std::string siteStyle(const std::string& md5, const std::string& code) {
        return R"({"url":"","updateUrl":"","md5Url":"","originalMd5":")" + md5 +
               R"(","name":"From the site","sections":[{"urls":[],"urlPrefixes":[],)"
               R"("domains":["a.example"],"regexps":[],"code":")" +
               code + R"("}]})";
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
    std::string code(std::size_t index) {
        return styles().at(index)->styleData.sections.at(0).code;
    }
    std::string compiled(std::size_t index) {
        const auto sections = styles().at(index)->styleData.compSections;
        std::string all;
        if (sections)
            for (const styleSection& section : *sections)
                all += section.code;
        return all;
    }
    std::size_t shownAlerts() {
        const std::lock_guard lock(alerts.mutex);
        return alerts.alerts.size();
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
                             compilerErrors, extension, externals, loader, pictures, "/container",
                             "", "/container/imports"}};
};

TEST_F(NetworkJourneyTest, InstallsAndUpdatesFromTheSiteFromFilesAndByLinks) {
    server.put("styles/chrome/12.json", siteStyle("one", "b { color: red }"), "gzip");
    server.put("styles/chrome/34.json", siteStyle("one", "b { color: red }"));
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
    EXPECT_EQ(styles().at(3)->styleData.name, "dark.user");
    EXPECT_EQ(styles().at(3)->downloadedFrom, server.http("/dark.user.less"));
    EXPECT_THAT(compiled(3), AllOf(HasSubstr("color: #111"), HasSubstr("width: 1")));
    EXPECT_EQ(import(server.https("/styles/12")), importSheetState::failed);
    EXPECT_THAT(alerts.alerts,
                ElementsAre(RecordingAlerts::shown{
                    "Duplicate Style", "The style \"From the site\" is already installed."}));

    server.put("lib/colors.less", "@shade: #222;");
    updateAll();
    EXPECT_THAT(statuses(), ElementsAre("error", "error", "noupdates", "updated"))
        << "the site's documents name no address here";
    EXPECT_THAT(compiled(3), HasSubstr("color: #222")) << "what it imports counts, too";
    server.put("a.user.css", userCSS("2", "==/UserStyle== */") + block("i {}"));
    server.put("dark.user.less", userCSS("2", "==/UserStyle== */") + block("u {}"), "truncated");
    updateAll();
    EXPECT_EQ(code(2), "i {}");
    EXPECT_EQ(styles().at(2)->version, "2");
    EXPECT_EQ(styles().at(3)->version, "1");
    EXPECT_THAT(statuses(), ElementsAre("error", "error", "updated", "error"));
}

TEST_F(NetworkJourneyTest, TellsEachFailureAndChangesNothing) {
    const std::string style = userCSS("1", "==/UserStyle== */") + block("b {}");
    for (const char* how :
         {"status=404", "status=500", "closed", "truncated", "longer", "huge", "redirect=/x.css",
          "redirect=http:", "redirect=ftp://127.0.0.1/x.css"}) {
        server.put("x.css", style, how);
        server.put("styles/chrome/5.json", siteStyle("one", ""), how);
        const std::size_t before = shownAlerts();
        EXPECT_EQ(import(server.http("/x.css")), importSheetState::failed) << how;
        EXPECT_EQ(import(server.https("/styles/5")), importSheetState::failed) << how;
        application.openLink("tessaril://install/5");
        application.openLink("tessaril://usercss/" + server.http("/x.css"));
        ASSERT_TRUE(eventually([&] { return shownAlerts() == before + 4; })) << how;
        std::vector<std::string> titles;
        for (std::size_t i = before; i < before + 4; ++i)
            titles.push_back(alerts.alerts.at(i).title);
        EXPECT_THAT(titles, UnorderedElementsAre("Error Getting Style", "Error Getting Style",
                                                 "Error Getting Style", "Error Installing Style"));
    }
    server.put("x.css", "b { content: '\xE9' }");
    server.put("styles/chrome/5.json", siteStyle("one", "\xE9"));
    EXPECT_EQ(import(server.http("/x.css")), importSheetState::failed);
    EXPECT_EQ(alerts.alerts.back().title, "Error Getting Style");
    EXPECT_EQ(import(server.https("/styles/5")), importSheetState::failed);
    EXPECT_EQ(alerts.alerts.back().title, "JSON Error");
    EXPECT_THAT(styles(), IsEmpty());
    EXPECT_THAT(alerts.questions, IsEmpty());
}

TEST_F(NetworkJourneyTest, CancelsWhatWaitsForTheServer) {
    server.put("a.user.css", userCSS("1", "==/UserStyle== */") + block("b {}"));
    install("usercss/" + server.https("/a.user.css"));
    server.put("b.user.css", userCSS("1", "==/UserStyle== */") + block("b {}"));
    install("usercss/" + server.https("/b.user.css"));
    server.put("held.css", block("b {}"), "hold");
    const auto asked = [this](const std::string& path) {
        return [this, path] {
            const auto requests = server.requests();
            return std::ranges::any_of(requests, [&](auto& r) { return r.starts_with(path); });
        };
    };
    auto ticket = application.urlImport().importClicked(
        server.http("/held.css"), [](auto) { ADD_FAILURE() << "told after it was cancelled"; });
    ASSERT_TRUE(eventually(asked("/held.css")));
    ticket.reset();

    server.put("a.user.css", userCSS("2", "==/UserStyle== */") + block("b {}"), "hold");
    const auto run = application.updateRuns().make();
    bool closed = false;
    run->setHandlers([] {}, [&] { closed = true; });
    run->begin();
    const auto isHeld = [&] {
        const auto requests = server.requests();
        return std::ranges::count_if(requests,
                                     [](auto& r) { return r.starts_with("/a.user.css"); }) == 2;
    };
    ASSERT_TRUE(eventually(isHeld));
    run->cancelClicked();
    EXPECT_TRUE(run->isRunning());
    server.release();
    ASSERT_TRUE(eventually([&] { return !run->isRunning(); }));
    EXPECT_EQ(run->log(), "Checking for updates...\n\"a.user\" was updated to the latest version.\n"
                          "Update process was interrupted. 1 style was updated.");
    run->doneClicked();
    EXPECT_TRUE(closed);
    EXPECT_EQ(styles().at(0)->version, "2");
    EXPECT_EQ(styles().size(), 2U);
    EXPECT_THAT(alerts.alerts, IsEmpty());
}

} // namespace
} // namespace tessaril
