#include "import/paste_import.h"
#include "support/import_machine.h"
#include "support/test.h"

namespace tessaril {
namespace {

const RecordingAlerts::shown invalid{
    "Invalid Style", "There was an error importing this style. Please make sure there were no "
                     "formatting or syntax errors in this style."};
const RecordingAlerts::shown noRules{
    "CSS Imported With No Rules",
    "The style you have imported does not have any defined rules for where it should be applied. "
    "If you do not define these rules, the style will be applied to all sites."};

struct PasteImportTest : ::testing::Test, ImportMachine {
    std::optional<bool> import(const std::string& text) {
        std::optional<bool> outcome;
        const auto ticket = importer.importText(text, [&](bool imported) { outcome = imported; });
        EXPECT_THAT(dispatcher.mainTasks, IsEmpty()) << "read in the background";
        dispatcher.runAll();
        return outcome;
    }

    PasteImport importer{importing()};
};

TEST_F(PasteImportTest, TellsMarkedTextsFromPlainCSS) {
    const std::string metadata = "/* ==UserStyle==\n@name A\n==/UserStyle== */\nb {}";
    for (const auto& [text, name, source, code, shown] :
         std::vector<std::tuple<std::string, std::string, std::string, std::string,
                                std::vector<RecordingAlerts::shown>>>{
             {" b {}\n", "New Style from CSS", "custom", " b {}\n", {noRules}},
             {metadata, "A", "custom", "b {}", {}},
             {block, "Style from @-moz-document Format", "custom", "b { color: red }", {}},
             {"/* ==UserStyle==\n@updateURL u\n==/UserStyle== */" + block,
              "Style from @-moz-document Format",
              "usercss",
              "b { color: red }",
              {}}}) {
        EXPECT_EQ(import(text), true);
        EXPECT_EQ(last().styleData.name, name);
        EXPECT_EQ(last().source, source);
        ASSERT_EQ(last().styleData.sections.size(), 1U);
        EXPECT_EQ(last().styleData.sections[0].code, code);
        EXPECT_EQ(alerts.alerts, shown);
        alerts.alerts.clear();
    }
    EXPECT_EQ(written().styles.size(), 4U);
    EXPECT_EQ(announced, 4);

    EXPECT_EQ(import("@-moz-document domain(\"a\") {"), false);
    EXPECT_THAT(alerts.alerts, ElementsAre(invalid));
    EXPECT_EQ(names().size(), 4U);
}

TEST_F(PasteImportTest, AddsNothingOnceItsTicketIsGone) {
    for (const bool isRead : {false, true}) {
        bool called = false;
        auto ticket = importer.importText(lessStyle, [&](bool) { called = true; });
        if (isRead) SteppedDispatcher::step(dispatcher.backgroundTasks);
        ticket.reset();
        dispatcher.runAll();
        EXPECT_FALSE(called);
    }
    EXPECT_THAT(names(), IsEmpty());
    EXPECT_THAT(alerts.alerts, IsEmpty());
    EXPECT_EQ(toldOfErrors, 0) << "though it was compiled";
    EXPECT_EQ(import(lessStyle), true);
    EXPECT_EQ(toldOfErrors, 1);
}

TEST_F(PasteImportTest, OnlyBeepsWhileTheListIsLocked) {
    EXPECT_TRUE(importer.canImport("b {}"));
    EXPECT_FALSE(importer.canImport(" \n"));
    EXPECT_EQ(alerts.beeps, 0);
    list.setLockedForSync(true);
    EXPECT_FALSE(importer.canImport("b {}"));
    EXPECT_EQ(import("b {}"), false) << "locked while it was read";
    EXPECT_EQ(alerts.beeps, 2);
    EXPECT_THAT(names(), IsEmpty());
    EXPECT_THAT(alerts.alerts, IsEmpty());
}

} // namespace
} // namespace tessaril
