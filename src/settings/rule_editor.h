#pragma once

#include "model/style_container.h"
#include "settings/typed_rules.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessaril {

/// The rules of one section, and its name, while they are edited.
struct ruleDictionary {
    std::vector<typedRule> dictionary;
    std::optional<std::string> sectionName;

    bool operator==(const ruleDictionary&) const = default;
};

ruleDictionary rulesForCurrentSection(const styleSection& section);

/// Puts the rules and the name in the place of those of the section.
void applyRules(const ruleDictionary& rules, styleSection& section);

/// Who holds the section whose rules are edited.
class RuleEditorDelegate {
public:
    virtual ~RuleEditorDelegate() = default;

    /// Nothing when there is no style.
    virtual std::optional<ruleDictionary> rulesForCurrentSection() = 0;
    /// Does nothing when the style is read-only.
    virtual void applyRules(const ruleDictionary& rules) = 0;
};

/// The editing of one section's rules, from its beginning to Save or Cancel. Main thread only.
class RuleEditor {
public:
    /// - windowDelegate: outlives it
    RuleEditor(RuleEditorDelegate& windowDelegate, bool isReadOnly);

    TypedRules& rules() { return rows; }
    bool isReadOnly() const { return rows.isReadOnly(); }

    /// For the name's field; empty for a section without a name.
    const std::string& sectionName() const { return name; }

    /// Hands the rules to the delegate, with the field's text, trimmed, for the section's name.
    /// Nothing when read-only. The sheet closes in any case.
    void saveClicked(std::string_view nameField);

private:
    RuleEditorDelegate& windowDelegate;
    TypedRules rows;
    std::string name;
};

} // namespace tessaril
