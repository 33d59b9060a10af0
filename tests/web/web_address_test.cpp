#include "model/text.h"
#include "support/test.h"
#include "web/web_address.h"

namespace tessaril {
namespace {

std::string resolved(const std::string& base, const std::string& reference) {
    const auto parsed = parseWebAddress(base);
    const auto target = parsed ? resolvedAddress(*parsed, reference) : std::nullopt;
    return target ? target->text() : "none";
}

TEST(WebAddress, ResolvesReferencesAsTheStandardsExamplesDo) {
    // A reference, and the address without its "http://".
    constexpr std::string_view examples =
        "g a/b/c/g|./g a/b/c/g|g/ a/b/c/g/|/g a/g|//g g|?y a/b/c/d;p?y|g?y a/b/c/g?y|"
        "#s a/b/c/d;p?q|g?y#s a/b/c/g?y|;x a/b/c/;x| a/b/c/d;p?q|. a/b/c/|.. a/b/|../g a/b/g|"
        "../.. a/|../../../../g a/g|/../g a/g|g. a/b/c/g.|./g/. a/b/c/g/|g;x=1/../y a/b/c/y|"
        "g?y/../x a/b/c/g?y/../x";
    for (const std::string_view example : split(examples, "|")) {
        const std::size_t space = example.find(' ');
        EXPECT_EQ(resolved("http://a/b/c/d;p?q", std::string(example.substr(0, space))),
                  "http://" + std::string(example.substr(space + 1)));
    }
    EXPECT_EQ(resolved("https://a", "i.png"), "https://a/i.png");
    EXPECT_EQ(resolved("https://a/", " \n my \"i\xC3\xBC.png "), "https://a/my%20%22i%C3%BC.png");
    for (const char* none :
         {"data:image/png;base64,AA", "javascript:x()", "https:x", "//", "//a b"})
        EXPECT_EQ(resolved("https://a/", none), "none") << none;
    for (const char* none : {"", "a", "https://", "https://a b/", "https://a/\"", "ftp://a/",
                             "https:///x", "https://a:b/", "https://a\xFF/", "https://*.\n/"})
        EXPECT_FALSE(parseWebAddress(none)) << none;
}

TEST(WebAddress, KnowsWhereAStyleMustNotLead) {
    const auto isPublic = [](const std::string& text) {
        const auto address = parseWebAddress(text);
        return address && isPublicSite(*address);
    };
    for (const char* address :
         {"https://example.com", "https://a.b.example:443/x?y", "HTTPS://EXAMPLE.COM./",
          "https://b\xC3\xBC"
          "cher.example/"})
        EXPECT_TRUE(isPublic(address)) << address;
    for (const char* address :
         {"http://example.com/", "https://localhost/", "https://router/", "https://a.localhost./",
          "https://printer.local/", "https://x.LAN/", "https://10.0.0.1/", "https://8.8.8.8/",
          "https://0x7f.1/", "https://a.2130706433/", "https://127.0.0.0x1/", "https://[::1]/",
          "https://example.com:8443/", "https://me@example.com/", "https://example.com@10.0.0.1/"})
        EXPECT_FALSE(isPublic(address)) << address;

    const auto isOwn = [](const std::string& text) {
        return isOnOwnNetwork(parseWebAddress(text).value());
    };
    for (const char* address :
         {"http://localhost:8000/x", "http://router/", "http://A.LAN./", "http://127.0.0.1:1/",
          "http://10.1.2.3/", "http://172.31.0.1/", "http://192.168.0.1/", "http://169.254.1.1/",
          "http://[::1]:80/", "http://[fe80::1]/", "http://[fd00::1]/"})
        EXPECT_TRUE(isOwn(address)) << address;
    for (const char* address :
         {"http://example.com/", "http://8.8.8.8/", "http://172.32.0.1/", "http://134744072/",
          "http://127.1/", "http://010.0.0.1/", "http://0x7f000001/", "http://127.0.0.1.example/",
          "http://[2606:4700::1]/", "http://[fd::1]/", "http://evil.8.8.8.8.in-addr.arpa/",
          "http://ai./", "http://xn--p1ai/",
          "http://evil\xE3\x80\x82"
          "example/"})
        EXPECT_FALSE(isOwn(address)) << address;
}

TEST(WebAddress, NamesItsFile) {
    for (const auto& [address, name] : std::map<std::string, std::string>{
             {"https://a/b/dark.user.css?c=d.e", "dark.user"},
             {"https://a/b/.css/", ".css"},
             {"https://a/%C3%BC%20x%0A@version%2010.css", "\xC3\xBC x @version 10"},
             {"https://a/%20.css", ""},
             {"https://a/%FF.css", ""},
             {"https://a/", ""}})
        EXPECT_EQ(fileNameOf(parseWebAddress(address).value()), name) << address;
}

} // namespace
} // namespace tessaril
