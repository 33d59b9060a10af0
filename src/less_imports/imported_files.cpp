#include "less_imports/imported_files.h"

#include "web/loaded_text.h"

#include <algorithm>
#include <utility>

namespace tessaril {

namespace {

constexpr folderCacheKind importCache{
    .suffix = ".import", .format = "tessaril import 1", .size = 64 << 20, .count = 2000};

constexpr std::size_t largestFile = 4 << 20;

// A person waits for the style.
constexpr std::chrono::seconds connectTime{5};
constexpr std::chrono::seconds stallTime{10};
constexpr int mostRedirects = 5;

/// Longer than what one style's files may take, so that what failed at its beginning is not asked
/// for again at its end.
constexpr std::chrono::seconds failureAge{90};
constexpr std::size_t mostFailures = 1000;

/// What the file is kept under; no address has a space.
std::string nameOf(const importedFile& file) {
    return file.fromOwnNetwork ? "own-network " + file.address : file.address;
}

} // namespace

ImportedFiles::ImportedFiles(UrlLoader& urlLoader, FileSystem& files, std::filesystem::path folder,
                             std::function<Clock::time_point()> presentMoment)
    : loader(urlLoader)
    , clock(std::move(presentMoment))
    , cache(files, std::move(folder), importCache, clock) {}

std::optional<std::string> ImportedFiles::kept(const importedFile& file) {
    const std::string name = nameOf(file);
    auto found = cache.find(name);
    if (!found) return std::nullopt;
    cache.keepLonger(name);
    return std::move(found->content);
}

std::optional<std::string> ImportedFiles::load(const importedFile& file,
                                               const loadAllowance& allowance) {
    auto loaded = loadText(loader, {.address = file.address,
                                    .largestBody = std::min(largestFile, allowance.bytes),
                                    .mostRedirects = mostRedirects,
                                    .connectTime = connectTime,
                                    .stallTime = stallTime,
                                    .totalTime = allowance.time,
                                    .publicHostsOnly = !file.fromOwnNetwork,
                                    .stop = allowance.stop});
    if (!loaded) {
        if (!allowance.stop.stop_requested()) noteFailure(file);
        return std::nullopt;
    }
    const std::string name = nameOf(file);
    cache.store(name, loaded->text);
    if (!cache.find(name)) {
        // Who compiles from what is kept would ask for it for ever.
        noteFailure(file);
        return std::move(loaded->text);
    }
    const std::lock_guard lock(mutex);
    failures.erase(name);
    return std::move(loaded->text);
}

bool ImportedFiles::hasFailedLately(const importedFile& file) {
    const std::lock_guard lock(mutex);
    const auto found = failures.find(nameOf(file));
    if (found == failures.end()) return false;
    const auto age = clock() - found->second;
    return age >= Clock::duration::zero() && age < failureAge;
}

void ImportedFiles::noteFailure(const importedFile& file) {
    const std::lock_guard lock(mutex);
    if (failures.size() >= mostFailures) failures.clear();
    failures[nameOf(file)] = clock();
}

} // namespace tessaril
