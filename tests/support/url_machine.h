#pragma once

#include "import/url_import.h"
#include "preferences/preference_keys.h"
#include "support/import_machine.h"
#include "support/map_url_loader.h"

#include <string>

namespace tessaril::testing {

/// A style as the style-sharing site gives it.
inline std::string siteDocument(const std::string& name) {
    return R"({"url":"","updateUrl":"","md5Url":"","originalMd5":"","name":")" + name +
           R"(","sections":[{"urls":[],"urlPrefixes":[],"domains":["a.example"],"regexps":[],)"
           R"("code":"b {}"}]})";
}

/// What imports by address need: a network in memory, and the site in it.
struct UrlMachine : ImportMachine {
    UrlMachine() { stored.setValue(preferenceKeys::siteAddress, "https://site.example"); }

    void serve(const std::string& address, const std::string& body) {
        urls.responses[address].body = body;
    }
    void serveSiteStyle(const std::string& number, const std::string& name) {
        serve("https://site.example/styles/chrome/" + number + ".json", siteDocument(name));
    }

    MapUrlLoader urls;
    StyleSite site{urls, preferences};
    UrlImport urlImport{importing(), urls, site};
};

} // namespace tessaril::testing
