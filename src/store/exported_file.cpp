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

} // namespace

std::optional<std::filesystem::path> exportedFile(std::filesystem::path chosen,
                                                  std::span<const std::string_view> types,
                                                  const FileSystem& files, Alerts& alerts) {
    const std::string name = lowercasedASCII(chosen.filename().string());
    const bool isOfType = std::ranges::any_of(types, [&](std::string_view type) {
        // A dot at the start hides a file; it begins no type.
        return name.size() > type.size() + 1 && name.ends_with("." + std::string(type));
    });
    if (isOfType) return chosen;
    chosen += "." + std::string(types.front());
    if (files.exists(chosen) && !wantsItReplaced(chosen, alerts)) return std::nullopt;
    return chosen;
}

} // namespace tessaril
