#include "style_editor/new_section.h"

#include "model/rule_types.h"
#include "model/text.h"

namespace tessaril {

styleSection makeSection(const newSectionFields& fields, const styleSection* curSection) {
    styleSection section;
    const bool copiesRules = fields.copiesRules && curSection;
    if (copiesRules) section = *curSection;
    section.code.clear();
    section.compiledcode.reset();
    section.sectionName.reset();
    const std::string_view name = trimmed(fields.name);
    if (!name.empty()) section.sectionName = name;
    const std::string_view rule = trimmed(fields.rule);
    if (!copiesRules && !rule.empty()) rulesAt(section, fields.ruleType).emplace_back(rule);
    return section;
}

} // namespace tessaril
