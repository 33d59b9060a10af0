#include "import/paste_import.h"
#include "support/import_machine.h"
#include "support/test.h"

namespace tessaril {
namespace {

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
    const std::string updated = "/* ==UserStyle==\n@updateURL u\n==/UserStyle== */" + block;
    for (const auto& [text, name, source, code] : std::vector<std::array<std::string, 4>>{
             {" b {}\n", "New Style from CSS", "custom", " b {}\n"},
             {metadata, "A", "custom", "b {}"},
             {block, "Style from @-moz-document Format", "custom", "b { color: red }"},
             {updated, "Style from @-moz-document Format", "usercss", "b { color: red }"}}) {
        EXPECT_EQ(import(text), true);
        EXPECT_EQ(last().styleData.name, name);
        EXPECT_EQ(last().source, source);
        ASSERT_EQ(last().styleData.sections.size(), 1U);
        EXPECT_EQ(last().styleData.sections[0].code, code);
    }
    EXPECT_EQ(written().styles.size(), 4U);
    EXPECT_EQ(announced, 4);
    EXPECT_THAT(alerts.taken(), ElementsAre("CSS Imported With No Rules")) << "of the first";

    EXPECT_EQ(import("@-moz-document domain(\"a\") {"), false);
    EXPECT_THAT(alerts.taken(), ElementsAre("Invalid Style"));
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
