#include "support/event_loop.h"
#include "support/list_machine.h"
#include "support/test.h"
#include "windows/style_list_view.h"

#include <QAbstractItemModelTester>

namespace tessaril {
namespace {

/// The list's window is the model; Qt's own tester checks everything it announces.
struct StyleListModelTest : ::testing::Test {
    ~StyleListModelTest() override { machine.list.setObserver(&machine); }

    std::string shown() const {
        std::string letters;
        for (int position = 0; position < model.rowCount(); ++position)
            letters += model.index(position).data().toString().toStdString();
        return letters;
    }
    /// What a filter for the letter, of either case, has to leave of the rows.
    std::string expected(char letter) const {
        std::string letters = machine.shown();
        if (letter != 0) std::erase_if(letters, [&](char each) { return (each | 32) != letter; });
        return letters;
    }

    struct BegunMachine : ListMachine {
        BegunMachine() { begin("aBcAbCaabbcc"); }
    } machine;
    StyleListModel model{machine.list};
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(StyleListModelTest, ShowsWhatTheFilterFindsThroughEveryChange) {
    std::mt19937 random(7); // the same at every run
    const auto below = [&](std::size_t count) { return random() % count; };
    char letter = 0;
    for (int step = 0; step < 600; ++step) {
        const std::size_t count = machine.list.styles().size();
        switch (below(count < 4 ? 3 : 6)) {
        case 0:
            letter = "\0abc"[below(4)];
            model.setFilter(QString(letter != 0 ? 1 : 0, QChar(letter)));
            break;
        case 1:
        case 2: {
            const std::size_t place = below(count + 1);
            const std::string name(1, "aAbBcC"[below(6)]);
            for (const std::size_t index : {place, place + 1})
                machine.store.insertStyle(
                    std::make_shared<const styleContainer>(namedStyle(name, 100 + step)), index);
            machine.list.insertRows({place, place + 1});
            break;
        }
        case 3: {
            const std::size_t first = below(count - 2);
            for (const std::size_t gone : {first + 2, first + 1, first})
                if (gone != first + 1) machine.store.deleteStyle(gone);
            machine.list.removeRows({first, first + 2});
            break;
        }
        default:
            const std::size_t from = below(count);
            const std::size_t to = below(count);
            machine.store.moveStyle(from, to);
            machine.list.moveRow(from, to);
        }
        ASSERT_EQ(shown(), expected(letter)) << step;
        for (int position = 0; position < model.rowCount(); ++position)
            ASSERT_EQ(model.positionOf(model.rowAt(position)), position);
    }
}

TEST_F(StyleListModelTest, ARowThatMovesBetweenHiddenOnesStaysItself) {
    model.setFilter("b");
    const QPersistentModelIndex second = model.index(1);
    const auto id = second.data(StyleListModel::idRole);
    machine.list.moveRow(model.rowAt(1), 0);
    EXPECT_EQ(second.row(), 0);
    machine.list.moveRow(0, 2);
    EXPECT_EQ(second.row(), 1);
    EXPECT_EQ(second.data(StyleListModel::idRole), id);
}

TEST_F(StyleListModelTest, TheViewTellsWhichRowsAreOnTheScreen) {
    StyleListView view(machine.list, machine.commands, model);
    view.resize(400, 120);
    view.show();
    const auto onScreen = [&] { return machine.icons.onScreen; };
    ASSERT_TRUE(eventually([&] { return !onScreen().empty(); }));
    EXPECT_EQ(onScreen().front(), 1);
    EXPECT_LT(onScreen().size(), 5U);
    view.scrollToBottom();
    EXPECT_TRUE(eventually([&] { return onScreen().back() == 12; }));
    EXPECT_GT(onScreen().front(), 1);
    model.setFilter("c");
    EXPECT_TRUE(eventually([&] { return onScreen().front() == 3; }));
}

} // namespace
} // namespace tessaril
