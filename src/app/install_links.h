#pragma once

#include "import/imported_style.h"
#include "import/url_import.h"

#include <deque>
#include <functional>
#include <stop_token>
#include <string_view>

namespace tessaril {

/// Installs the styles that links of the application's scheme lead to, each after a question. Main
/// thread only.
class InstallLinks {
public:
    /// All outlive it.
    InstallLinks(importSurroundings surroundings, const UrlImport& urlImport,
                 const StyleSite& site);

    /// Fetches the style file whose address follows "usercss/" in the link, in the background, and
    /// asks whether to install it. A link without that text is ignored.
    void openUserCSS(std::string_view link);

    /// Fetches a style of the style-sharing site, in the background, and asks whether to install
    /// it, unless it is installed.
    /// - path: of the link, decoded. Its first component of digits alone is the style's number;
    ///   where there is none, the last number in it. What follows its second slash is handed to the
    ///   site. A path without a number, or with one below 1, is ignored.
    void openInstall(std::string_view path);

    /// Ends what is under way: nothing is asked and nobody told any more; for quitting.
    void stop();

private:
    /// Styles that arrive while a question is open wait for its answer.
    void offer(fetchedStyle fetched);
    void ask(fetchedStyle fetched);
    bool tellIfInstalled(std::int64_t userstyleID);

    importSurroundings machine;
    const UrlImport& urlImport;
    const StyleSite& site;
    std::stop_source stopAll;
    std::deque<fetchedStyle> waiting;
    bool isAsking = false;
};

} // namespace tessaril
