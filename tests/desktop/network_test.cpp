#include "desktop/curl_url_loader.h"
#include "desktop/directory_resources.h"
#include "desktop/javascript_core_engine.h"
#include "desktop/public_address.h"
#include "desktop/qt_dispatcher.h"
#include "support/event_loop.h"
#include "support/stand_in_machine.h"
#include "support/style_site_server.h"
#include "support/temporary_folder.h"
#include "support/test.h"
#include "support/url_machine.h"
#include "web/loaded_text.h"

#include <arpa/inet.h>

#include <future>

namespace tessaril {
namespace {

using namespace std::chrono_literals;

/// One server for the tests of a suite, as it takes a while to start.
struct NetworkTest : ::testing::Test {
    static void SetUpTestSuite() { server = std::make_unique<StyleSiteServer>(); }
    static void TearDownTestSuite() { server.reset(); }

    static inline std::unique_ptr<StyleSiteServer> server;
    CurlUrlLoader loader{server->authorities};
};

struct CurlUrlLoaderTest : NetworkTest {
    std::future<std::optional<urlResponse>> begin(urlRequest request) {
        return std::async(std::launch::async, [this, request] { return loader.load(request); });
    }
    std::optional<urlResponse> load(const urlRequest& request) { return begin(request).get(); }

    template <typename Load>
    void expectOneLine(const std::string& address, const std::string& reason, Load loading) {
        CapturedLog log;
        EXPECT_FALSE(std::async(std::launch::async, loading).get()) << address;
        const std::string line = log.take();
        EXPECT_THAT(line, HasSubstr("Error loading " + address + ": " + reason));
        EXPECT_EQ(std::ranges::count(line, '\n'), 1);
    }
    void expectFailure(const urlRequest& request, const std::string& reason) {
        expectOneLine(request.address, reason, [&] { return loader.load(request); });
    }
    void expectNoText(CurlUrlLoader& asked, const std::string& address, const std::string& reason) {
        expectOneLine(address, reason, [&] { return loadText(asked, {.address = address}); });
    }
};

TEST_F(CurlUrlLoaderTest, GivesWholeBodiesAndWhereTheyCameFrom) {
    server->put("zip.css", "content", "gzip type=text/css");
    server->put("first", "", "redirect=second?x=1");
    server->put("second", std::string(4'000'000, 'x'), "redirect=" + server->https("/zip.css"));
    server->put("trailers",
                "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\nTrailer: X-Sum\r\n"
                "Connection: close\r\n\r\n7\r\ncontent\r\n0\r\nX-Sum: 1\r\n\r\n",
                "raw");
    server->put("mark.css", std::string("\xEF\xBB\xBF") + "content", "chunked");
    const auto response =
        load({.address = server->http("/first"), .largestBody = 7, .mostRedirects = 2});
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "content");
    EXPECT_EQ(response->contentType, "text/css");
    EXPECT_EQ(response->finalAddress, server->https("/zip.css"));
    EXPECT_THAT(server->requests().back(), StartsWith("/zip.css\tTessaril/"));
    for (const std::string& address : {server->http("/trailers"), server->https("/mark.css")}) {
        const auto loads = [&] { return loadText(loader, {.address = address}); };
        const auto text = std::async(std::launch::async, loads).get();
        EXPECT_TRUE(text && text->text == "content") << address;
    }
}

TEST_F(CurlUrlLoaderTest, RefusesWhatIsNotAWholeAnswerOfTheKindAskedFor) {
    const std::string lengthy(5'000'000, 'x');
    for (const auto& [path, content, how, reason] : std::vector<std::array<std::string, 4>>{
             {"missing", "text", "status=404", "status 404"},
             {"broken", "text", "status=500", "status 500"},
             {"endless", "", "redirect=/endless", "too many redirects"},
             {"file", "", "redirect=file:///etc/passwd", ""},
             {"script", "", "redirect=javascript:1", "a redirect that leads off the web"},
             {"far", "", "redirect=/" + std::string(9000, 'a'),
              "a redirect to an overlong address"},
             {"cut", "HTTP/1.1 200 OK\r\nContent-Le", "raw", "the answer is cut short"},
             {"half", "content", "truncated", ""},
             {"halfzip", lengthy, "truncated gzip", ""},
             {"longer", "content", "longer", ""},
             {"closed", "content", "closed", ""},
             {"large", lengthy, "", "a body of more than 1000 bytes"},
             {"huge", lengthy, "huge", "a body of more than 1000 bytes"},
             {"moved", lengthy, "huge redirect=/large", "redirects with more than"},
             {"bomb", lengthy, "gzip", "a body of more than 1000 bytes"}}) {
        server->put(path, content, how);
        for (const std::string& address : {server->http("/" + path), server->https("/" + path)})
            expectFailure({.address = address, .largestBody = 1000}, reason);
    }
    const auto requests = server->requests();
    EXPECT_EQ(std::ranges::count_if(requests, [](auto& r) { return r.starts_with("/endless"); }),
              2 * 11)
        << "ten redirects are followed";
    for (const char* address : {"file:///etc/passwd", "ftp://127.0.0.1/", "", "127.0.0.1"})
        expectFailure({.address = address}, "no address of the web");
    expectNoText(loader, "http:///127.0.0.1/x", "no address of the web");
    server->put("latin.css", "caf\xE9", "type=text/css;charset=iso-8859-1");
    expectNoText(loader, server->https("/latin.css"), "not UTF-8");

    // Who asks for it learns whether there was an answer at all.
    for (const char* path : {"/missing", "/broken", "/far", "/large"}) {
        const auto refusal =
            load({.address = server->http(path), .largestBody = 1000, .givesFailedAnswers = true});
        EXPECT_TRUE(refusal && refusal->hasFailed && refusal->body.empty()) << path;
    }
    EXPECT_FALSE(load({.address = server->http("/cut"), .givesFailedAnswers = true}));

    const auto start =
        load({.address = server->http("/large"), .largestBody = 1000, .cutsLongerBody = true});
    ASSERT_TRUE(start);
    EXPECT_EQ(start->body, std::string(1000, 'x'));
}

TEST_F(CurlUrlLoaderTest, TrustsWhoseNameAnAuthorityVouchesForAndNeverGoesBackToPlainText) {
    server->put("a.css", "content");
    server->put("down.css", "", "redirect=http:");
    server->put("there.css", "", "redirect=" + server->http("/down.css"));
    CurlUrlLoader strange;
    std::string otherName = server->https("/a.css");
    otherName.replace(otherName.find("127.0.0.1"), 9, "localhost");
    EXPECT_TRUE(load({.address = server->https("/a.css")}));
    expectNoText(strange, server->https("/a.css"), "SSL");
    expectNoText(loader, otherName, "SSL");
    expectNoText(loader, server->https("/down.css"), "a redirect to an insecure address");
    expectNoText(loader, server->https("/there.css"), "a redirect to an insecure address");
}

TEST_F(CurlUrlLoaderTest, WaitsForASilentServerNoLongerThanAskedAndNotAtAllOnceCancelled) {
    server->put("silent", "content", "hold");
    const std::string address = server->https("/silent");
    expectFailure({.address = address, .totalTime = 50ms}, "");
    expectFailure({.address = address, .stallTime = 1ms}, "no progress");

    const auto asked = [] { return server->requests().size(); };
    const std::size_t before = asked();
    CapturedLog log;
    std::stop_source stop;
    auto stopped = begin({.address = address, .stop = stop.get_token()});
    auto waiting = begin({.address = address});
    ASSERT_TRUE(eventually([&] { return asked() == before + 2; }));
    stop.request_stop();
    EXPECT_FALSE(stopped.get());
    EXPECT_EQ(waiting.wait_for(0s), std::future_status::timeout) << "only the one";
    loader.cancelAll();
    EXPECT_FALSE(waiting.get());
    EXPECT_FALSE(load({.address = address}));
    EXPECT_EQ(asked(), before + 2);
}

TEST_F(CurlUrlLoaderTest, ReachesNobodyOnTheUsersOwnNetworkForAStranger) {
    server->put("secret", "content");
    const std::string port = server->http("/secret").substr(std::string("http://127.0.0.1").size());
    const std::size_t before = server->requests().size();
    for (const char* host : {"127.0.0.1", "localhost", "2130706433", "0x7f.1", "[::ffff:7f00:1]"})
        expectFailure(
            {.address = std::string("http://").append(host).append(port), .publicHostsOnly = true},
            "not a host of the public internet");
    EXPECT_EQ(server->requests().size(), before);
    EXPECT_TRUE(load({.address = server->http("/secret")}));
}

TEST(PublicAddress, KnowsPrivateAndReservedOnesAlsoWithinOthers) {
    const auto isPublic = [](const std::string& text) {
        sockaddr_storage storage{};
        auto& ipv4 = reinterpret_cast<sockaddr_in&>(storage);
        auto& ipv6 = reinterpret_cast<sockaddr_in6&>(storage);
        if (::inet_pton(AF_INET, text.c_str(), &ipv4.sin_addr) == 1)
            storage.ss_family = AF_INET;
        else if (::inet_pton(AF_INET6, text.c_str(), &ipv6.sin6_addr) == 1)
            storage.ss_family = AF_INET6;
        return isPublicAddress(reinterpret_cast<const sockaddr&>(storage));
    };
    for (const char* address :
         {"8.8.8.8", "11.0.0.1", "100.128.0.1", "172.32.0.1", "192.169.0.1", "223.255.255.255",
          "2606:4700::1", "2a00::1", "::ffff:8.8.8.8", "64:ff9b::8.8.8.8", "2002:808:808::1"})
        EXPECT_TRUE(isPublic(address)) << address;
    for (const char* address :
         {"0.0.0.0",           "10.1.2.3",        "100.64.0.1",  "127.9.9.9",
          "169.254.169.254",   "172.31.255.255",  "192.168.1.1", "198.19.0.1",
          "224.0.0.1",         "255.255.255.255", "::",          "::1",
          "fe80::1",           "fd00::1",         "ff02::1",     "::ffff:192.168.1.1",
          "64:ff9b::10.0.0.1", "2002:a00:1::1",   "2001:0:1::1", "2001:db8::1",
          "::127.0.0.1",       "64:ff9b:1::1"})
        EXPECT_FALSE(isPublic(address)) << address;
}

/// The application with the real loader, compilers and threads; the server plays the site and
/// everyone else.
struct NetworkJourneyTest : NetworkTest, StandInMachine {
    NetworkJourneyTest() {
        standard.setValue(preferenceKeys::siteAddress, server->https());
        standard.setValue(preferenceKeys::fetchSiteIcons, false);
        application.styleList(); // read by nobody else here
    }
    ~NetworkJourneyTest() override {
        application.stopLoading();
        tasks.finish();
        application.finish();
        tasks.finish();
    }

