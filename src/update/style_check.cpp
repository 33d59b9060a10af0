#include "update/style_check.h"

#include "formats/moz_document.h"
#include "formats/user_css_reader.h"
#include "less_imports/importing_compiler.h"
#include "model/text.h"
#include "update/carry_over.h"
#include "web/loaded_text.h"
#include "web/web_address.h"

#include <algorithm>
#include <string>
#include <utility>

namespace tessaril {

namespace {

checkResult checkSiteStyle(const styleContainer& stored, const checkSurroundings& machine,
                           std::stop_token stop) {
    auto fetched = machine.site.fetchSiteStyleJSON(stored.styleData.updateUrl, std::move(stop));
    if (!fetched) return {checkOutcome::error};
    if (fetched->originalMd5 == stored.styleData.originalMd5) return {checkOutcome::upToDate};
    return {checkOutcome::updated, std::move(*fetched)};
}

std::string addressOf(const styleContainer& stored, const checkManner& manner) {
    if (manner.asksUpdateAddress && stored.updateURL && !trimmed(*stored.updateURL).empty())
        return *stored.updateURL;
    return stored.downloadedFrom;
}

std::string nameFor(const std::string& address) {
    const auto parsed = webAddressFrom(address);
    std::string name = parsed ? fileNameOf(*parsed) : std::string();
    return name.empty() ? std::string(defaultStyleName) : name; // a style needs a name
}

bool areSameAsWritten(const std::vector<styleSection>& a, const std::vector<styleSection>& b) {
    const auto written = [](styleSection section) {
        section.compiledcode.reset();
        return section;
    };
    return std::ranges::equal(a, b, {}, written, written);
}

/// The sheet compares what was written: what the compiler made of the user's values is no news, and
/// taking it for some would cost the user those values.
bool isSameVersion(const styleContainer& a, const styleContainer& b, const checkManner& manner) {
    if (a.version != b.version) return false;
    return manner.comparesWholeData ? a.styleData == b.styleData
                                    : areSameAsWritten(a.styleData.sections, b.styleData.sections);
}

std::string languageOf(const styleContainer& style) {
    return lowercasedASCII(style.preprocessor);
}

bool isSameCode(const styleContainer& a, const styleContainer& b) {
    return languageOf(a) == languageOf(b) && a.version == b.version &&
           areSameAsWritten(a.styleData.sections, b.styleData.sections);
}

bool hasCompiler(const styleContainer& style) {
    const std::string language = languageOf(style);
    return language == "less" || language == "stylus";
}

/// Compiles the style anew. One that fails gets `before` for its compiled code, as when a file that
/// it imports cannot be had: pages keep what they have.
std::function<void()> compileKeeping(styleContainer& style,
                                     const std::optional<std::vector<styleSection>>& before,
                                     const QuietCompile& compile) {
    if (!style.userVariables) return {}; // it is never compiled
    style.styleData.compSections.reset();
    auto tellErrors = compile(style);
    if (tellErrors && !style.styleData.compSections) style.styleData.compSections = before;
    return tellErrors;
}

/// Of what fails as before it is told only where the style has never worked.
checkResult asItWas(const styleContainer& stored, std::function<void()> tellErrors) {
    if (stored.styleData.compSections) tellErrors = {};
    return {checkOutcome::upToDate, {}, std::move(tellErrors)};
}

/// For a style whose code is the same as before: what it imports may not be, and what failed may
/// work.
checkResult compileAgain(const styleContainer& stored, const QuietCompile& compile) {
    if (!hasCompiler(stored)) return {checkOutcome::upToDate};
    styleContainer again = stored;
    auto tellErrors = compileKeeping(again, stored.styleData.compSections, compile);
    if (again.styleData == stored.styleData) return asItWas(stored, std::move(tellErrors));
    return {checkOutcome::updated, std::move(again.styleData), std::move(tellErrors)};
}

checkResult checkUserCSS(const styleContainer& stored, const checkManner& manner,
                         const checkSurroundings& machine, std::stop_token stop) {
    const std::string address = addressOf(stored, manner);
    if (address.empty()) return {checkOutcome::nothingToCheck};
    const auto loaded = loadText(machine.loader, {.address = address, .stop = std::move(stop)});
    if (!loaded || !contains(loaded->text, mozDocumentKeyword)) return {checkOutcome::error};

    const QuietCompile compile = machine.newCompile();
    const auto addOrigin = [&](styleContainer& style) {
        style.downloadedFrom = stored.downloadedFrom;
        keepFromOwnNetwork(style, address, loaded->address);
    };
    const auto compiledBefore = [&](const styleContainer& style) {
        return languageOf(style) == languageOf(stored) ? stored.styleData.compSections
                                                       : std::nullopt;
    };
    std::function<void()> tellErrors;
    bool isCompiled = false;
    auto read = parseUserCSS(loaded->text, {.generateUniqueID = [&] { return stored.uniqueID; },
                                            .compileStyle =
                                                [&](styleContainer& style) {
                                                    addOrigin(style);
                                                    isCompiled = true;
                                                    tellErrors = compileKeeping(
                                                        style, compiledBefore(style), compile);
                                                }});
    if (!read) return {checkOutcome::error};
    styleContainer newer = std::move(*read);
    if (manner.namesByAddress && newer.styleData.name == defaultStyleName)
        newer.styleData.name = nameFor(address);
    addOrigin(newer);
    newer.isEnabled = stored.isEnabled;
    if (isSameVersion(newer, stored, manner)) {
        const bool isLeftOut = !isCompiled && languageOf(newer) == languageOf(stored);
        const bool isAsStored = manner.comparesWholeData && !tellErrors && !isLeftOut;
        return isAsStored ? checkResult{checkOutcome::upToDate} : compileAgain(stored, compile);
    }
    const auto asRead = newer.userVariables;
    if (manner.keepsVariableValues) newer = carryOverVariableValues(stored, std::move(newer));
    // The reader compiles no style without variables in every spelling of its language.
    const bool isLeftOut = !isCompiled && (manner.keepsVariableValues || hasCompiler(newer));
    if (isLeftOut || newer.userVariables != asRead) {
        // Of new code, what the author's values give is nearer to it than what was there.
        const auto before = isCompiled && !isSameCode(newer, stored) ? newer.styleData.compSections
                                                                     : compiledBefore(newer);
        tellErrors = compileKeeping(newer, before, compile);
    }
    // The reader leaves out what was compiled since. With the same values and compiled it may turn
    // out to be what is installed, to the last byte.
    if (manner.comparesWholeData && isSameVersion(newer, stored, manner) &&
        newer.userVariables == stored.userVariables)
        return asItWas(stored, std::move(tellErrors));
    return {checkOutcome::updated, std::move(newer), std::move(tellErrors)};
}

/// Whether all that a check looks at is as it was; what the user may switch at any time is not.
bool isUnchanged(const styleContainer& present, const styleContainer& stored) {
    return present.styleData == stored.styleData && present.version == stored.version &&
           present.userVariables == stored.userVariables && present.updateURL == stored.updateURL &&
           present.downloadedFrom == stored.downloadedFrom;
}

bool land(StyleStore& store, std::int64_t id, checkResult& result) {
    if (auto* data = std::get_if<styleJSON>(&result.newer))
        return store.setStyleData(id, std::move(*data));
    if (auto* style = std::get_if<styleContainer>(&result.newer))
        return store.replaceStyleKeepingSettings(id, std::move(*style));
    return false;
}

} // namespace

checkResult checkStyle(const styleContainer& stored, const checkManner& manner,
                       const checkSurroundings& machine, std::stop_token stop) {
    if (stored.source == sourceSite) return checkSiteStyle(stored, machine, std::move(stop));
    if (stored.source == sourceUserCSS)
        return checkUserCSS(stored, manner, machine, std::move(stop));
    return {checkOutcome::nothingToCheck};
}

checkOutcome landCheck(StyleStore& store, const styleContainer& stored, checkResult result,
                       const checkManner& manner) {
    const auto present = store.findStyle(stored.uniqueID);
    if (!present || present->source != stored.source) return checkOutcome::nothingToCheck;
    if (result.outcome == checkOutcome::updated) {
        if (!isUnchanged(*present, stored)) return checkOutcome::outdated;
        if (!land(store, stored.uniqueID, result)) return checkOutcome::nothingToCheck;
        if (manner.savesAtOnce) store.saveDatabase();
    }
    const bool isOfWhatIsThere =
        result.outcome == checkOutcome::updated || isUnchanged(*present, stored);
    if (result.tellErrors && isOfWhatIsThere) result.tellErrors();
    return result.outcome;
}

} // namespace tessaril
