#include "events/notification_names.h"
#include "model/rule_types.h"
#include "preferences/preference_keys.h"
#include "store/open_styles.h"
#include "style_editor/style_editor_controller.h"
#include "support/recording_web_view.h"
#include "support/store_machine.h"
#include "support/test.h"

namespace tessaril {
namespace {

/// An editor on the style 7 over a stand-in page.
struct StyleEditorTest : ::testing::Test, StoreMachine<> {
    static styleContainer style(std::vector<styleSection> sections) {
        styleContainer made = namedStyle("Site", 7);
        made.styleData.sections = std::move(sections);
        return made;
    }

    void openCustom(std::vector<styleSection> sections) { open(style(std::move(sections))); }
    void open(const styleContainer& opened, bool isDirty = false) {
        preferences.registerDefault(preferenceKeys::warnReadOnly, true);
        preferences.registerDefault(preferenceKeys::fontSize, std::int64_t{12});
        if (files.contents.empty()) putDocument({opened});
        center.post(notifications::addToOpenStyles, opened.uniqueID);
        editor = std::make_unique<StyleEditorController>(
            styleEditorSurroundings{saves, drafts, center, alerts, dispatcher, preferences,
                                    controls, exporter},
            opened, isDirty, view);
        editor->setHandlers({.showSections = [this] { titles = editor->sectionTitles(); },
                             .close = [this] { ++closed; }});
        page.observer->navigationFinished();
        page.waiting.clear();
        page.taken();
    }
    void passDelays() {
        dispatcher.passDelays();
        dispatcher.runAll();
    }

    /// What the command does once the page has told its text.
    template <typename Command>
    void run(Command command, const std::string& text) {
        command();
        page.waiting.clear();
        page.observer->messageReceived("callback", "inputHandled");
        page.answer(text);
        dispatcher.runAll();
    }
    void run(void (StyleEditorController::*command)()) {
        run([&] { (editor.get()->*command)(); }, section().code);
    }
    const styleSection& section(std::size_t index) const {
        return editor->style().styleData.sections.at(index);
    }
    const styleSection& section() const { return section(editor->currentSection()); }
    /// What is on the main thread, but nothing in the background.
    void runMain() {
        dispatcher.passDelays();
        while (SteppedDispatcher::step(dispatcher.mainTasks)) {
        }
    }
    void runQuietly() {
        const CapturedLog log;
        dispatcher.runAll();
    }
    std::vector<styleContainer> kept() {
        const CapturedLog log;
        return drafts.all();
    }

