#include "import/url_import.h"

#include "formats/moz_document.h"
#include "formats/user_css_reader.h"
#include "less_imports/importing_compiler.h"
#include "model/text.h"
#include "web/loaded_text.h"
#include "web/web_address.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tessaril {

namespace {

constexpr const char* connectTitle = "Error Getting Style";
constexpr const char* connectText =
    "There was an error getting the style at the URL requested. Either the URL didn't contain a "
    "valid style, or there is a problem with your network connection.";
constexpr const char* decodeTitle = "JSON Error";
constexpr const char* decodeText = "There was an error parsing the style at the URL provided.";
constexpr const char* unsupportedTitle = "Unsupported URL";
constexpr const char* unsupportedText =
    "The URL provided is either invalid or not currently supported.";
constexpr const char* duplicateTitle = "Duplicate Style";
constexpr const char* noRulesTitle = "CSS File Imported With No Rules";
constexpr const char* noRulesText =
    "The style at the URL provided does not have any defined rules for where it should be applied. "
    "If you do not define these rules, the style will be applied to all sites.";

constexpr std::array<std::string_view, 3> fileEndings = {".css", ".styl", ".less"};

alertMessage alertFor(ImportErrors error) {
    switch (error) {
    case ImportErrors::CouldNotConnect:
        return {connectTitle, connectText};
    case ImportErrors::CouldNotDecode:
        return {decodeTitle, decodeText};
    case ImportErrors::InvalidURL:
        break;
    }
    return {unsupportedTitle, unsupportedText};
}

bool namesStyleFile(std::string_view address) {
    return std::ranges::any_of(
        fileEndings, [address](std::string_view ending) { return contains(address, ending); });
}

bool isPlain(std::string_view text, addressOrigin origin) {
    if (contains(text, mozDocumentKeyword)) return false;
    return origin == addressOrigin::link || !contains(text, metadataOpening);
}

/// A style needs a name: an address that names no file leaves it what it has.
void nameAfterFile(styleContainer& style, std::string_view address) {
    const auto parsed = webAddressFrom(address);
    std::string name = parsed ? fileNameOf(*parsed) : std::string();
    if (!name.empty()) style.styleData.name = std::move(name);
}

} // namespace

alertMessage duplicateStyleAlert(std::string_view name) {
    return {duplicateTitle, "The style \"" + std::string(name) + "\" is already installed."};
}

std::shared_ptr<const styleContainer> findSiteStyle(StyleStore& store, std::int64_t userstyleID) {
    const liveDatabase live = store.snapshot();
    const auto found = std::ranges::find_if(
        live.styles, [&](const auto& style) { return style->userstyleID == userstyleID; });
    return found == live.styles.end() ? nullptr : *found;
}

/// One import. It ends with its ticket, and with all of them.
struct UrlImport::session {
    explicit session(std::stop_token all)
        : withAll(std::move(all), [this] { stop.request_stop(); }) {}
    ~session() { stop.request_stop(); }
    session(const session&) = delete;
    session& operator=(const session&) = delete;

    std::stop_source stop;
    std::stop_callback<std::function<void()>> withAll;
};

UrlImport::UrlImport(importSurroundings surroundings, UrlLoader& urlLoader,
                     const StyleSite& styleSite)
    : machine(std::move(surroundings)), loader(urlLoader), site(styleSite) {}

fetchedStyle UrlImport::importSiteStyle(std::string_view address, std::stop_token stop) const {
    std::variant<styleJSON, ImportErrors> loaded;
    machine.dispatcher.whileWaiting([&] { loaded = site.loadStyle(address, stop); });
    if (const auto* error = std::get_if<ImportErrors>(&loaded)) return {.alert = alertFor(*error)};
    auto& data = std::get<styleJSON>(loaded);
    const std::int64_t id = site.siteStyleID(address).value_or(noUserstyleID);
    if (id > 0 && findSiteStyle(machine.store, id))
        return {.alert = duplicateStyleAlert(data.name)};
    return {.style = makeStyleContainer(std::move(data), sourceSite, id,
                                        machine.making.generateUniqueID())};
}

