#include "desktop/curl_url_loader.h"
#include "desktop/public_address.h"
#include "support/captured_log.h"
#include "support/event_loop.h"
#include "support/loopback_server.h"
#include "support/style_site_server.h"
#include "web/loaded_text.h"

#include <QByteArray>

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>

namespace tessaril {
namespace {

using namespace testing;
using namespace std::chrono_literals;
using ::testing::EndsWith, ::testing::HasSubstr, ::testing::IsEmpty, ::testing::Not,
    ::testing::StartsWith;

std::string compressed(const std::string& text) {
    return qCompress(QByteArray::fromStdString(text)).mid(4).toStdString(); // a length comes first
}

class CurlUrlLoaderTest : public ::testing::Test {
protected:
    std::future<std::optional<urlResponse>> begin(urlRequest request) {
        return std::async(std::launch::async, [this, request] { return loader.load(request); });
    }
    std::optional<urlResponse> load(const urlRequest& request) { return begin(request).get(); }

    void expectFailure(const urlRequest& request, const std::string& reason) {
        CapturedLog log;
        EXPECT_FALSE(load(request)) << request.address;
        EXPECT_THAT(log.take(), HasSubstr("Error loading " + request.address + ": " + reason));
    }

    CurlUrlLoader loader;
};

TEST_F(CurlUrlLoaderTest, GivesWholeBodiesAndWhereTheyCameFrom) {
    const std::string zip = "Content-Encoding: deflate\r\nContent-Type: text/css\r\n";
    const LoopbackServer server({{"/zip", LoopbackServer::withLength(compressed("content"), zip)},
                                 {"/first", LoopbackServer::redirect("second?x=1")},
                                 {"/second?x=1", LoopbackServer::redirect("/zip")}});
    const auto response = load({.address = server.address("/first"), .mostRedirects = 2});
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "content");
    EXPECT_EQ(response->contentType, "text/css");
    EXPECT_EQ(response->finalAddress, server.address("/zip"));
    EXPECT_THAT(server.requests().at(2), HasSubstr("User-Agent: Tessaril/"));
    EXPECT_THAT(server.requests().at(2), Not(HasSubstr("Cookie")));
}

TEST_F(CurlUrlLoaderTest, TakesTrailersAndTheBodiesOfRedirectsForNothing) {
    const LoopbackServer server(
        {{"/chunks", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\nTrailer: X-Sum\r\n"
                     "Connection: close\r\n\r\n4\r\nbody\r\n0\r\nX-Sum: 1\r\n\r\n"},
         {"/moved", LoopbackServer::withLength(std::string(5'000'000, 'x'), "Location: /chunks\r\n",
                                               "302 Found")}});
    for (const char* path : {"/chunks", "/moved"}) {
        const auto response = load({.address = server.address(path), .largestBody = 4});
        ASSERT_TRUE(response) << path;
        EXPECT_EQ(response->body, "body");
    }
}

TEST_F(CurlUrlLoaderTest, RefusesWhatIsNotAWholeAnswerOfTheKindAskedFor) {
    const LoopbackServer server(
        {{"/missing", LoopbackServer::withLength("text", "", "404 Not Found")},
         {"/broken", LoopbackServer::withLength("text", "", "500 Oh")},
         {"/endless", LoopbackServer::redirect("/endless")},
         {"/file", LoopbackServer::redirect("file:///etc/passwd")},
         {"/script", LoopbackServer::redirect("javascript:1")},
         {"/far", LoopbackServer::redirect("/" + std::string(9000, 'a'))},
         {"/closed", "HTTP/1.1 200 OK\r\nContent-Le"},
         {"/short", "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nfive."},
         {"/huge", LoopbackServer::withLength(std::string(5'000'000, 'x'))},
         {"/bomb", LoopbackServer::withLength(compressed(std::string(5'000'000, 'x')),
                                              "Content-Encoding: deflate\r\n")}});
    for (const auto& [path, reason] :
         std::map<std::string, std::string>{{"/missing", "status 404"},
                                            {"/broken", "status 500"},
                                            {"/endless", "too many redirects"},
                                            {"/file", ""},
                                            {"/script", "a redirect that leads off the web"},
                                            {"/far", "a redirect to an overlong address"},
                                            {"/closed", "the answer is cut short"},
                                            {"/short", ""},
                                            {"/huge", "a body of more than 1000 bytes"},
                                            {"/bomb", "a body of more than 1000 bytes"}})
        expectFailure({.address = server.address(path), .largestBody = 1000}, reason);
    EXPECT_EQ(server.requests().size(), 10U + 10) << "ten redirects are followed";
    for (const char* address : {"file:///etc/passwd", "ftp://127.0.0.1/", "", "127.0.0.1"})
        expectFailure({.address = address}, "no address of the web");

    // Who asks for it learns whether there was an answer at all.
    for (const char* path : {"/missing", "/broken", "/far", "/huge"}) {
        const auto refusal = load(
            {.address = server.address(path), .largestBody = 1000, .givesFailedAnswers = true});
        EXPECT_TRUE(refusal && refusal->hasFailed && refusal->body.empty()) << path;
    }
    EXPECT_FALSE(load({.address = server.address("/closed"), .givesFailedAnswers = true}));

    const auto start =
        load({.address = server.address("/huge"), .largestBody = 1000, .cutsLongerBody = true});
    ASSERT_TRUE(start);
    EXPECT_EQ(start->body, std::string(1000, 'x'));
}

TEST_F(CurlUrlLoaderTest, KeepsALinesLengthAndCharactersInTheLogInBounds) {
    std::string address = "ftp://\x1B[2J\n\xC2\x9B\xFF";
    while (address.size() < 1'000'000)
        address += "\xE2\x82\xAC";
    CapturedLog log;
    EXPECT_FALSE(load({.address = address}));
    const std::string line = log.take();
    EXPECT_THAT(line, StartsWith("Error loading ftp://?[2J???\xEF\xBF\xBD\xE2\x82\xAC"));
    EXPECT_THAT(line, EndsWith("\xE2\x82\xAC...: no address of the web\n"));
    EXPECT_LT(line.size(), 400U);
}

TEST_F(CurlUrlLoaderTest, WaitsForASilentServerNoLongerThanAskedAndNotAtAllOnceCancelled) {
    const LoopbackServer server({});
    expectFailure({.address = server.address("/silent"), .totalTime = 50ms}, "");
    expectFailure({.address = server.address("/silent"), .stallTime = 1ms}, "no progress");

    CapturedLog log;
    auto waiting = begin({.address = server.address("/silent")});
    ASSERT_TRUE(eventually([&] { return server.requests().size() == 3; }));
    loader.cancelAll();
    EXPECT_FALSE(waiting.get());
    EXPECT_FALSE(load({.address = server.address("/silent")}));
    EXPECT_EQ(server.requests().size(), 3U);
}

TEST_F(CurlUrlLoaderTest, ReachesNobodyOnTheUsersOwnNetworkForAStranger) {
    const LoopbackServer server({{"/", LoopbackServer::withLength("secret")}});
    for (const char* host : {"127.0.0.1", "localhost", "2130706433", "0x7f.1", "[::ffff:7f00:1]"})
        expectFailure({.address = server.address("/", host), .publicHostsOnly = true},
                      "not a host of the public internet");
    EXPECT_THAT(server.requests(), IsEmpty());
    EXPECT_TRUE(load({.address = server.address("/")}));
}

TEST(CurlUrlLoaderOverTLS, TrustsWhoseNameAnAuthorityVouchesForAndNeverGoesBackToPlainText) {
    StyleSiteServer server;
    server.put("a.css", "\xEF\xBB\xBF content", "gzip");
    server.put("chunks.css", "chunks", "chunked");
    server.put("latin.css", "caf\xE9");
    server.put("up.css", "", "redirect=" + server.https("/a.css"));
    server.put("loop.css", "", "redirect=https:");
    server.put("down.css", "", "redirect=http:");
    server.put("there.css", "", "redirect=" + server.http("/down.css"));
    for (const char* path : {"half.css", "longer.css", "closed.css", "huge.css"})
        server.put(path, std::string(10'000, 'x'));
    server.put("half.css.how", "truncated");
    server.put("longer.css.how", "longer");
    server.put("closed.css.how", "closed");
    server.put("huge.css.how", "huge");

    CurlUrlLoader trusting(server.certificateAuthorities());
    CurlUrlLoader strange;
    const auto load = [](CurlUrlLoader& loader, const std::string& address) {
        return std::async(std::launch::async,
                          [&] { return loadText(loader, {.address = address}); })
            .get();
    };
    EXPECT_EQ(load(trusting, server.https("/a.css")), " content");
    EXPECT_EQ(load(trusting, server.https("/chunks.css")), "chunks");
    EXPECT_EQ(load(trusting, server.http("/up.css")), " content");
    std::string name = server.https("/a.css");
    name.replace(name.find("127.0.0.1"), 9, "localhost");
    const auto expectFailure = [&](CurlUrlLoader& loader, const std::string& address,
                                   const std::string& reason) {
        CapturedLog log;
        EXPECT_EQ(load(loader, address), std::nullopt);
        const std::string line = log.take();
        EXPECT_THAT(line, HasSubstr("Error loading " + address + ": " + reason));
        EXPECT_EQ(std::ranges::count(line, '\n'), 1);
    };
    expectFailure(strange, server.https("/a.css"), "SSL");
    expectFailure(trusting, name, "SSL");
    expectFailure(trusting, server.https("/down.css"), "a redirect to an insecure address");
    expectFailure(trusting, server.https("/there.css"), "a redirect to an insecure address");
    expectFailure(trusting, server.https("/loop.css"), "too many redirects");
    expectFailure(trusting, server.https("/latin.css"), "not UTF-8");
    expectFailure(trusting, server.https("/half.css"), "");
    expectFailure(trusting, server.https("/longer.css"), "");
    expectFailure(trusting, server.https("/closed.css"), "");
    expectFailure(trusting, server.https("/huge.css"), "a body of more than 33554432 bytes");
    expectFailure(trusting, server.https("/none.css"), "status 404");
    expectFailure(trusting, "no address", "no address of the web");
}

TEST(CurlUrlLoaderOverTLS, EndsOneRequestAlone) {
    StyleSiteServer server;
    server.put("held.css", "content", "hold");
    CurlUrlLoader loader(server.certificateAuthorities());
    std::stop_source stop;
    const auto begin = [&](std::stop_token token) {
        return std::async(std::launch::async, [&, token] {
            return loadText(loader, {.address = server.https("/held.css"), .stop = token});
        });
    };
    CapturedLog log;
    auto stopped = begin(stop.get_token());
    auto waiting = begin({});
    ASSERT_TRUE(eventually([&] { return server.requests().size() == 2; }));
    stop.request_stop();
    EXPECT_EQ(stopped.get(), std::nullopt);
    server.release();
    EXPECT_EQ(waiting.get(), "content");
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

} // namespace
} // namespace tessaril
