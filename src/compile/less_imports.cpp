#include "compile/less_imports.h"

#include "model/json_writer.h"
#include "model/text.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <utility>

namespace tessaril {

namespace {

constexpr std::string_view couldNotLoad = "it could not be loaded";
constexpr std::string_view notAnAddress = "only files with a whole address, https://, can be had";
constexpr std::string_view tooMany = "the style imports too many files";
constexpr std::string_view tooLarge = "the style imports too large files";
constexpr std::string_view tooDeep = "the style's imports import too deep";

/// How the addresses of files begin that can be had; Less keeps the last as it is. A path without
/// a host is one of the page of which the context pretends to be part.
constexpr std::array<std::string_view, 3> addressStarts{"https:", "http:", "//"};

/// A file may be asked for again and again, as in a circle of imports.
constexpr std::size_t mostRequests = 300;
/// What fits into a window.
constexpr std::size_t mostNamed = 50;

/// Looks files up within the limits.
class Delivery {
public:
    explicit Delivery(const ImportLookup& lookUpFile) : lookUp(lookUpFile) {}

    /// The answers to one round of requests: JSON, for each address {"text"} or {"problem"}.
    std::string answers(const std::vector<std::string_view>& addresses, bool isTooDeep) {
        std::string json;
        JsonWriter writer(json);
        std::string_view separator = "{";
        std::set<std::string_view> written;
        for (const std::string_view address : addresses) {
            const answer& given = answerTo(std::string(address), isTooDeep);
            if (!written.insert(address).second) continue;
            writer.raw(separator);
            writer.string(address);
            writer.raw(given.text ? R"(:{"text":)" : R"(:{"problem":)");
            writer.string(given.text ? std::string_view(*given.text) : given.problem);
            writer.raw("}");
            separator = ",";
        }
        writer.raw("}");
        return json;
    }

    importOutcome outcome;

private:
    struct answer {
        std::optional<std::string> text;
        std::string_view problem;
    };

    const answer& answerTo(const std::string& address, bool isTooDeep) {
        const bool isBeyond = isTooDeep || ++requests > mostRequests;
        const auto known = answered.find(address);
        if (known != answered.end() && !(isBeyond && known->second.text)) return known->second;
        answer& given = answered[address];
        given = isBeyond ? answer{std::nullopt, isTooDeep ? tooDeep : tooMany} : lookedUp(address);
        if (!given.text) outcome.refused.push_back({address, given.problem});
        return given;
    }

    answer lookedUp(const std::string& address) {
        const std::string start = lowercasedASCII(address.substr(0, 6));
        if (std::ranges::none_of(addressStarts, [&](auto s) { return start.starts_with(s); }))
            return {std::nullopt, notAnAddress};
        if (files == mostImportedFiles) return {std::nullopt, tooMany};
        if (bytes > mostImportedBytes) return {std::nullopt, tooLarge};
        ++files;
        auto text = lookUp(address);
        if (!text) {
            outcome.missing.push_back(address);
            return {std::nullopt, couldNotLoad};
        }
        bytes += text->size();
        if (bytes > mostImportedBytes) return {std::nullopt, tooLarge};
        return {std::move(text), {}};
    }

    const ImportLookup& lookUp;
    std::map<std::string, answer> answered;
    std::size_t requests = 0;
    std::size_t files = 0;
    std::size_t bytes = 0;
};

/// How Less begins the error about a missing file.
std::string lessComplaint(std::string_view address) {
    return "'" + std::string(address) + "' wasn't found";
}

} // namespace

importOutcome deliverImports(ScriptContext& context, const ImportLookup& lookUp) {
    Delivery delivery(lookUp);
    for (int round = 0;; ++round) {
        const auto wanted = context.global("wantedImports");
        if (!wanted || wanted->empty()) break;
        context.setGlobal("importedFiles",
                          delivery.answers(split(*wanted, "\n"), round >= mostImportRounds));
        if (!context.evaluate("answerImports();")) break;
    }
    return std::move(delivery.outcome);
}

std::string withAllRefused(std::string error, const std::vector<refusedImport>& refused) {
    const auto isNamed = [&](const refusedImport& file) {
        return contains(error, lessComplaint(file.address));
    };
    if (std::ranges::none_of(refused, isNamed)) return error;
    std::string others;
    std::size_t count = 0;
    for (const refusedImport& file : refused)
        if (!isNamed(file) && ++count <= mostNamed)
            others.append("\n").append(file.address).append(" (").append(file.reason).append(")");
    if (count > mostNamed) others += "\nand " + std::to_string(count - mostNamed) + " more";
    if (count > 0) error.append("\n\nNor could these be imported:").append(others);
    return error;
}

} // namespace tessaril