    static std::string userCSS(const std::string& head, const std::string& code) {
        return "/* ==UserStyle==\n@version " + head + "@-moz-document domain(\"a.example\") {" +
               code + "}";
    }
    void import(const std::string& address) {
        std::optional<importSheetState> state;
        const auto ticket =
            application.urlImport().importClicked(address, [&](auto shown) { state = shown; });
        EXPECT_TRUE(eventually([&] { return state == importSheetState::finished; })) << address;
    }
    /// Opens the link and answers its question with Yes.
    void install(const std::string& link) {
        const std::size_t before = styles().size();
        alerts.answers.push_back({.button = 0});
        application.openLink("tessaril://" + link);
        EXPECT_TRUE(eventually([&] { return styles().size() == before + 1; })) << link;
    }
    liveDatabase::styleList styles() { return application.store().snapshot().styles; }
    std::string lastCSS() { return styles().back()->styleData.compSections.value().at(0).code; }
    std::vector<std::string> updateAll() {
        application.styleUpdates().updateAllClicked();
        EXPECT_TRUE(eventually([&] { return !application.styleUpdates().isRunning(); }));
        std::vector<std::string> statuses;
        for (const auto& row : application.styleList().styles())
            statuses.push_back(row->updateStatus);
        return statuses;
    }

