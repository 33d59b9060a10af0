#include "events/notification_names.h"
#include "model/rule_types.h"
#include "settings/rule_editor.h"
#include "settings/style_prop_view.h"
#include "store/style_object.h"
#include "support/store_machine.h"
#include "support/test.h"

namespace tessaril {
namespace {

struct StylePropViewTest : ::testing::Test, StoreMachine<> {
    std::unique_ptr<StylePropView> opened(const styleContainer& style) {
        openProperties.add(style.uniqueID);
        auto view = std::make_unique<StylePropView>(
            stylePropSurroundings{store, openProperties, center, alerts, dispatcher}, style);
        view->setHandlers(
            {.showName = [this](const std::string& name) { shownNames.push_back(name); },
             .focus = [this] { ++focused; },
             .close = [this] { ++closed; }});
        return view;
    }
    std::unique_ptr<StylePropView> openedFirst() { return opened(*store.styleAt(0)); }
    void save(StylePropView& view) {
        view.saveClicked();
        dispatcher.runAll();
    }

    StyleIDs openProperties;
    std::vector<std::string> shownNames;
    int focused = 0, closed = 0;
};

TEST_F(StylePropViewTest, storesAllThatIsSetAndNothingElse) {
    styleContainer style = namedStyle("Name", 7);
    style.allowIframe = false;
    style.exclURL = {"u"};
    style.exclRegExp = {"r"};
    style.userVariables = {{{.type = "text", .name = "v", .currentValue = "old"}}};
    putDocument({style});
    compile = [](styleContainer& s) {
        s.styleData.sections[0].compiledcode = s.userVariables->at(0).currentValue;
    };
    auto view = openedFirst();
    EXPECT_THAT(view->exclusions().rows(),
                ElementsAre(typedRule{"URL is", "u"}, typedRule{"RegExp", "r"}));
    EXPECT_FALSE(view->allowsIframe());
    view->exclusions().setType(0, domainRule);
    view->exclusions().add(urlRule);
    view->iframeToggled(true);
    view->themeChanged(2);
    view->variables().textDidChange(0, "new");
    EXPECT_EQ(*store.styleAt(0), style);
    store.renameStyle(0, "Renamed");
    view->saveClicked();
    view->saveClicked();
    EXPECT_TRUE(view->isSaving());
    EXPECT_EQ(closed, 0);
    dispatcher.runAll();
    EXPECT_EQ(closed, 1);
    const styleContainer saved = written().styles.at(0);
    style.exclDomain = {"u"};
    style.exclURL = {""};
    style.exclPrefix.emplace();
    style.allowIframe = true;
    style.systemTheme = "dark";
    style.styleData.name = "Renamed";
    style.userVariables->at(0).currentValue = style.styleData.sections[0].compiledcode = "new";
    style.dateModified = saved.dateModified;
    EXPECT_EQ(saved, style);
}

TEST_F(StylePropViewTest, anUntouchedStyleGetsItsListsAndNoMore) {
    styleContainer style = namedStyle("Name", 7);
    style.allowIframe.reset();
    style.systemTheme = "else";
    putDocument({style});
    auto view = openedFirst();
    EXPECT_EQ(view->theme(), 0u);
    save(*view);
    const styleContainer& saved = *store.styleAt(0);
    EXPECT_TRUE(saved.exclDomain && saved.exclURL && saved.exclPrefix && saved.exclRegExp);
    EXPECT_EQ(saved.allowIframe, std::nullopt);
    EXPECT_EQ(saved.systemTheme, "else");
    auto next = openedFirst();
    next->themeChanged(0);
    save(*next);
    EXPECT_EQ(store.styleAt(0)->systemTheme, "none");
}

TEST_F(StylePropViewTest, followsItsOwnStyleOnly) {
    putDocument({namedStyle("One", 1), namedStyle("Two", 2)});
    auto one = opened(*store.styleAt(0)), two = opened(*store.styleAt(1));
    store.renameStyle(1, "Renamed");
    center.post(notifications::focusProperties, 1);
    dispatcher.runAll();
    EXPECT_THAT(shownNames, ElementsAre("Renamed"));
    EXPECT_EQ(focused, 1);
    one->themeChanged(1);
    store.deleteStyle(0);
    dispatcher.runAll();
    EXPECT_EQ(closed, 1);
    EXPECT_TRUE(!openProperties.contains(1) && openProperties.contains(2));

    // A window that goes must not take the place of one that was opened since.
    two->cancelClicked();
    auto again = opened(*store.styleAt(0));
    two.reset();
    EXPECT_TRUE(openProperties.contains(2));
    center.post(notifications::closeProperties, 2);
    again.reset();
    dispatcher.runAll();
    EXPECT_EQ(closed, 2) << "the window was gone by then";
}

TEST_F(StylePropViewTest, aSaveOutlivesItsWindow) {
    putDocument({namedStyle("Name", 7)});
    auto view = openedFirst();
    view->iframeToggled(true);
    view->saveClicked();
    view->leave();
    view.reset();
    EXPECT_TRUE(openProperties.contains(7)) << "a second save could come before the first";
    dispatcher.runAll();
    EXPECT_TRUE(openProperties.isEmpty());
    EXPECT_EQ(written().styles[0].allowIframe, true);

    view = openedFirst(); // which may close while it asks
    alerts.answers = {{.button = 1}};
    alerts.whileAsking = [&] { view.reset(); };
    EXPECT_FALSE(view->variables().setDefaults());
}

TEST_F(StylePropViewTest, saysWhereTheStyleIsFromAsTheListDoes) {
    styleContainer style = namedStyle("Name", 7);
    for (const auto& [source, text] : {std::pair("usorg", "Imported from URL"),
                                       {"usercss", "Imported from User CSS"},
                                       {"custom", "Custom Style"}}) {
        style.source = source;
        EXPECT_EQ(opened(style)->typeText(), text);
        EXPECT_EQ(styleObject(style).source, text);
    }
}

struct SectionHolder : RuleEditorDelegate {
    std::optional<ruleDictionary> rulesForCurrentSection() override {
        return section ? std::optional(tessaril::rulesForCurrentSection(*section)) : std::nullopt;
    }
    void applyRules(const ruleDictionary& rules) override {
        ++applied;
        tessaril::applyRules(rules, *section);
    }

    std::optional<styleSection> section;
    int applied = 0;
};

TEST(TypedRules, AreListsUpToARowWithoutARule) {
    EXPECT_EQ(ruleListsFrom(std::vector<typedRule>{
                  {"URL is", "x"}, {"Other", "lost"}, {"RegExp", std::nullopt}, {"Domain", "z"}}),
              ruleLists{.urls = {"x"}});
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
