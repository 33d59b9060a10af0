#include "app/install_links.h"

#include "model/ascii.h"
#include "model/log.h"
#include "model/text.h"

#include <algorithm>
#include <string>
#include <utility>

namespace tessaril {

namespace {

constexpr std::string_view userCSSMark = "usercss/";

constexpr std::string_view installErrorTitle = "Error Installing Style";
constexpr std::string_view installErrorText =
    "There was an error installing the style from the URL provided.";
constexpr const char* questionText =
    "A URL is trying to install a style. Would you like to allow this?";

/// Whether the host of an address may hold `c` (RFC 3986): unreserved, sub-delims, "[", "]", ":".
bool isHostCharacter(char c) {
    constexpr std::string_view others = "-._~!$&'()*+,;=[]:";
    return isASCIIDigit(c) || isASCIILetter(c) || others.find(c) != std::string_view::npos;
}

std::string encodedForHost(std::string_view text) {
    std::string encoded;
    for (const char c : text) {
        if (isHostCharacter(c))
            encoded += c;
        else
            appendPercentEncoded(encoded, c);
    }
    return encoded;
}

std::optional<std::int64_t> styleNumberIn(std::string_view path) {
    for (const std::string_view component : split(path, "/")) {
        if (component.empty() || !std::ranges::all_of(component, isASCIIDigit)) continue;
        if (const auto number = parseInteger(component)) return number;
    }
    const auto numbers = numbersIn(path);
    return numbers.empty() ? std::nullopt : std::optional(numbers.back());
}

/// What the link wants the site to know; empty for nothing.
std::string queryIn(std::string_view path, std::int64_t number) {
    std::string_view named = path;
    while (named.ends_with('/'))
        named.remove_suffix(1);
    if (named.substr(named.rfind('/') + 1) == std::to_string(number)) return {};
    const std::size_t second = path.find('/', 1);
    return second == std::string_view::npos ? "" : encodedForHost(path.substr(second + 1));
}

} // namespace

InstallLinks::InstallLinks(importSurroundings surroundings, const UrlImport& importer,
                           const StyleSite& styleSite)
    : machine(std::move(surroundings)), urlImport(importer), site(styleSite) {}

void InstallLinks::openUserCSS(std::string_view link) {
    const std::size_t mark = link.find(userCSSMark);
    if (mark == std::string_view::npos) return;
    machine.dispatcher.inBackground(
        taskPriority::background,
        [this, address = std::string(link.substr(mark + userCSSMark.size())),
         stop = stopAll.get_token()] {
            auto fetched = urlImport.fetchStyleFromURL(address, addressOrigin::link, stop);
            if (stop.stop_requested()) return;
            if (fetched.alert) machine.alerts.showAlert(fetched.alert->title, fetched.alert->text);
            if (!fetched.style) return logLine("No style to install at " + forLog(address));
            machine.dispatcher.onMain(
                [this, fetched = std::move(fetched)]() mutable { offer(std::move(fetched)); });
        });
}

void InstallLinks::openInstall(std::string_view path) {
    const auto number = styleNumberIn(path);
    if (!number || *number < 1 || tellIfInstalled(*number)) return;
    std::string address = site.jsonAddressOf(*number);
    if (const std::string query = queryIn(path, *number); !query.empty())
        address.append("?").append(query);

    machine.dispatcher.inBackground(taskPriority::background, [this, address = std::move(address),
                                                               id = *number,
                                                               stop = stopAll.get_token()] {
        auto data = site.fetchSiteStyleJSON(address, stop);
        if (stop.stop_requested()) return;
        if (!data) return machine.alerts.showAlert(installErrorTitle, installErrorText);
        auto style =
            makeStyleContainer(std::move(*data), sourceSite, id, machine.making.generateUniqueID());
        machine.dispatcher.onMain(
            [this, style = std::move(style)]() mutable { offer({.style = std::move(style)}); });
    });
}

void InstallLinks::stop() {
    stopAll.request_stop();
}

void InstallLinks::offer(fetchedStyle fetched) {
    waiting.push_back(std::move(fetched));
    if (isAsking) return;
    isAsking = true;
    while (!waiting.empty()) {
        fetchedStyle next = std::move(waiting.front());
        waiting.pop_front();
        ask(std::move(next));
    }
    isAsking = false;
}

void InstallLinks::ask(fetchedStyle fetched) {
    if (stopAll.stop_requested()) return;
    styleContainer& style = *fetched.style;
    // Whoever clicked a link twice has installed its style by now.
    if (style.userstyleID > 0 && tellIfInstalled(style.userstyleID)) return;
    const alertAnswer answer = machine.alerts.ask(
        {.title = "Do you want to install the style \"" + style.styleData.name + "\"?",
         .text = questionText,
         .buttons = {"Yes", "No"}});
    if (answer.button != 0) return;
    // Appended while the list is locked for sync, too, as opened files are: nothing is lost.
    appendImportedStyle(machine, std::move(style));
    if (fetched.tellErrors) fetched.tellErrors();
}

bool InstallLinks::tellIfInstalled(std::int64_t userstyleID) {
    const auto installed = findSiteStyle(machine.store, userstyleID);
    if (!installed) return false;
    const alertMessage alert = duplicateStyleAlert(installed->styleData.name);
    machine.alerts.showAlert(alert.title, alert.text);
    return true;
}

} // namespace tessaril
