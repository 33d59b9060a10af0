#include "support/test.h"
#include "web/record_address.h"

namespace tessaril {
namespace {

using parts = std::map<std::string, std::string, std::less<>>;

recordAddress parsed(const std::string& text) {
    const auto result = parseRecordAddress(text);
    const auto* address = std::get_if<recordAddress>(&result);
    EXPECT_TRUE(address) << text;
    return address ? *address : recordAddress{};
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
    EXPECT_EQ(std::get<recordAddressFault>(parseRecordAddress(" \n")), recordAddressFault::empty);
    for (const std::string text : {"styles.db",
                                   "~/styles.db",
                                   "/folder/",
                                   "sqlite:styles.db",
                                   "sqlite://a/b",
                                   "file://host/a",
                                   "file:///a%00b",
                                   "file:///a?mode=ro",
                                   "https://a/b",
                                   "postgresql:a",
                                   "postgresql://",
                                   "postgresql:///x",
                                   "postgresql://me@/x",
                                   "postgresql://a:b/x",
                                   "postgresql://a:0/x",
                                   "postgresql://a:65536/x",
                                   "postgresql://a:+1/x",
                                   "postgresql://[::1/x",
                                   "postgresql://[::1]x/x",
                                   "postgresql://a,b/x",
                                   "postgresql://me@home@a/x",
                                   "postgresql://me@a/x;password=secret",
                                   "postgresql://me@a/x&password=secret",
                                   "postgresql://me@a/x?user=me:secret",
                                   "postgres:/me:secret@a/x",
                                   "pgsql://me:secret@a/x",
                                   "host=a user=me password=secret",
                                   "postgresql://a/%FF",
                                   "postgresql://a/%0A",
                                   "postgresql://a/x?passfile=/b",
                                   "postgresql://a/x?service=b",
                                   "postgresql://a/x?options=-c%20statement_timeout=0",
                                   "postgresql://a/x?connect_timeout=0",
                                   "postgresql://a/x?sslmode=none",
                                   "postgresql://a/x?sslmode",
                                   "postgresql://a/x?host=b",
                                   "postgresql://a?host=b",
                                   "postgresql://a/x?sslmode=disable&sslmode=require"}) {
        const auto result = parseRecordAddress(text);
        const auto* fault = std::get_if<recordAddressFault>(&result);
        EXPECT_TRUE(fault && *fault == recordAddressFault::notUnderstood) << text;
    }
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
        EXPECT_EQ(std::get<recordAddressFault>(parseRecordAddress(text)),
                  recordAddressFault::holdsPassword)
            << text;
        EXPECT_EQ(withoutPassword(text), without);
        EXPECT_TRUE(std::holds_alternative<recordAddress>(parseRecordAddress(without))) << without;
    }
    const std::string hopeless = "postgresql://me:secret@a:b/x";
    EXPECT_EQ(std::get<recordAddressFault>(parseRecordAddress(hopeless)),
              recordAddressFault::holdsPassword);
    EXPECT_EQ(withoutPassword(hopeless), std::nullopt);
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

} // namespace
} // namespace tessaril
