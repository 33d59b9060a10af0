#include "model/style_container.h"

#include <array>
#include <chrono>
#include <ctime>
#include <functional>

namespace tessaril {

date now() {
    using namespace std::chrono;
    constexpr auto referenceDate = sys_days{year{2001} / January / 1};
    return duration<double>(system_clock::now() - referenceDate).count();
}

std::string utcTimestamp() {
    using namespace std::chrono;
    return utcTimestamp(floor<seconds>(system_clock::now()));
}

std::string utcTimestamp(std::chrono::sys_seconds moment) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(moment);
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    std::array<char, 32> text{};
    const std::size_t size = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H%M%SZ", &utc);
    return {text.data(), size};
}

bool equalWithoutCompiled(const styleJSON& a, const styleJSON& b) {
    return a.url == b.url && a.updateUrl == b.updateUrl && a.md5Url == b.md5Url &&
           a.originalMd5 == b.originalMd5 && a.name == b.name && a.sections == b.sections;
}

std::size_t hashWithoutCompiled(const styleJSON& data) {
    const std::hash<std::string> hashOf;
    std::size_t hash = hashOf(data.name);
    const auto mix = [&hash](std::size_t value) { hash = hash * 1000003 ^ value; };
    mix(hashOf(data.url));
    for (const styleSection& section : data.sections)
        mix(hashOf(section.code));
    return hash;
}

styleJSON makeStyleJSON(std::string name, std::string code) {
    styleJSON result;
    result.name = std::move(name);
    result.sections.emplace_back().code = std::move(code);
    return result;
}

styleContainer makeStyleContainer(styleJSON styleData, std::string_view source,
                                  std::int64_t userstyleID, std::int64_t uniqueID) {
    styleContainer style;
    style.uniqueID = uniqueID;
    style.styleData = std::move(styleData);
    style.source = source;
    style.userstyleID = userstyleID;
    style.allowIframe = true;
    style.userVariables.emplace();
    style.dateModified = now();
    return style;
}

} // namespace tessaril
