#include "import/style_site.h"
#include "model/text.h"
#include "support/test.h"
#include "support/url_machine.h"

namespace tessaril {
namespace {

struct StyleSiteTest : ::testing::Test, UrlMachine {};

TEST_F(StyleSiteTest, KnowsTheAddressesOfItsStyles) {
    stored.setValue(preferenceKeys::siteAddress, " https://styles42.example:8443/ ");
    EXPECT_EQ(site.hostName(), "styles42.example:8443");
    const std::string base = "https://styles42.example:8443/styles/chrome/";
    for (const auto& [address, id, json] :
         std::vector<std::tuple<std::string, std::optional<std::int64_t>, std::string>>{
             {"https://styles42.example:8443/styles/1234/night-2", 1234, base + "1234.json"},
             {"http://www.styles42.example:8443/styles/x7y8", 7, base + "7.json"},
             {"https://www.styles42.example:8443/styles/?99999999999999999999&5", 5,
              base + "5.json"},
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

TEST_F(StyleSiteTest, TellsWhyItGivesNoStyle) {
    const auto errorAt = [this](const std::string& page) {
        const auto loaded = site.loadStyle("https://site.example" + page);
        const auto* error = std::get_if<ImportErrors>(&loaded);
        return error ? std::optional(*error) : std::nullopt;
    };
    serveSiteStyle("1", "Night");
    EXPECT_EQ(errorAt("/styles/1/night"), std::nullopt);
    EXPECT_EQ(errorAt("/styles/2"), ImportErrors::CouldNotConnect);
    EXPECT_EQ(errorAt("/styles/night"), ImportErrors::InvalidURL);
    serveSiteStyle("3", "caf\xE9");
    EXPECT_EQ(errorAt("/styles/3"), ImportErrors::CouldNotDecode);
    serve("https://site.example/styles/chrome/4.json",
          replacingAll(siteDocument("A"), "originalMd5", "other"));
    EXPECT_EQ(errorAt("/styles/4"), ImportErrors::CouldNotDecode);
    EXPECT_EQ(site.fetchSiteStyleJSON("https://site.example/styles/4"), std::nullopt);
}

} // namespace
} // namespace tessaril
