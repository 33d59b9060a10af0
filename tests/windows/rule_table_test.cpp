#include "support/test.h"
#include "support/user.h"
#include "windows/rule_editor_sheet.h"

namespace tessaril {
namespace {

using Rows = std::vector<typedRule>;

/// The sheet over a section, with its table.
struct RuleEditorSheetTest : ::testing::Test, RuleEditorDelegate {
    ~RuleEditorSheetTest() override { delete sheet; }

    void open(Rows rows, bool isReadOnly = false) {
        section = {std::move(rows), " Name\n"};
        sheet = new RuleEditorSheet(*this, isReadOnly, nullptr);
        sheet->show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(sheet));
        view = sheet->findChild<QTableView*>("rules");
    }
    std::optional<ruleDictionary> rulesForCurrentSection() override { return section; }
    void applyRules(const ruleDictionary& rules) override { applied = rules; }

    QToolButton& button(const char* name) { return partOf<QToolButton>(*sheet, name); }
    void click(int row, int column) { clickRow(*view, view->model()->index(row, column)); }
    static void key(const char* words) { press(words, true); }
    QLineEdit* field() { return qobject_cast<QLineEdit*>(QApplication::focusWidget()); }
    int selectedRow() {
        const QModelIndexList selected = view->selectionModel()->selectedRows();
        return selected.isEmpty() ? -1 : selected.front().row();
    }
    /// Saves and gives the rows that were applied.
    Rows saved() {
        press("Ctrl+S");
        EXPECT_TRUE(eventually([this] { return !sheet; }));
        return applied ? applied->dictionary : Rows{};
    }

    ruleDictionary section;
    std::optional<ruleDictionary> applied;
    QPointer<RuleEditorSheet> sheet;
    QTableView* view = nullptr;
};

TEST_F(RuleEditorSheetTest, AddsAndEditsInPlaceAndSavesWithTheFieldOpen) {
    open({});
    EXPECT_TRUE(sheet->findChild<QLabel*>("emptyNote")->isVisible());
    clickOn(button("addRuleButton"));
    EXPECT_FALSE(sheet->findChild<QLabel*>("emptyNote")->isVisible());
    ASSERT_TRUE(field());
    key("'a.example' Return");
    ASSERT_TRUE(sheet && sheet->isVisible()) << "the key was for the field";
    EXPECT_EQ(QApplication::focusWidget(), view);

    button("addRuleButton").setFocus();
    QTimer::singleShot(0, sheet, [this] { // the menu runs a loop of its own
        key("Up Return");
    });
    key("Down");
    ASSERT_TRUE(field());
    EXPECT_EQ(selectedRow(), 1);
    EXPECT_TRUE(field()->placeholderText().startsWith("https://(www")) << "of an expression";
    press("' x{2}'");
    EXPECT_EQ(saved(), (Rows{{"Domain", "a.example"}, {"RegExp", " x{2}"}}));
    EXPECT_EQ(applied->sectionName, "Name");
}

TEST_F(RuleEditorSheetTest, ChangesTheTypeInItsMenu) {
    open({{"Domain", "a"}, {"Strange", "b"}, {"Domain", "c"}});
    click(0, 0);
    auto* menu = qobject_cast<QComboBox*>(view->indexWidget(view->model()->index(0, 0)));
    ASSERT_TRUE(menu && menu->view()->isVisible()) << "by one click";
    key("Down Down Return");
    EXPECT_TRUE(eventually([this] { return QApplication::focusWidget() == view; }));

    key("Down");
    EXPECT_EQ(view->currentIndex().data(), "Strange");
    key("Space Esc"); // nothing was chosen
    EXPECT_TRUE(eventually([this] { return QApplication::focusWidget() == view; }));
    key("Down Right Alt+Down Down Return");
    EXPECT_EQ(saved(), (Rows{{"URL starts with", "a"}, {"Strange", "b"}, {"URL is", "c"}}));
}

TEST_F(RuleEditorSheetTest, RemovesByButtonAndKeyAndSelectsWhatTakesThePlace) {
    open({{"Domain", "a"}, {"Domain", "b"}, {"Domain", "c"}, {"Domain", "d"}});
    EXPECT_FALSE(button("removeRuleButton").isEnabled());
    click(1, 1);
    EXPECT_EQ(QApplication::focusWidget(), view) << "the first click selects";
    key("Del");
    EXPECT_EQ(selectedRow(), 1);
    click(1, 1);
    ASSERT_TRUE(field()) << "the second edits";
    key("'!' Backspace"); // within the text
    clickOn(button("removeRuleButton"));
    EXPECT_EQ(selectedRow(), 1);
    key("Backspace");
    EXPECT_EQ(selectedRow(), 0) << "the last";
    EXPECT_EQ(QApplication::focusWidget(), view);
    button("removeRuleButton").setFocus();
    key("Space");
    EXPECT_FALSE(button("removeRuleButton").isEnabled());
    EXPECT_EQ(QApplication::focusWidget(), view) << "not a button, for the next key press";
    partOf<QWidget>(*sheet, "sectionNameField").setFocus();
    press("Return");
    EXPECT_TRUE(eventually([this] { return !sheet; }));
    EXPECT_TRUE(applied && applied->dictionary.empty());
}

TEST_F(RuleEditorSheetTest, WritesNothingThatWasNotTyped) {
    const Rows rows{{"RegExp", "a\nb\tc"}, {"Domain", "\xEF\xBB\xBFx\xFF"}, {"Domain", ""}};
    open(rows);
    EXPECT_EQ(view->model()->index(0, 1).data(), "a b c");
    view->setFocus();
    key("Tab");
    for (std::size_t row = 0; row < rows.size(); ++row) {
        ASSERT_TRUE(field()) << "Tab goes from field to field";
        EXPECT_EQ(field()->text(), view->model()->index(int(row), 1).data(Qt::EditRole));
        key("'typed' Esc");
        ASSERT_TRUE(sheet && sheet->isVisible()) << "the key was for the field";
        key("Tab");
        if (row + 1 < rows.size()) key("Tab");
    }
    EXPECT_EQ(QApplication::focusWidget(), &button("addRuleButton")) << "and out of the table";
    key("Backtab F2");
    ASSERT_TRUE(field());
    EXPECT_EQ(saved(), rows);
}

TEST_F(RuleEditorSheetTest, ShowsRulesThatMayNotBeChanged) {
    open({{"RegExp", "a\nb"}}, true);
    EXPECT_FALSE(sheet->findChild<QLineEdit*>("sectionNameField")->isEnabled());
    EXPECT_FALSE(button("addRuleButton").isEnabled());
    click(0, 0);
    click(0, 1);
    EXPECT_FALSE(button("removeRuleButton").isEnabled());
    key("F2 Space Del X");
    key("Alt+Down");
    EXPECT_EQ(QApplication::focusWidget(), view);
    EXPECT_EQ(view->model()->rowCount(), 1);
    key("Ctrl+C");
    EXPECT_EQ(QApplication::clipboard()->text(), "a\nb");
    saved();
    EXPECT_FALSE(applied);
}

} // namespace
} // namespace tessaril
