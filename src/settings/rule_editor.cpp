#include "settings/rule_editor.h"

#include "model/text.h"

#include <utility>

namespace tessaril {

ruleDictionary rulesForCurrentSection(const styleSection& section) {
    return {typedRulesFrom({.domains = section.domains,
                            .urls = section.urls,
                            .urlPrefixes = section.urlPrefixes,
                            .regexps = section.regexps}),
            section.sectionName};
}

void applyRules(const ruleDictionary& rules, styleSection& section) {
    ruleLists lists = ruleListsFrom(rules.dictionary);
    section.sectionName = rules.sectionName;
    section.domains = std::move(lists.domains);
    section.urls = std::move(lists.urls);
    section.urlPrefixes = std::move(lists.urlPrefixes);
    section.regexps = std::move(lists.regexps);
}

RuleEditor::RuleEditor(RuleEditorDelegate& delegate, bool isReadOnly) : windowDelegate(delegate) {
    ruleDictionary given = delegate.rulesForCurrentSection().value_or(ruleDictionary{});
    rows = TypedRules(std::move(given.dictionary), isReadOnly);
    if (given.sectionName && !trimmed(*given.sectionName).empty())
        name = std::move(*given.sectionName);
}

void RuleEditor::saveClicked(std::string_view nameField) {
    if (isReadOnly()) return;
    windowDelegate.applyRules({rows.rows(), std::string(trimmed(nameField))});
}

} // namespace tessaril
