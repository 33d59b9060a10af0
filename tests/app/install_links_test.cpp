#include "app/link_router.h"
#include "support/test.h"
#include "support/url_machine.h"

namespace tessaril {
namespace {

alertQuestion questionFor(const std::string& name) {
    return {.title = "Do you want to install the style \"" + name + "\"?",
            .text = "A URL is trying to install a style. Would you like to allow this?",
            .buttons = {"Yes", "No"}};
}

struct InstallLinksTest : ::testing::Test, UrlMachine {
    void open(const std::string& rest) {
        links.route("tessaril://" + rest);
        dispatcher.runAll();
    }
    /// The addresses that the link has had loaded.
    std::vector<std::string> asked(const std::string& rest) {
        open(rest);
        return urls.taken();
    }

    InstallLinks installLinks{importing(), urlImport, site};
    LinkRouter links{center, installLinks};
};

TEST_F(InstallLinksTest, InstallAFileOnceTheUserSaysYes) {
    const std::string address = "https://a.example//d/night.less?a=b&c=usercss/%20";
    serve(address, lessStyle);
    links.route("tessaril://usercss/" + address);
    EXPECT_THAT(dispatcher.priorities, ElementsAre(taskPriority::background));
    dispatcher.runAll();
    EXPECT_THAT(alerts.questions, ElementsAre(questionFor("night")));
    EXPECT_THAT(names(), IsEmpty());
    EXPECT_EQ(toldOfErrors, 0);

    alerts.answers = {{0}};
    list.setLockedForSync(true); // which loses nothing
    open("usercss/" + address);
    EXPECT_THAT(written().styles.size(), 1U);
    EXPECT_EQ(last().downloadedFrom, address);
    EXPECT_EQ(last().source, "usercss");
    EXPECT_EQ(toldOfErrors, 1);
    EXPECT_THAT(alerts.alerts, IsEmpty());
}

TEST_F(InstallLinksTest, SayWhatIsWrongWithAFile) {
    serve("https://a.example/x.css", "/* ==UserStyle==\n@name A\n==/UserStyle== */\nb {}");
    serve("https://a.example/broken.css", "@-moz-document domain(\"a\") {");
    for (const auto& [address, title] : std::vector<std::pair<std::string, std::string>>{
             {"https://a.example/gone.css", "Error Getting Style"},
             {"https://site.example/styles/12", "Unsupported URL"},
             {"https://a.example/broken.css", ""},
             {"https://a.example/x.css", "CSS File Imported With No Rules"}}) {
        EXPECT_THAT(alerts.questions, IsEmpty());
        CapturedLog log;
        open("usercss/" + address);
        EXPECT_EQ(alerts.alerts.empty() ? "" : alerts.alerts.back().title, title) << address;
        EXPECT_EQ(log.take().empty(), !alerts.questions.empty()) << "nothing without a trace";
        alerts.alerts.clear();
    }
    EXPECT_THAT(alerts.questions, ElementsAre(questionFor("New Style from CSS")));
    urls.taken();
    EXPECT_THAT(asked("usercss"), IsEmpty());
    EXPECT_THAT(asked("UserCSS/https://a.example/x.css"), IsEmpty());
    EXPECT_THAT(alerts.alerts, IsEmpty());
}

TEST_F(InstallLinksTest, FindTheStyleOfTheSiteInThePath) {
    const std::pair<const char*, const char*> documents[] = {
        {"install/1234", "1234.json"},
        {"install/1234/", "1234.json"},
        {"Install/styles/77", "77.json"},
        {"install/1234/a=%22%25&b:c/d/", "1234.json?a=%22%25&b:c%2Fd%2F"},
        {"install/1234/5", "1234.json?5"},
        {"install/v2-style-77", "77.json"},
        {"install/v2/style-77", "77.json?style-77"},
        {"install/99999999999999999999/8", "8.json"}};
    for (const auto& [rest, name] : documents)
        EXPECT_THAT(asked(rest),
                    ElementsAre(std::string("https://site.example/styles/chrome/") + name));
    EXPECT_THAT(alerts.taken(), AllOf(SizeIs(8), Each("Error Installing Style")));
    for (const char* none : {"install", "install/night?12", "install/0", "install/0/12"})
        EXPECT_THAT(asked(none), IsEmpty()) << none;
    EXPECT_THAT(alerts.alerts, IsEmpty());
}

TEST_F(InstallLinksTest, InstallAStyleOfTheSiteOnce) {
    serveSiteStyle("12", "Night");
    alerts.answers = {{0}, {0}};
    alerts.whileAsking = [&] { dispatcher.runAll(); };
    links.route("tessaril://install/12");
    links.route("tessaril://install/12"); // its answer comes while the question is open
    dispatcher.runAll();
    EXPECT_THAT(alerts.questions, ElementsAre(questionFor("Night")));
    EXPECT_EQ(last().source, "usorg");
    EXPECT_EQ(last().userstyleID, 12);
    store.renameStyle(0, "Mine");
    urls.taken();
    EXPECT_THAT(asked("install/12"), IsEmpty());
    ASSERT_THAT(alerts.alerts, SizeIs(2));
    EXPECT_EQ(alerts.alerts[0].text, "The style \"Night\" is already installed.");
    EXPECT_EQ(alerts.alerts[1].text, "The style \"Mine\" is already installed.");
    EXPECT_THAT(names(), ElementsAre("Mine"));
}

TEST_F(InstallLinksTest, AskAndTellNothingOnceTheApplicationQuits) {
    serve("https://a.example/x.less", lessStyle);
    links.route("tessaril://usercss/https://a.example/x.less");
    SteppedDispatcher::step(dispatcher.backgroundTasks);
    installLinks.stop();
    open("usercss/https://a.example/gone.css");
    open("install/1");
    EXPECT_THAT(alerts.questions, IsEmpty());
    EXPECT_THAT(alerts.alerts, IsEmpty());
}

} // namespace
} // namespace tessaril
