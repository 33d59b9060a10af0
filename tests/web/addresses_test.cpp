#include "model/text.h"
#include "support/test.h"
#include "web/record_address.h"
#include "web/web_address.h"

namespace tessaril {
namespace {

using parts = std::map<std::string, std::string, std::less<>>;

recordAddress parsed(const std::string& text) {
    const auto result = parseRecordAddress(text);
    const auto* address = std::get_if<recordAddress>(&result);
    EXPECT_TRUE(address) << text;
    return address ? *address : recordAddress{};
}

std::optional<recordAddressFault> faultOf(std::string_view text) {
    const auto result = parseRecordAddress(text);
    const auto* fault = std::get_if<recordAddressFault>(&result);
    return fault ? std::optional(*fault) : std::nullopt;
}

std::string resolved(const std::string& base, const std::string& reference) {
    const auto parsed = parseWebAddress(base);
    const auto target = parsed ? resolvedAddress(*parsed, reference) : std::nullopt;
    return target ? target->text() : "none";
}

TEST(RecordAddress, TellsFilesFromServers) {
    EXPECT_EQ(parsed(" /a/my styles.db\n").file, "/a/my styles.db");
    EXPECT_EQ(parsed("sqlite:/a/100%.db").file, "/a/100%.db");
    EXPECT_EQ(parsed("SQLite:///a/b").file, "/a/b");
    EXPECT_EQ(parsed("file:///a/b%20c.db").file, "/a/b c.db");
    EXPECT_EQ(parsed("file:/a/b").file, "/a/b");
    EXPECT_EQ(parsed("postgresql://me%40home@db.example:5433/my%2Fstyles?sslmode=verify-full&"
                     "sslrootcert=/etc/my%20roots.pem")
                  .server,
              (parts{{"user", "me@home"},
                     {"host", "db.example"},
                     {"port", "5433"},
                     {"dbname", "my/styles"},
                     {"sslmode", "verify-full"},
                     {"sslrootcert", "/etc/my roots.pem"}}));
    EXPECT_EQ(parsed("postgres://me@[2001:db8::1]:5432/x").server,
              (parts{{"user", "me"}, {"host", "2001:db8::1"}, {"port", "5432"}, {"dbname", "x"}}));
    EXPECT_EQ(
        parsed("POSTGRES://me@/x?host=/run/postgresql&port=5433").server,
        (parts{{"user", "me"}, {"host", "/run/postgresql"}, {"port", "5433"}, {"dbname", "x"}}));
}

TEST(RecordAddress, LetsNothingThroughThatItDoesNotKnow) {
    EXPECT_EQ(faultOf(" \n"), recordAddressFault::empty);
    constexpr std::string_view unknown =
        "styles.db|~/styles.db|/folder/|sqlite:styles.db|sqlite://a/b|file://host/a|file:///a%00b|"
        "file:///a?mode=ro|https://a/b|postgresql:a|postgresql://|postgresql:///x|"
        "postgresql://me@/x|postgresql://a:b/x|postgresql://a:0/x|postgresql://a:65536/x|"
        "postgresql://a:+1/x|postgresql://[::1/x|postgresql://[::1]x/x|postgresql://a,b/x|"
        "postgresql://me@home@a/x|postgresql://me@a/x;password=secret|"
        "postgresql://me@a/x&password=secret|postgresql://me/secret@a/x|"
        "postgresql://me@a/x password:secret|postgresql://me@a/x?user=me:secret|"
        "postgres:/me:secret@a/x|pgsql://me:secret@a/x|host=a user=me password=secret|"
        "postgresql://a/%FF|postgresql://a/%0A|postgresql://a/x?passfile=/b|"
        "postgresql://a/x?service=b|postgresql://a/x?options=-c%20statement_timeout=0|"
        "postgresql://a/x?connect_timeout=0|postgresql://a/x?sslmode=none|"
        "postgresql://a/x?sslmode|postgresql://a/x?host=b|postgresql://a?host=b|"
        "postgresql://a/x?sslmode=disable&sslmode=require";
    for (const std::string_view text : split(unknown, "|"))
        EXPECT_EQ(faultOf(text), recordAddressFault::notUnderstood) << text;
}

TEST(RecordAddress, FindsAPasswordInAllItsHidingPlaces) {
    for (const auto& [text, without] : std::map<std::string, std::string>{
             {"postgresql://me:secret@a/x", "postgresql://me@a/x"},
             {"postgresql://me:@a/x", "postgresql://me@a/x"},
             {"Postgres://me:sec:r@t/@a:1/x?sslmode=require",
              "Postgres://me@a:1/x?sslmode=require"},
             {"postgresql://me:se?cret@a/x", "postgresql://me@a/x"},
             {"postgresql://me:s@e?c=@ret@a/x?sslmode=require&password=s",
              "postgresql://me@a/x?sslmode=require"},
             {"postgresql://me:secret@a/x?application_name=b@c",
              "postgresql://me@a/x?application_name=b@c"},
             {"postgresql://me@a/x?password=secret", "postgresql://me@a/x"},
             {"postgresql://me@a/x?p%61ssword=secret&sslmode=require&sslpassword=s",
              "postgresql://me@a/x?sslmode=require"}}) {
        EXPECT_EQ(faultOf(text), recordAddressFault::holdsPassword) << text;
        EXPECT_EQ(withoutPassword(text), without);
        EXPECT_EQ(faultOf(without), std::nullopt) << without;
    }
    const std::string hopeless = "postgresql://me:secret@a:b/x";
    EXPECT_EQ(faultOf(hopeless), recordAddressFault::holdsPassword);
    EXPECT_EQ(withoutPassword(hopeless), std::nullopt);
    for (const char* file : {"/me:secret@a/x", "sqlite:/me:secret@a", "file:///me:secret@a/x"})
        EXPECT_EQ(faultOf(file), recordAddressFault::holdsPassword) << file;
    EXPECT_EQ(parsed("/home/me:you@home/x").file, "/home/me:you@home/x");
    EXPECT_EQ(parsed("postgresql://me@a:1/x?application_name=b@c").server.at("user"), "me")
        << "which could be a password, were it not understood as it is";
}

TEST(RecordAddress, KnowsTheAccountAndWhetherANetworkLiesBetween) {
    EXPECT_EQ(accountOf(parsed("postgres://me%40x@[::1]:5433/s?sslmode=require")),
              "postgresql://me%40x@[::1]:5433/s");
    EXPECT_EQ(accountOf(parsed("postgresql://a")), "postgresql://a/");
    for (const std::string host : {"localhost", "LOCALHOST:1", "127.0.0.1", "127.1.2.3:5", "[::1]"})
        EXPECT_TRUE(isOnThisMachine(parsed("postgresql://" + host + "/x"))) << host;
    EXPECT_TRUE(isOnThisMachine(parsed("postgresql:///x?host=/run/postgresql")));
    for (const std::string host : {"db", "127.example", "128.0.0.1", "localhost.example", "[::2]"})
        EXPECT_FALSE(isOnThisMachine(parsed("postgresql://" + host + "/x"))) << host;
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
    for (const char* address : {"https://example.com", "https://a.b.example:443/x?y",
                                "HTTPS://EXAMPLE.COM./", "https://b\u00FCcher.example/"})
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
          "http://ai./", "http://xn--p1ai/", "http://evil\u3002example/"})
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
