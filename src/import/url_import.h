#pragma once

#include "import/imported_style.h"
#include "import/style_site.h"
#include "platform/url_loader.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>

namespace tessaril {

/// An alert that is yet to be shown.
struct alertMessage {
    std::string title;
    std::string text;

    bool operator==(const alertMessage&) const = default;
};

/// That a style is there already.
alertMessage duplicateStyleAlert(std::string_view name);

/// What an address gave. Nobody has been told of anything yet.
struct fetchedStyle {
    std::optional<styleContainer> style = std::nullopt;
    /// Tells of the compiler's errors, for when the style is taken; may be empty.
    std::function<void()> tellErrors = {};
    /// Why there is no style, or what the user should know of it. There may be neither.
    std::optional<alertMessage> alert = std::nullopt;
};

/// Where the address of a style file was given.
enum class addressOrigin {
    sheet,
    link, ///< an install link: plain CSS is all that lacks "@-moz-document", and keeps its own name
};

/// What the import sheet shows.
enum class importSheetState { idle, working, failed, finished };

/// Makes a style of what is at an address that the user gave: a style page of the style-sharing
/// site, or a style file. Main thread only, except for what says otherwise.
class UrlImport {
public:
    /// All outlive it.
    UrlImport(importSurroundings surroundings, UrlLoader& loader, const StyleSite& site);

    /// Loads the style of the site whose page or document has this address. None where one of its
    /// number is installed. Waits for the network: on background threads only.
    fetchedStyle importSiteStyle(std::string_view address, std::stop_token stop = {}) const;

    /// Loads a CSS, Less or Stylus file and reads it as a style, which is named after the file
    /// where its text names none. Waits for the network: on background threads only.
    fetchedStyle fetchStyleFromURL(std::string_view address, addressOrigin origin,
                                   std::stop_token stop = {}) const;

    /// Whether the sheet may open; not while the list is locked for sync, which beeps.
    bool mayBegin();

    /// Whether the import button is enabled: the address is not blank.
    static bool canImport(std::string_view address);

    /// The address that the text of the clipboard consists of; empty for any other text.
    static std::string addressInClipboard(std::string_view text);

    /// Whoever has started an import keeps this; without it the import stops loading, adds nothing,
    /// tells nobody and calls nobody any more.
    using Ticket = std::shared_ptr<const void>;

    /// Fetches the style in the background. Then, on the main thread, appends it to the database,
    /// or tells why not, and calls `done` with what the sheet shows next: `finished` for a style
    /// that was added, `idle` for one that is there already or while the list is locked for sync,
    /// which beeps, `failed` where there is no style.
    [[nodiscard]] Ticket importClicked(std::string_view address,
                                       std::function<void(importSheetState)> done);

    /// Ends all imports as if their tickets were gone, later ones too; for quitting.
    void stop();

private:
    struct session;

    fetchedStyle fetch(std::string_view address, std::stop_token stop) const;
    void finish(fetchedStyle fetched, const std::function<void(importSheetState)>& done);
    bool isInstalled(const styleContainer& style) const;
    void show(const std::optional<alertMessage>& alert) const;

    importSurroundings machine;
    UrlLoader& loader;
    const StyleSite& site;
    std::stop_source stopAll;
};

/// The installed style of that number of the site; null when there is none.
std::shared_ptr<const styleContainer> findSiteStyle(StyleStore& store, std::int64_t userstyleID);

} // namespace tessaril
