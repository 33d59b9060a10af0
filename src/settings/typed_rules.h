#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tessaril {

/// A rule as a row of a table. Texts are as typed.
struct typedRule {
    std::string type; ///< one of `ruleTypes`; others are kept, but stand for nothing
    std::optional<std::string> rule;

    bool operator==(const typedRule&) const = default;
};

/// The same rules as sections and exclusions store them: a list for every type.
struct ruleLists {
    std::vector<std::string> domains;
    std::vector<std::string> urls;
    std::vector<std::string> urlPrefixes;
    std::vector<std::string> regexps;

    bool operator==(const ruleLists&) const = default;
};

/// The rows that show the lists: list by list in the order of `ruleTypes`.
std::vector<typedRule> typedRulesFrom(const ruleLists& lists);

/// The lists that the rows stand for, in the rows' order. Rows of an unknown type are left out; the
/// first row without a rule ends them.
ruleLists ruleListsFrom(std::span<const typedRule> rows);

/// The rows of a table that the user edits. Indexes are rows; what addresses none does nothing, nor
/// does anything while the table is read-only.
class TypedRules {
public:
    TypedRules() = default;
    TypedRules(std::vector<typedRule> rows, bool isReadOnly)
        : dictionary(std::move(rows)), readOnly(isReadOnly) {}

    const std::vector<typedRule>& rows() const { return dictionary; }
    bool isReadOnly() const { return readOnly; }

    /// Appends a row without text and gives whether it did.
    bool add(std::string_view type);
    bool remove(std::size_t row);
    void setType(std::size_t row, std::string_view type);
    void setRule(std::size_t row, std::string rule);

private:
    bool mayChange(std::size_t row) const { return !readOnly && row < dictionary.size(); }

    std::vector<typedRule> dictionary;
    bool readOnly = false;
};

} // namespace tessaril
