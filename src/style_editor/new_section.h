#pragma once

#include "model/style_container.h"

#include <string>

namespace tessaril {

/// What the new section sheet holds. Texts are UTF-8 as typed, the menu a position in `ruleTypes`.
struct newSectionFields {
    std::string name = ""; ///< blank: the section has none
    int ruleType = 0;
    std::string rule = ""; ///< blank: the section applies to every page
    bool copiesRules = false;
};

/// A section without code, as the fields say.
/// - curSection: whose rules are copied; null for none
styleSection makeSection(const newSectionFields& fields, const styleSection* curSection);

} // namespace tessaril
