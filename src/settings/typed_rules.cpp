#include "settings/typed_rules.h"

#include "model/rule_types.h"

#include <utility>

namespace tessaril {

namespace {

/// In the order of `ruleTypes`.
constexpr std::array lists{&ruleLists::domains, &ruleLists::urls, &ruleLists::urlPrefixes,
                           &ruleLists::regexps};
static_assert(lists.size() == ruleTypes.size());

} // namespace

std::vector<typedRule> typedRulesFrom(const ruleLists& from) {
    std::vector<typedRule> rows;
    for (std::size_t i = 0; i < lists.size(); ++i)
        for (const std::string& rule : from.*lists[i])
            rows.push_back({std::string(ruleTypes[i]), rule});
    return rows;
}

ruleLists ruleListsFrom(std::span<const typedRule> rows) {
    ruleLists result;
    for (const typedRule& row : rows) {
        if (!row.rule) break;
        for (std::size_t i = 0; i < lists.size(); ++i)
            if (row.type == ruleTypes[i]) (result.*lists[i]).push_back(*row.rule);
    }
    return result;
}

bool TypedRules::add(std::string_view type) {
    if (readOnly) return false;
    dictionary.push_back({std::string(type), ""});
    return true;
}

bool TypedRules::remove(std::size_t row) {
    if (!mayChange(row)) return false;
    dictionary.erase(dictionary.begin() + static_cast<std::ptrdiff_t>(row));
    return true;
}

void TypedRules::setType(std::size_t row, std::string_view type) {
    if (mayChange(row)) dictionary[row].type = type;
}

void TypedRules::setRule(std::size_t row, std::string rule) {
    if (mayChange(row)) dictionary[row].rule = std::move(rule);
}

} // namespace tessaril
