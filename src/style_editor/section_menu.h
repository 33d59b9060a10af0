#pragma once

#include "model/style_container.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tessaril {

/// What the menu of sections shows for the section at `index`, counted from 0: its name, or where
/// that is blank its position.
std::string sectionTitle(const styleSection& section, std::size_t index);

std::vector<std::string> sectionTitles(const std::vector<styleSection>& sections);

/// Whether nothing is lost with the section: no rule, and no code but blanks.
bool isEmptySection(const styleSection& section);

/// The base name of the file that a section is exported to; UTF-8, as the style and the section are
/// named.
std::string exportedSectionName(std::string_view styleName, const styleSection& section);

} // namespace tessaril