fetchedStyle UrlImport::fetchStyleFromURL(std::string_view address, addressOrigin origin,
                                          std::stop_token stop) const {
    if (!namesStyleFile(address)) return {.alert = alertFor(ImportErrors::InvalidURL)};
    const std::string asked(address);
    std::optional<loadedText> loaded;
    machine.dispatcher.whileWaiting(
        [&] { loaded = loadText(loader, {.address = asked, .stop = stop}); });
    if (!loaded) return {.alert = alertFor(ImportErrors::CouldNotConnect)};
    if (stop.stop_requested()) return {}; // nothing is compiled for nobody

    if (isPlain(loaded->text, origin)) {
        styleContainer style = plainStyle(std::move(loaded->text), machine.making);
        if (origin == addressOrigin::sheet) nameAfterFile(style, address);
        return {.style = std::move(style), .alert = alertMessage{noRulesTitle, noRulesText}};
    }
    const auto addOrigin = [&](styleContainer& style) {
        style.downloadedFrom = asked;
        keepFromOwnNetwork(style, asked, loaded->address);
    };
    quietlyRead read = parseQuietly(loaded->text, machine, addOrigin);
    if (!read.style) return {};
    addOrigin(*read.style);
    if (read.style->styleData.name == defaultStyleName) nameAfterFile(*read.style, address);
    return {.style = std::move(read.style), .tellErrors = std::move(read.tellErrors)};
}

bool UrlImport::mayBegin() {
    if (machine.list.isLockedForSync()) machine.alerts.beep();
    return !machine.list.isLockedForSync();
}

bool UrlImport::canImport(std::string_view address) {
    return !trimmed(address).empty();
}

std::string UrlImport::addressInClipboard(std::string_view text) {
    const std::string_view address = trimmed(text);
    // A text that merely begins with an address has blanks in it, which a parser encodes.
    return parseWebAddress(address) ? std::string(address) : std::string();
}

UrlImport::Ticket UrlImport::importClicked(std::string_view address,
                                           std::function<void(importSheetState)> done) {
    auto ticket = std::make_shared<session>(stopAll.get_token());
    machine.dispatcher.inBackground(
        taskPriority::background,
        [this, address = std::string(trimmed(address)), stop = ticket->stop.get_token(),
         done = std::move(done)]() mutable {
            if (stop.stop_requested()) return;
            machine.dispatcher.onMain(
                [this, fetched = fetch(address, stop), stop, done = std::move(done)]() mutable {
                    if (!stop.stop_requested()) finish(std::move(fetched), done);
                });
        });
    return ticket;
}

void UrlImport::stop() {
    stopAll.request_stop();
}

fetchedStyle UrlImport::fetch(std::string_view address, std::stop_token stop) const {
    const std::string host = site.hostName();
    if (!host.empty() && contains(address, host)) return importSiteStyle(address, std::move(stop));
    return fetchStyleFromURL(address, addressOrigin::sheet, std::move(stop));
}

void UrlImport::finish(fetchedStyle fetched, const std::function<void(importSheetState)>& done) {
    if (!fetched.style) {
        show(fetched.alert);
        return done(importSheetState::failed);
    }
    if (isInstalled(*fetched.style)) {
        show(duplicateStyleAlert(fetched.style->styleData.name));
        return done(importSheetState::idle);
    }
    if (!mayBegin()) return done(importSheetState::idle);
    appendImportedStyle(machine, std::move(*fetched.style));
    done(importSheetState::finished);
    if (fetched.tellErrors) fetched.tellErrors();
    show(fetched.alert);
}

/// A style of the site may have come by another way while this one was loaded.
bool UrlImport::isInstalled(const styleContainer& style) const {
    if (style.userstyleID > 0 && findSiteStyle(machine.store, style.userstyleID)) return true;
    return machine.store.isDuplicateStyle(style);
}

void UrlImport::show(const std::optional<alertMessage>& alert) const {
    if (alert) machine.alerts.showAlert(alert->title, alert->text);
}

} // namespace tessaril
