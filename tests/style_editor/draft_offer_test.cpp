#include "events/notification_names.h"
#include "style_editor/draft_offer.h"
#include "support/store_machine.h"
#include "support/test.h"

namespace tessaril {
namespace {

/// A start after a run that left drafts.
struct DraftOfferTest : ::testing::Test, StoreMachine<> {
    DraftOfferTest() {
        offer.setOpen([this](const styleToEdit& style) {
            opened.push_back(style);
            return mayOpen;
        });
    }

    static styleContainer style(std::int64_t id, const std::string& code) {
        styleContainer made = namedStyle("Style " + std::to_string(id), id);
        made.source = sourceCustom;
        made.styleData.sections = {{.code = code}};
        return made;
    }
    void keep(const styleContainer& draft) { drafts.keep(draft, drafts.next()); }
    void offerAll() {
        offer.offer();
        dispatcher.runAll();
    }

    StyleDrafts drafts{files, "/drafts"};
    EditorSaves saves{store, drafts, center, dispatcher};
    OpenStyles openStyles{center};
    DraftOffer offer{{store, drafts, saves, openStyles, center, alerts, dispatcher}};
    std::vector<styleToEdit> opened;
    bool mayOpen = true;
};

TEST_F(DraftOfferTest, RestoresIntoTheStyleThatIsStillThere) {
    styleContainer saved = style(1, "saved"), renamed = style(2, "before");
    saved.styleData.sections[0].compiledcode = "compiled since";
    renamed.styleData.name = "Renamed";
    renamed.isEnabled = false;
    putDocument({saved, renamed});
    keep(style(1, "saved"));
    keep(style(2, "unsaved"));
    alerts.answers = {{.button = 0}};
    offerAll();
    EXPECT_THAT(alerts.questions.at(0).text,
                HasSubstr("Changes to “Style 2” were not saved. They open"));
    renamed.styleData.sections[0].code = "unsaved";
    ASSERT_THAT(opened, SizeIs(1));
    EXPECT_TRUE(opened[0].isUnsaved && openStyles.contains(2));
    EXPECT_EQ(opened[0].style, renamed);
    EXPECT_THAT(drafts.all(), SizeIs(1)) << "it is still not saved";
    EXPECT_EQ(store.findStyle(2)->styleData.sections[0].code, "before");

    mayOpen = false;
    alerts.answers = {{.button = 0}};
    center.post(notifications::removeFromOpenStyles, 2);
    offerAll();
    EXPECT_FALSE(openStyles.contains(2)) << "a style whose window did not open is not locked";
    EXPECT_THAT(drafts.all(), SizeIs(1));
}

TEST_F(DraftOfferTest, RestoresAsANewStyleWhatHasNoPlaceAnyMore) {
    styleContainer installed = style(1, "from the site");
    installed.source = sourceUserCSS;
    putDocument({installed, style(2, "being edited")});
    compile = [](styleContainer& made) { made.styleData.sections[0].compiledcode = "compiled"; };
    for (std::int64_t id = 1; id <= 4; ++id)
        keep(style(id, "unsaved"));
    // Opened while the question is open.
    alerts.whileAsking = [&] { center.post(notifications::addToOpenStyles, 2); };
    alerts.answers = {{.button = 0}};
    offerAll();
    EXPECT_THAT(alerts.questions.at(0).text,
                HasSubstr("“Style 1”, “Style 2”, “Style 3” and 1 more"));
    EXPECT_EQ(*store.findStyle(1), installed);
    EXPECT_EQ(store.findStyle(2)->styleData.sections[0].code, "being edited");
    EXPECT_THAT(names(),
                ElementsAre("Style 1", "Style 2", "Style 1", "Style 2", "Style 3", "Style 4"));
    EXPECT_THAT(opened, SizeIs(4));
    const styleSection made{.code = "unsaved", .compiledcode = "compiled"};
    for (const auto& [restored, isUnsaved] : opened) {
        const auto landed = store.findStyle(restored.uniqueID);
        EXPECT_TRUE(landed->source == sourceCustom && !isUnsaved);
        EXPECT_THAT(landed->styleData.sections, ElementsAre(made));
        EXPECT_FALSE(landed->isEnabled) << "nobody has asked for it in pages";
    }
    EXPECT_THAT(drafts.all(), IsEmpty());

    files.full = true;
    const std::string bytes = *encodeDatabase({.styles = {style(9, "unsaved")}});
    files.contents["/drafts/9.draft"] = bytes;
    alerts.answers = {{.button = 0}};
    const CapturedLog log;
    offerAll();
    EXPECT_EQ(files.contents["/drafts/9.draft"], bytes) << "the style itself is not on the disk";
}

TEST_F(DraftOfferTest, DiscardsOnlyWhatWasOffered) {
    putDocument({style(1, "a"), style(2, "b")});
    keep(style(1, "unsaved"));
    keep(style(2, "unsaved"));
    alerts.whileAsking = [&] { keep(style(2, "typed since")); };
    alerts.answers = {{.button = 1}};
    offerAll();
    EXPECT_THAT(opened, IsEmpty());
    ASSERT_THAT(drafts.all(), SizeIs(1));
    EXPECT_EQ(drafts.all()[0].styleData.sections[0].code, "typed since");
    EXPECT_THAT(alerts.questions.at(0).text, HasSubstr("“Style 1” and “Style 2” were"));
}

TEST_F(DraftOfferTest, WhatIsNotAnsweredStaysAndIsOfferedWithItsStyle) {
    putDocument({style(1, "a"), style(2, "b")});
    keep(style(1, "unsaved"));
    offerAll();
    EXPECT_THAT(alerts.questions.at(0).buttons, ElementsAre("Restore", "Discard", "Not Now"));
    EXPECT_THAT(opened, IsEmpty());
    EXPECT_THAT(drafts.all(), SizeIs(1));

    EXPECT_FALSE(offer.styleForEditing(1)) << "what is written in it would replace the draft";
    EXPECT_THAT(alerts.questions.at(1).buttons, ElementsAre("Restore", "Discard", "Cancel"));
    for (const bool isRestored : {true, false}) {
        alerts.answers = {{.button = isRestored ? 0 : 1}};
        const styleToEdit given = offer.styleForEditing(1).value();
        dispatcher.runAll();
        EXPECT_EQ(given.style.styleData.sections[0].code, isRestored ? "unsaved" : "a");
        EXPECT_EQ(given.isUnsaved, isRestored);
        EXPECT_THAT(drafts.all(), SizeIs(isRestored ? 1 : 0)) << "it is still not saved";
    }
    EXPECT_FALSE(offer.styleForEditing(2)->isUnsaved);
    EXPECT_FALSE(offer.styleForEditing(3));
    EXPECT_THAT(alerts.questions, SizeIs(4));
}

} // namespace
} // namespace tessaril
