#include "events/notification_names.h"
#include "model/rule_types.h"
#include "settings/style_prop_view.h"
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
    const styleContainer& saved = *store.styleAt(0);
    EXPECT_EQ(saved.exclDomain, std::vector<std::string>{"u"});
    EXPECT_EQ(saved.exclURL, std::vector<std::string>{""});
    EXPECT_EQ(saved.exclPrefix, std::vector<std::string>{});
    EXPECT_EQ(saved.exclRegExp, std::vector<std::string>{"r"});
    EXPECT_EQ(saved.allowIframe, true);
    EXPECT_EQ(saved.systemTheme, "dark");
    EXPECT_EQ(saved.styleData.name, "Renamed");
    EXPECT_EQ(written().styles[0].styleData.sections[0].compiledcode, "new");
}

TEST_F(StylePropViewTest, anUntouchedStyleGetsItsListsAndNoMore) {
    styleContainer style = namedStyle("Name", 7);
    style.allowIframe.reset();
    style.systemTheme = "else";
    putDocument({style});
    auto view = openedFirst();
    EXPECT_EQ(view->theme(), 0u);
    view->saveClicked();
    dispatcher.runAll();
    const styleContainer& saved = *store.styleAt(0);
    EXPECT_TRUE(saved.exclDomain && saved.exclURL && saved.exclPrefix && saved.exclRegExp);
    EXPECT_EQ(saved.allowIframe, std::nullopt);
    EXPECT_EQ(saved.systemTheme, "else");
    auto next = openedFirst();
    next->themeChanged(0);
    next->saveClicked();
    dispatcher.runAll();
    EXPECT_EQ(store.styleAt(0)->systemTheme, "none");
}

TEST_F(StylePropViewTest, followsItsOwnStyleOnly) {
    putDocument({namedStyle("One", 1), namedStyle("Two", 2)});
    auto one = opened(*store.styleAt(0));
    auto two = opened(*store.styleAt(1));
    store.renameStyle(1, "Renamed");
    center.post(notifications::focusProperties, 1);
    dispatcher.runAll();
    EXPECT_THAT(shownNames, ElementsAre("Renamed"));
    EXPECT_EQ(focused, 1);
    one->themeChanged(1);
    store.deleteStyle(0);
    dispatcher.runAll();
    EXPECT_EQ(closed, 1);
    EXPECT_FALSE(openProperties.contains(1));
    EXPECT_TRUE(openProperties.contains(2));

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
    EXPECT_TRUE(openProperties.contains(7)) << "a second save could come before the first";
    view.reset();
    EXPECT_TRUE(openProperties.contains(7));
    dispatcher.runAll();
    EXPECT_TRUE(openProperties.isEmpty());
    EXPECT_EQ(written().styles[0].allowIframe, true);
}

TEST_F(StylePropViewTest, mayCloseWhileItAsks) {
    styleContainer style = namedStyle("Name", 7);
    style.userVariables = {{{.type = "text", .name = "v", .currentValue = "old"}}};
    putDocument({style});
    auto view = openedFirst();
    alerts.answers = {{.button = 1}};
    alerts.whileAsking = [&] { view.reset(); };
    EXPECT_FALSE(view->variables().setDefaults());
}

TEST_F(StylePropViewTest, saysWhereTheStyleIsFrom) {
    styleContainer style = namedStyle("Name", 7);
    for (const auto& [source, text] : {std::pair("usorg", "Imported from URL"),
                                       {"usercss", "Imported from User CSS"},
                                       {"custom", "Custom Style"},
                                       {"", "Custom Style"}}) {
        style.source = source;
        EXPECT_EQ(opened(style)->typeText(), text);
    }
}

} // namespace
} // namespace tessaril
