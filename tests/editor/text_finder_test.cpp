#include "model/text.h"
#include "support/edited_text.h"
#include "support/test.h"

namespace tessaril {
namespace {

using tag = textFinderAction;

struct Finding : EditedText {
    explicit Finding(const std::string& text, const std::string& searched = "")
        : EditedText(text), finder(view.finder()) {
        view.performTextFinderAction(tag::showReplaceInterface);
        finder.setSearchText(searched);
        page.taken();
    }
    /// Where the command selects. Before it replaces anything it asks the page for its text.
    textRange after(tag command) {
        page.taken();
        view.performTextFinderAction(command);
        if (page.statements == std::vector<std::string>{"editor.getValue();"}) {
            page.taken();
            page.answerLast(view.string());
        }
        return view.firstSelectedRange();
    }
    /// The page takes the text that a replacement has set.
    void settle() { page.answer(view.string()); }

    TextFinder& finder;
};

TEST(TextFinder, GoesThroughTheMatchesBothWaysAndAroundTheEnd) {
    Finding text("aXa\U0001F600aaa", "A");
    text.after(tag::nextMatch);
    EXPECT_EQ(text.after(tag::nextMatch), (textRange{5, 1}));
    EXPECT_EQ(text.after(tag::previousMatch), (textRange{2, 1}));
    text.after(tag::previousMatch);
    EXPECT_EQ(text.after(tag::previousMatch), (textRange{7, 1}));
    EXPECT_EQ(text.finder.report(), (findReport{.matches = 5, .current = 4, .wrapped = true}));
    EXPECT_EQ(text.after(tag::nextMatch), (textRange{0, 1}));
    text.finder.setWrapAround(false);
    EXPECT_EQ(text.after(tag::previousMatch), (textRange{0, 1}));
    EXPECT_EQ(text.finder.report(), (findReport{.matches = 5, .current = 0, .notFound = true}));
    text.finder.setMatchCase(true);
    EXPECT_EQ(text.finder.report(), (findReport{.notFound = true}));
    text.page.type("A now"); // counted anew, but nobody has selected it
    EXPECT_EQ(text.finder.report(), (findReport{.matches = 1}));
}

TEST(TextFinder, FoldsCaseWithoutMovingPlaces) {
    // The Kelvin sign, the long s, a letter outside the first plane; a sharp s is no "ss".
    Finding text("\u212A\U00010400 \u1E9E k\U00010428 \u017F\u03A3\u03C2", "K\U00010428");
    EXPECT_EQ(text.after(tag::nextMatch), (textRange{6, 3}));
    EXPECT_EQ(text.finder.report().matches, 2u);
    for (const auto& [searched, count] :
         {std::pair("S", 1u), {"\u03C3", 2u}, {"ss", 0u}, {"\u00DF", 1u}, {"", 0u}}) {
        text.finder.setSearchText(searched);
        EXPECT_EQ(text.finder.report().matches, count) << searched;
    }
}

TEST(TextFinder, SearchesWhileTypingFromWhereItBegan) {
    Finding text("ab abc abcd");
    text.finder.setSearchText("ab");
    text.after(tag::nextMatch);
    for (const std::string searched : {"abcd", "abcde", "abc"})
        text.finder.setSearchText(searched);
    EXPECT_EQ(text.view.firstSelectedRange(), (textRange{3, 3}));
    text.after(tag::hideFindInterface);
    text.finder.setSearchText("b");
    EXPECT_EQ(text.view.firstSelectedRange(), (textRange{3, 3}));
    EXPECT_EQ(text.after(tag::nextMatch), (textRange{8, 1}));
}

TEST(TextFinder, ReplacesOnlyInATextThatHasSettled) {
    Finding text("one two", "one");
    text.finder.setReplacement("1");
    text.page.report();
    text.view.performTextFinderAction(tag::replaceAll);
    text.page.answer("x one two");
    text.page.answer("xy one two"); // typed, but not yet reported
    EXPECT_EQ(text.view.string(), "xy 1 two");
    EXPECT_EQ(text.changes.back(), "told xy 1 two");
    // Of what was asked for nothing is left when the host shows another text.
    text.settle();
    text.view.performTextFinderAction(tag::replaceAll);
    text.view.setString("another one");
    text.page.answer("xy 1 two, typed");
    text.settle();
    EXPECT_EQ(text.view.string(), "another one");
    text.after(tag::replaceAll);
    EXPECT_EQ(text.view.string(), "another 1");
    // Typed just before the undo, known only after it.
    text.settle();
    text.page.report();
    text.undo.undo();
    EXPECT_EQ(text.view.string(), "another one");
    text.page.answer("x another 1");
    text.undo.redo();
    EXPECT_EQ(text.view.string(), "x another 1");
}

TEST(TextFinder, DropsAReplacementThatHasBecomeMeaningless) {
    Finding undone("one", "one");
    undone.finder.setReplacement("1");
    undone.after(tag::replaceAll);
    undone.settle();
    undone.finder.setSearchText("1");
    undone.finder.setReplacement("2");
    undone.view.performTextFinderAction(tag::replaceAll);
    undone.undo.undo();
    undone.page.answer("1");
    EXPECT_EQ(undone.view.string(), "one");

    Finding readOnly("one", "one");
    readOnly.view.performTextFinderAction(tag::replaceAll);
    readOnly.view.setReadOnly();
    readOnly.page.answer("one");
    EXPECT_EQ(readOnly.view.string(), "one");

    // A step comes after the replacement of the match that was selected.
    Finding stepped("one one", "one");
    stepped.after(tag::nextMatch);
    stepped.finder.setReplacement("1");
    const textRange selected = stepped.view.firstSelectedRange();
    stepped.view.performTextFinderAction(tag::replace);
    EXPECT_EQ(stepped.after(tag::nextMatch), selected);
    stepped.page.answer("one one");
    EXPECT_EQ(stepped.view.string(), selected.location == 0 ? "1 one" : "one 1");
}

TEST(TextFinder, SelectsTheNextMatchWhenTheReplacedTextHasArrived) {
    Finding text("one two one one", "one");
    text.finder.setReplacement("\U0001F600");
    text.after(tag::replaceAndFind);
    EXPECT_EQ(text.view.string(), "\U0001F600 two one one");
    text.after(tag::replaceAndFind); // too early: would replace what is not selected yet
    EXPECT_THAT(text.page.taken(), IsEmpty());
    text.settle();
    EXPECT_EQ(text.page.taken().back(), "editor.session.selection.clearSelection();"
                                        "editor.session.selection.setRange(new Range(0, 7, 0, 10));"
                                        "editor.centerSelection();");
    text.after(tag::replace);
    text.settle();
    EXPECT_EQ(text.view.firstSelectedRange(), (textRange{7, 2})); // the replacement itself
    text.undo.undo();
    EXPECT_EQ(text.undo.redoName(), "Replace");
    text.settle();

    // A text that the host sets meanwhile, or one that the page refuses, has no such selection.
    text.after(tag::nextMatch);
    text.after(tag::replaceAndFind);
    text.view.setString("one host");
    text.page.taken();
    text.settle();
    text.settle();
    for (const std::string& statement : text.page.taken())
        EXPECT_EQ(statement.find("setRange"), std::string::npos);
    text.after(tag::nextMatch);
    text.after(tag::replace);
    text.page.fail();
    text.after(tag::nextMatch);
    EXPECT_TRUE(text.finder.report().notFound);
}

TEST(TextFinder, ReplacesAllAsOneChangeOfOneText) {
    constexpr std::size_t count = 50'000;
    std::string original;
    for (std::size_t i = 0; i < count; ++i)
        original += "a { Color: \u00E4 \U0001F600 red; }\r\n";
    Finding text(original, "color");
    text.finder.setReplacement("colour");
    text.after(tag::replaceAll);
    EXPECT_TRUE(text.view.string() == replacingAll(original, "Color", "colour"));
    EXPECT_EQ(text.page.taken().size(), 2u);
    text.settle();
    EXPECT_EQ(text.finder.report().replaced, count);
    EXPECT_EQ(text.changes.size(), 2u);
    text.undo.undo();
    EXPECT_TRUE(text.view.string() == original);
    EXPECT_FALSE(text.undo.canUndo() || text.finder.report().replaced);
}

} // namespace
} // namespace tessaril