    RecordingWebView page;
    UndoManager undo;
    WKAceView view{page, center, undo};
    PreferenceSync sync{preferences, nullptr, center, dispatcher};
    PreferenceControls controls{preferences, preferences, sync};
    StyleExport exporter{files, alerts, dispatcher};
    StyleDrafts drafts{files, "/drafts"};
    EditorSaves saves{store, drafts, center, dispatcher};
    OpenStyles openStyles{center};
    std::unique_ptr<StyleEditorController> editor;
    std::vector<std::string> titles;
    int closed = 0;
};

TEST_F(StyleEditorTest, WhatWasTypedLastIsStoredSwitchedAndClosedWith) {
    openCustom({{.code = "a"}, {.code = "b"}});
    EXPECT_FALSE(editor->isDirty());
    run([&] { editor->nextSection(); }, "typed");
    EXPECT_EQ(section(0).code, "typed");
    EXPECT_EQ(editor->currentSection(), 1u);
    EXPECT_TRUE(editor->isDirty());
    EXPECT_THAT(page.taken(),
                ::testing::IsSupersetOf({"editor.setValue(\"b\");", "editor.scrollToRow(0);"}));

    run([&] { editor->saveDocument(); }, "saved");
    EXPECT_EQ(written().styles[0].styleData.sections[1].code, "saved");
    for (int round = 0; round < 2; ++round) // not beyond the first
        run(&StyleEditorController::previousSection);
    EXPECT_EQ(editor->currentSection(), 0u);
    EXPECT_FALSE(editor->isDirty()) << "to look at a section is no change";

    alerts.answers = {{.button = 0}};
    run([&] { editor->closeClicked(), editor->closeClicked(); }, "last");
    EXPECT_EQ(closed, 1);
    EXPECT_THAT(alerts.questions, SizeIs(1)) << "however often it was asked for";
    EXPECT_EQ(alerts.questions.at(0).title, "Would you like to save changes to Site?");
    EXPECT_THAT(alerts.questions.at(0).buttons, ElementsAre("Save", "Cancel", "Don't Save"));
    EXPECT_EQ(alerts.questions.at(0).closingButton, 1) << "Escape means Cancel";
    EXPECT_EQ(written().styles[0].styleData.sections[0].code, "last");
    EXPECT_FALSE(openStyles.contains(7));
}

TEST_F(StyleEditorTest, APageThatIsSlowIsWaitedForAndOneThatIsSilentOrGoneIsNot) {
    openCustom({{.code = "a"}, {.code = "b"}, {.code = "c"}});
    editor->nextSection();
    editor->nextSection();
    dispatcher.runAll();
    for (const std::size_t current : {0, 1, 2}) {
        EXPECT_EQ(editor->currentSection(), current);
        passDelays();
    }
    run([] {}, "late");
    EXPECT_EQ(editor->currentSection(), 2u);

    editor.reset();
    openCustom({{.code = "a"}, {.code = "b"}});
    editor->saveDocument();
    for (const char* text : {"one", "two", "three"}) {
        page.type(text);
        passDelays();
        EXPECT_TRUE(editor->isDirty()) << "not saved yet";
    }
    passDelays();
    EXPECT_FALSE(editor->isDirty()) << "it has been silent since";
    EXPECT_EQ(written().styles[0].styleData.sections[0].code, "three");

    page.type("typed");
    editor->saveDocument();
    page.observer->pageLost();
    dispatcher.runAll();
    EXPECT_FALSE(editor->isDirty());
    EXPECT_EQ(written().styles[0].styleData.sections[0].code, "typed");
}

TEST_F(StyleEditorTest, NothingHappensBehindASheet) {
    openCustom({{.code = "a"}, {.code = "b"}});
    bool wasClosed = false;
    const auto openSheet = [&] {
        editor->whenTextIsKnown([&] { editor->sheetOpened(); });
        editor->nextSection();
        editor->closeClicked([&] { wasClosed = true; });
    };
    run(openSheet, "a");
    passDelays();
    EXPECT_EQ(editor->currentSection(), 0u);
    editor->addSection({.name = "From the sheet"});
    passDelays();
    EXPECT_THAT(titles, IsEmpty()) << "it is still open";
    run([&] { editor->sheetClosed(); }, "a");
    EXPECT_EQ(editor->currentSection(), 2u);
    EXPECT_EQ(closed, 0) << "what was meant for the window is forgotten";
    alerts.answers = {{.button = 2}};
    run([&] { editor->closeClicked(); }, "");
    EXPECT_EQ(closed, 1);
    EXPECT_FALSE(wasClosed);
}

TEST_F(StyleEditorTest, SectionsAreAddedDuplicatedAndDeleted) {
    openCustom({{.urls = {"u"}, .domains = {"d"}, .code = "a", .compiledcode = "x"}});
    const auto add = [&](const newSectionFields& fields) {
        run([&] { editor->addSection(fields); }, section().code);
        return section();
    };
    EXPECT_EQ(add({.name = " \n", .rule = " example.com "}),
              (styleSection{.domains = {"example.com"}}));
    EXPECT_EQ(add({.name = " Dark ", .ruleType = 3, .rule = "r"}),
              (styleSection{.regexps = {"r"}, .sectionName = "Dark"}));
    EXPECT_EQ(add({.rule = " "}), styleSection{});
    EXPECT_THAT(titles, ElementsAre("Section 1", "Section 2", "Dark", "Section 4"));
    EXPECT_TRUE(editor->isDirty());
    run([&] { editor->selectSection(0); }, "");
    EXPECT_EQ(add({.ruleType = 1, .rule = "not", .copiesRules = true}),
              (styleSection{.urls = {"u"}, .domains = {"d"}}));
    run([&] { editor->selectSection(2); }, "");
    undo.registerAction("Beautify", &view, [] {});
    run([&] { editor->duplicateSection(); }, "code");
    EXPECT_FALSE(undo.canUndo()) << "that was in the other section, whose text is the same";
    EXPECT_EQ(section(), section(2));
    EXPECT_EQ(section(5).code, "code");

    alerts.answers = {{.button = 1}, {.button = 0}};
    run(&StyleEditorController::deleteSectionClicked);
    EXPECT_EQ(titles.size(), 6u) << "No";
    run(&StyleEditorController::deleteSectionClicked);
    EXPECT_EQ(alerts.questions.at(0).title, "Are you sure you want to delete Dark?");
    EXPECT_EQ(editor->currentSection(), 4u);
    run([&] { editor->selectSection(3); }, "code");
    run(&StyleEditorController::deleteSectionClicked);
    EXPECT_THAT(alerts.questions, SizeIs(2)) << "an empty one goes without a question";
    EXPECT_EQ(editor->currentSection(), 2u);
    run([&] { editor->selectSection(0); }, "code");
    alerts.answers = {3, {.button = 0}};
    for (int i = 0; i < 4; ++i) {
        run(&StyleEditorController::deleteSectionClicked);
        EXPECT_EQ(editor->currentSection(), 0u);
    }
    EXPECT_THAT(titles, SizeIs(1));
    EXPECT_THAT(alerts.taken(), ElementsAre("Cannot Delete Section"));
}

TEST_F(StyleEditorTest, AReadOnlyStyleBeepsAndStaysAsItIs) {
    styleContainer installed = style({{.code = "a"}, {.code = "b"}});
    installed.source = sourceUserCSS;
    alerts.answers = {{.button = 0, .suppressed = true}};
    open(installed);
    dispatcher.runAll();
    EXPECT_EQ(alerts.questions.at(0).title, "Style is Read-Only");
    EXPECT_FALSE(preferences.boolean(preferenceKeys::warnReadOnly));
    page.type("typed");
    editor->saveDocument();
    EXPECT_FALSE(editor->mayAddSection());
    editor->addSection({});
    editor->duplicateSection();
    editor->deleteSectionClicked();
    editor->beautifyClicked();
    editor->applyRules({});
    editor->setMetadata({.author = "me"});
    EXPECT_EQ(alerts.beeps, 6);
    EXPECT_FALSE(editor->isDirty());
    editor->nextSection();
    EXPECT_EQ(editor->currentSection(), 1u) << "at once";
    editor->closeClicked();
    EXPECT_EQ(closed, 1);
    EXPECT_THAT(alerts.questions, SizeIs(1));
    passDelays();
    EXPECT_EQ(*store.styleAt(0), installed);
    EXPECT_THAT(kept(), IsEmpty());

    editor.reset();
    open(installed);
    dispatcher.runAll();
    EXPECT_THAT(alerts.questions, SizeIs(1)) << "the note is turned off";
}

TEST_F(StyleEditorTest, RulesMetadataAndFontSizeAreSetFromTheWindow) {
    openCustom({{.domains = {"d"}, .code = "a"}});
    ruleDictionary rules = editor->rulesForCurrentSection().value();
    rules.dictionary.push_back({std::string(urlRule), "u"});
    rules.sectionName = "Named";
    editor->applyRules(rules);
    EXPECT_THAT(titles, ElementsAre("Named"));
    EXPECT_EQ(section().urls, std::vector<std::string>{"u"});
    EXPECT_TRUE(editor->isDirty());
    EXPECT_EQ(editor->proposedSectionFile(), "Site - Named.css");
    editor->exportSection("/home/x.css");
    run([] {}, "last");
    EXPECT_EQ(files.contents["/home/x.css"], "last");

    metadataFields fields = editor->metadata();
    fields.author = " Me ";
    for (const auto& [position, value] :
         {std::pair(0, "default"), {1, "uso"}, {2, "stylus"}, {3, "less"}}) {
        fields.preprocessor = position;
        editor->setMetadata(fields);
        EXPECT_EQ(editor->style().preprocessor, value);
        EXPECT_EQ(editor->metadata().preprocessor, position);
    }
    EXPECT_EQ(editor->style().author, "Me");
    EXPECT_THAT(page.taken(), Contains("editor.session.setMode(\"ace/mode/less\");"));

    for (int i = 0; i < 20; ++i)
        editor->increaseFontSize();
    EXPECT_TRUE(controls.fontSize() == 24 && alerts.beeps == 8);
    for (int i = 0; i < 20; ++i)
        editor->decreaseFontSize();
    EXPECT_TRUE(controls.fontSize() == 8 && alerts.beeps == 12);
}

TEST_F(StyleEditorTest, FollowsItsOwnStyle) {
    openCustom({{.code = "a"}});
    const auto changeInCloud = [&](std::vector<std::int64_t> ids) {
        center.post({notifications::stylesChangedInCloud, {{"changedIDs", std::move(ids)}}});
        dispatcher.runAll();
    };
    center.post({notifications::styleNameChanged, {{"id", 7}, {"newname", "New"}}});
    center.post({notifications::styleNameChanged, {{"id", 8}, {"newname", "Other"}}});
    changeInCloud({6, 8});
    EXPECT_EQ(editor->style().styleData.name, "New");
    EXPECT_EQ(closed, 0);
    page.type("typed");
    changeInCloud({6, 7});
    EXPECT_EQ(closed, 1);
    EXPECT_FALSE(openStyles.contains(7));
    EXPECT_THAT(alerts.questions, IsEmpty());
    EXPECT_EQ(kept().at(0).styleData.sections[0].code, "typed") << "not gone for good";
}

TEST_F(StyleEditorTest, WhatIsNotSavedOutlivesTheRun) {
    openCustom({{.code = "a"}});
    page.type("typed");
    page.type("more");
    EXPECT_THAT(dispatcher.delayedTasks, SizeIs(1)) << "not at every key";
    passDelays();
    EXPECT_EQ(kept().at(0), editor->style());
    const styleContainer left = editor->style();

    files.full = true;
    page.type("lost");
    dispatcher.passDelays();
    runQuietly();
    files.full = false;
    EXPECT_EQ(kept().at(0), left) << "rather than nothing";
    files.contents["/drafts/8.draft"] = "{";
    files.contents["/drafts/9.draft"] = files.contents["/drafts/7.draft"];
    EXPECT_THAT(kept(), SizeIs(1));

    // A save takes its time, and may fail.
    editor->saveDocument();
    runMain();
    compile = [&](styleContainer&) {
        EXPECT_THAT(files.contents["/drafts/7.draft"], HasSubstr("lost"));
        files.full = true;
    };
    runQuietly();
    EXPECT_EQ(kept().at(0).styleData.sections[0].code, "lost") << "it is not in the database";
    files.full = false;
    compile = [](styleContainer&) {};
    store.setStyleData(7, style({{.code = "a"}}).styleData);
    alerts.alerts.clear();

    editor.reset();
    open(left, true);
    EXPECT_TRUE(editor->isDirty());
    alerts.answers = {{.button = 1}, {.button = 2}};
    run([&] { editor->closeClicked(); }, section().code);
    EXPECT_EQ(closed, 0) << "Cancel";
    EXPECT_THAT(kept(), SizeIs(1));
    run([&] { editor->closeClicked(); }, section().code);
    EXPECT_EQ(closed, 1) << "Don't Save";
    EXPECT_THAT(kept(), IsEmpty());
    EXPECT_EQ(store.styleAt(0)->styleData.sections[0].code, "a");
}

TEST_F(StyleEditorTest, TheLastOfSeveralSavesWinsHoweverLongEachTakes) {
    openCustom({{.code = "a"}});
    page.type("one");
    passDelays();
    for (const char* text : {"one", "two", "three"}) {
        page.type(text);
        editor->saveDocument();
        runMain();
    }
    editor->leave();
    EXPECT_EQ(saves.styleForEditing(7)->styleData.sections[0].code, "three") << "opened again";
    store.renameStyle(0, "Renamed");
    runMain();
    EXPECT_THAT(kept(), SizeIs(1)) << "until it is stored";
    dispatcher.runAll();
    EXPECT_EQ(written().styles[0].styleData.sections[0].code, "three");
    EXPECT_EQ(written().styles[0].styleData.name, "Renamed") << "not as when it was saved";
    EXPECT_THAT(kept(), IsEmpty());
    EXPECT_EQ(saves.styleForEditing(7)->styleData.sections[0].code, "three");

    styleContainer gone = style({{.code = "x"}});
    gone.uniqueID = 99;
    drafts.keep(gone, drafts.next());
    saves.save(gone);
    dispatcher.runAll();
    EXPECT_THAT(kept(), SizeIs(1)) << "its style is gone, the text is not";
}

} // namespace
} // namespace tessaril
