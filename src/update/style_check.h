#pragma once

#include "import/style_site.h"
#include "model/style_container.h"
#include "model/style_making.h"
#include "platform/url_loader.h"
#include "store/style_store.h"

#include <functional>
#include <optional>
#include <stop_token>
#include <variant>

// The check of one style for a newer version. A style of the style-sharing site is compared by the
// checksum of its code; one that was installed as UserCSS is downloaded and read again.
namespace tessaril {

/// Where the two ways of checking a UserCSS style differ; all else they share.
struct checkManner {
    bool asksUpdateAddress;   ///< where the style names one; else only where it was installed from
    bool namesByAddress;      ///< a text that gives no name
    bool comparesWholeData;   ///< `styleData` beside the version; else its sections as written
    bool keepsVariableValues; ///< those that the user set
    bool savesAtOnce;
};

/// The check from a row of the list, and that of all rows.
inline constexpr checkManner rowCheck{.asksUpdateAddress = true,
                                      .namesByAddress = true,
                                      .comparesWholeData = true,
                                      .keepsVariableValues = true,
                                      .savesAtOnce = true};
/// The check of every style in a sheet, which saves when it closes.
inline constexpr checkManner sheetCheck{.asksUpdateAddress = false,
                                        .namesByAddress = false,
                                        .comparesWholeData = false,
                                        .keepsVariableValues = false,
                                        .savesAtOnce = false};

/// What a check works with. All outlive it.
struct checkSurroundings {
    const StyleSite& site;
    UrlLoader& loader;
    /// Gives what compiles in one check. It fetches anew what the code imports, each file once.
    std::function<QuietCompile()> newCompile;
};

enum class checkOutcome {
    updated,
    upToDate,
    error,
    nothingToCheck, ///< the style has no address, or is not there any more
    outdated,       ///< the style was changed meanwhile; nothing is known of what it is now
};

/// What a check has found, before anything is changed.
struct checkResult {
    checkOutcome outcome = checkOutcome::error;
    /// Of an update: the site's document, or the whole style.
    std::variant<std::monostate, styleJSON, styleContainer> newer = {};
    /// Tells of the compiler's errors; may be empty.
    std::function<void()> tellErrors = {};
};

/// Looks for a newer version. Waits for the network, never on the main thread; holds no lock and
/// changes nothing.
/// - stored: as it is installed
/// - stop: ends it; what it gives then is of no use
checkResult checkStyle(const styleContainer& stored, const checkManner& manner,
                       const checkSurroundings& machine, std::stop_token stop);

/// Puts a newer version in place, if the style is still there and still of the same source, and
/// tells of the compiler's errors; otherwise it is as if nothing had been checked. A version of a
/// style that was edited or updated meanwhile is not put in place, but `outdated`. Main thread
/// only.
/// - stored: what was checked
checkOutcome landCheck(StyleStore& store, const styleContainer& stored, checkResult result,
                       const checkManner& manner);

} // namespace tessaril
