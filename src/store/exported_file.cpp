#include "store/exported_file.h"

#include "model/text.h"

#include <algorithm>
#include <string>

namespace tessaril {

namespace {

constexpr const char* replaceText = "Its current content will be lost.";

std::string replaceTitle(const std::filesystem::path& file) {
    return "“" + validUTF8(file.filename().string()) +
           "” exists already. Do you want to replace it?";
}

bool wantsItReplaced(const std::filesystem::path& file, Alerts& alerts) {
    return alerts
               .ask({.title = replaceTitle(file),
                     .text = replaceText,
                     .buttons = {"Cancel", "Replace"},
                     .destructiveButton = 1})
               .button == 1;
}

/// Whether `name`, in lower case, is more than the ending "." + `type`. A dot at the start hides a
/// file; it begins no type.
bool hasType(std::string_view name, std::string_view type) {
    return name.size() > type.size() + 1 && name.ends_with("." + std::string(type));
}

/// What makes `name`, in lower case, one of `type`: of "user.css" only the rest after "a.user".
std::string_view missingEnding(std::string_view name, std::string_view type) {
    const std::size_t dot = type.find('.');
    const bool hasFirstPart = dot != std::string_view::npos && hasType(name, type.substr(0, dot));
    return hasFirstPart ? type.substr(dot + 1) : type;
}

} // namespace

std::optional<std::filesystem::path> exportedFile(std::filesystem::path chosen,
                                                  std::span<const std::string_view> types,
                                                  const FileSystem& files, Alerts& alerts) {
    const std::string name = lowercasedASCII(chosen.filename().string());
    if (std::ranges::any_of(types, [&](std::string_view type) { return hasType(name, type); }))
        return chosen;
    chosen += "." + std::string(missingEnding(name, types.front()));
    if (files.exists(chosen) && !wantsItReplaced(chosen, alerts)) return std::nullopt;
    return chosen;
}

} // namespace tessaril
