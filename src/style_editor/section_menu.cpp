#include "style_editor/section_menu.h"

#include "model/text.h"

namespace tessaril {

namespace {

bool isNamed(const styleSection& section) {
    return section.sectionName && !trimmed(*section.sectionName).empty();
}

} // namespace

std::string sectionTitle(const styleSection& section, std::size_t index) {
    return isNamed(section) ? *section.sectionName : "Section " + std::to_string(index + 1);
}

std::vector<std::string> sectionTitles(const std::vector<styleSection>& sections) {
    std::vector<std::string> titles;
    for (const styleSection& section : sections)
        titles.push_back(sectionTitle(section, titles.size()));
    return titles;
}

bool isEmptySection(const styleSection& section) {
    return section.appliesEverywhere() && trimmed(section.code).empty();
}

std::string exportedSectionName(std::string_view styleName, const styleSection& section) {
    std::string name(styleName);
    if (isNamed(section)) name += " - " + *section.sectionName;
    return name;
}

} // namespace tessaril