    QtDispatcher tasks;
    JavaScriptCoreEngine engine;
    DirectoryResources compilers{TESSARIL_RESOURCES};
    Application application{{files, channel, alerts, tasks, standard, shared, engine, compilers,
                             compilerErrors, extension, externals, loader, pictures, records,
                             "/container", "", "/container/imports"}};
};

TEST_F(NetworkJourneyTest, InstallsAndUpdatesFromTheSiteFromFilesAndByLinks) {
    server->put("styles/chrome/12.json", siteDocument("Twelve"), "gzip");
    server->put("styles/chrome/34.json", siteDocument("Thirty-four"));
    server->put("a.user.css", userCSS("1\n==/UserStyle== */", "b {}"), "chunked");
    server->put("moved.css", "", "redirect=" + server->https("/a.user.css"));
    server->put("lib/colors.less", "@shade: #111;");
    server->put("lib/all.less", "@import \"colors.less\";\n.dark() { color: @shade; }");
    const std::string imported = "@import \"" + server->https("/lib/all.less") + "\";\n";
    server->put("dark.user.less", userCSS("1\n@preprocessor less\n@var text size \"Size\" 1\n"
                                          "==/UserStyle== */\n" +
                                              imported,
                                          "b { .dark(); width: @size }"));
    import(server->https("/styles/12/a-slug"));
    install("install/34/a=b");
    install("usercss/" + server->http("/moved.css"));
    import(" " + server->http("/dark.user.less") + "\n");
    EXPECT_THAT(server->requests(), Contains(StartsWith("/styles/chrome/34.json?a=b\t")));
    ASSERT_EQ(styles().size(), 4U);
    EXPECT_TRUE(styles()[0]->userstyleID == 12 && styles()[1]->userstyleID == 34);
    EXPECT_EQ(styles()[2]->styleData.name, "moved");
    EXPECT_EQ(styles()[3]->downloadedFrom, server->http("/dark.user.less"));
    EXPECT_THAT(lastCSS(), AllOf(HasSubstr("color: #111"), HasSubstr("width: 1")));

    server->put("lib/colors.less", "@shade: #222;");
    EXPECT_THAT(updateAll(), ElementsAre("error", "error", "noupdates", "updated"))
        << "the site's documents name no address here";
    EXPECT_THAT(lastCSS(), HasSubstr("color: #222")) << "what it imports counts, too";
    server->put("a.user.css", userCSS("2\n==/UserStyle== */", "i {}"));
    server->put("dark.user.less", userCSS("2\n==/UserStyle== */", "u {}"), "truncated");
    EXPECT_THAT(updateAll(), ElementsAre("error", "error", "updated", "error"));
    EXPECT_EQ(styles()[2]->styleData.sections.at(0).code, "i {}");
    EXPECT_TRUE(styles()[2]->version == "2" && styles()[3]->version == "1");
}

} // namespace
} // namespace tessaril
