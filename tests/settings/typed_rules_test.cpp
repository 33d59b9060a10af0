#include "model/rule_types.h"
#include "settings/rule_editor.h"
#include "support/test.h"

namespace tessaril {
namespace {

struct SectionHolder : RuleEditorDelegate {
    std::optional<ruleDictionary> rulesForCurrentSection() override {
        if (!section) return std::nullopt;
        return tessaril::rulesForCurrentSection(*section);
    }
    void applyRules(const ruleDictionary& rules) override {
        ++applied;
        tessaril::applyRules(rules, *section);
    }

    std::optional<styleSection> section;
    int applied = 0;
};

TEST(TypedRules, turnIntoListsAndBackWithoutLosingTheirOrder) {
    const ruleLists lists{
        .domains = {"a", ""}, .urls = {"b"}, .urlPrefixes = {"c", "d"}, .regexps = {"e"}};
    EXPECT_EQ(ruleListsFrom(typedRulesFrom(lists)), lists);
    const std::vector<typedRule> mixed{{"URL is", "x"},
                                       {"Other", "lost"},
                                       {"Domain", "y"},
                                       {"RegExp", std::nullopt},
                                       {"Domain", "z"}};
    EXPECT_EQ(ruleListsFrom(mixed), (ruleLists{.domains = {"y"}, .urls = {"x"}}))
        << "a row without a rule ends them";
}

TEST(RuleEditor, changesTheSectionOnSaveOnly) {
    SectionHolder holder;
    holder.section = {.urlPrefixes = {"file:///docs/"},
                      .domains = {"site-a", "site-b"},
                      .code = "a {}",
                      .sectionName = " \u00a0\n"};
    RuleEditor editor(holder, false);
    EXPECT_EQ(editor.sectionName(), "") << "a blank one";
    EXPECT_THAT(editor.rules().rows(),
                ElementsAre(typedRule{"Domain", "site-a"}, typedRule{"Domain", "site-b"},
                            typedRule{"URL starts with", "file:///docs/"}));
    editor.rules().setType(1, regExpRule);
    EXPECT_TRUE(editor.rules().add(urlRule));
    editor.rules().setRule(3, " typed ");
    editor.rules().add(domainRule);
    EXPECT_FALSE(editor.rules().remove(5));
    editor.rules().setRule(5, "nowhere");
    EXPECT_EQ(holder.section->domains.size(), 2u);
    editor.saveClicked("\u2003 New name\n");
    EXPECT_EQ(*holder.section, (styleSection{.urls = {" typed "},
                                             .urlPrefixes = {"file:///docs/"},
                                             .domains = {"site-a", ""},
                                             .regexps = {"site-b"},
                                             .code = "a {}",
                                             .sectionName = "New name"}));

    RuleEditor next(holder, false);
    EXPECT_EQ(next.sectionName(), "New name");
    while (next.rules().remove(0)) {
    }
    next.saveClicked(" ");
    EXPECT_TRUE(holder.section->appliesEverywhere());
    EXPECT_EQ(holder.section->sectionName, "");
}

TEST(RuleEditor, changesNothingThatIsReadOnlyOrMissing) {
    SectionHolder holder;
    EXPECT_THAT(RuleEditor(holder, false).rules().rows(), IsEmpty());
    holder.section = {.domains = {"a"}, .code = ""};
    RuleEditor editor(holder, true);
    EXPECT_FALSE(editor.rules().add(domainRule));
    EXPECT_FALSE(editor.rules().remove(0));
    editor.rules().setType(0, urlRule);
    editor.rules().setRule(0, "b");
    EXPECT_EQ(editor.rules().rows(), typedRulesFrom({.domains = {"a"}}));
    editor.saveClicked("name");
    EXPECT_EQ(holder.applied, 0);
}

} // namespace
} // namespace tessaril
