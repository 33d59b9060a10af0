#include "less_imports/importing_compiler.h"

#include "model/text.h"
#include "web/web_address.h"

#include <chrono>
#include <map>
#include <memory>
#include <utility>

namespace tessaril {

namespace {

using clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// For all files of a style.
constexpr std::chrono::seconds mostTime{45};

bool isOwn(const std::string& written) {
    const auto address = webAddressFrom(written);
    return address && isOnOwnNetwork(*address);
}

/// The address of the web that Less means; nothing where it is none.
std::optional<std::string> webAddressOf(const std::string& written) {
    // Less keeps addresses without a scheme, which take that of the page.
    const auto address = webAddressFrom(written.starts_with("//") ? "https:" + written : written);
    return address ? std::optional(address->text()) : std::nullopt;
}

} // namespace

bool mayImportFromOwnNetwork(const styleContainer& style) {
    const std::string updateAddress = style.updateURL.value_or("");
    return isOwn(style.downloadedFrom) && (trimmed(updateAddress).empty() || isOwn(updateAddress));
}

void keepFromOwnNetwork(styleContainer& style, const std::string& asked, const std::string& given) {
    if (mayImportFromOwnNetwork(style) && !(isOwn(asked) && isOwn(given)))
        style.updateURL = isOwn(asked) ? given : asked;
}

/// The files of one style while it is compiled, be it several times.
class ImportingCompiler::Run {
public:
    Run(ImportedFiles& importedFiles, const styleContainer& style, bool refreshed)
        : files(importedFiles)
        , fromOwnNetwork(mayImportFromOwnNetwork(style))
        , isRefreshed(refreshed) {}

    bool isFromOwnNetwork() const { return fromOwnNetwork; }

    ImportLookup lookUp() {
        return [this](const std::string& written) -> std::optional<std::string> {
            const auto address = webAddressOf(written);
            if (!address) return std::nullopt;
            const auto found = had.find(*address);
            if (found != had.end()) return found->second;
            if (isRefreshed) return std::nullopt;
            auto text = files.kept(fileAt(*address));
            if (text) had[*address] = text;
            return text;
        };
    }

    /// Whether loading might give any of the files.
    bool couldLoad(const std::vector<std::string>& missing) {
        for (const std::string& written : missing)
            if (const auto address = webAddressOf(written))
                if (!had.contains(*address) && !files.hasFailedLately(fileAt(*address)))
                    return true;
        return false;
    }

    /// Loads the missing files, each once in a run. Gives whether any was had.
    bool load(const std::vector<std::string>& missing, const std::stop_token& stop) {
        bool isAny = false;
        for (const std::string& written : missing) {
            const auto address = webAddressOf(written);
            if (stop.stop_requested()) return false;
            if (!address || had.contains(*address)) continue;
            auto text = loaded(fileAt(*address), stop);
            isAny = isAny || text;
            had[*address] = std::move(text);
        }
        return isAny;
    }

private:
    importedFile fileAt(const std::string& address) const { return {address, fromOwnNetwork}; }

    std::optional<std::string> loaded(const importedFile& file, const std::stop_token& stop) {
        const auto time = std::chrono::duration_cast<milliseconds>(end - clock::now());
        std::optional<std::string> text;
        if (time > milliseconds::zero() && bytes > 0 && count > 0)
            text = files.load(file, {.bytes = bytes, .time = time, .stop = stop});
        else
            files.noteFailure(file);
        if (count > 0) --count;
        if (text) bytes -= std::min(bytes, text->size());
        return text || !isRefreshed ? text : files.kept(file);
    }

    ImportedFiles& files;
    const bool fromOwnNetwork;
    const bool isRefreshed;
    const clock::time_point end = clock::now() + mostTime;
    std::size_t bytes = mostImportedBytes;
    std::size_t count = mostImportedFiles;
    std::map<std::string, std::optional<std::string>> had; ///< nothing: cannot be had
};

ImportingCompiler::ImportingCompiler(StyleCompiler& styleCompiler, ImportedFiles& importedFiles,
                                     Dispatcher& taskDispatcher)
    : compiler(styleCompiler), files(importedFiles), dispatcher(taskDispatcher) {}

std::function<void()> ImportingCompiler::compileLoading(styleContainer& style) {
    Run run(files, style, false);
    return compileWith(run, style);
}

QuietCompile ImportingCompiler::refreshing() {
    return [this, run = std::shared_ptr<Run>()](styleContainer& style) mutable {
        // What one that may import from the own network has had is not for one that may not.
        if (!run || run->isFromOwnNetwork() != mayImportFromOwnNetwork(style))
            run = std::make_shared<Run>(files, style, true);
        return compileWith(*run, style);
    };
}

ImportingCompiler::keptCompilation ImportingCompiler::compileFromKept(styleContainer& style) {
    Run run(files, style, false);
    auto result = compiler.compileWithImports(style, run.lookUp());
    return {std::move(result.tellErrors), run.couldLoad(result.missing)};
}

void ImportingCompiler::loadImports(styleContainer style) {
    Run run(files, style, false);
    compileWith(run, style);
}

std::function<void()> ImportingCompiler::compileWith(Run& run, styleContainer& style) {
    const std::stop_token stop = stopping.get_token();
    const auto compiledBefore = style.styleData.compSections;
    for (;;) {
        auto result = compiler.compileWithImports(style, run.lookUp());
        bool isMore = false;
        if (!result.missing.empty())
            dispatcher.whileWaiting([&] { isMore = run.load(result.missing, stop); });
        if (!isMore && stop.stop_requested() && !result.missing.empty()) return [] {};
        if (!isMore) return std::move(result.tellErrors);
        style.styleData.compSections = compiledBefore;
    }
}

} // namespace tessaril
