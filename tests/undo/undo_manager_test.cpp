#include "undo/undo_manager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tessaril {
namespace {

using ::testing::ElementsAre;

TEST(UndoManager, TurnsBackAndForthUntilSomethingNewHappens) {
    UndoManager manager;
    std::vector<std::string> done;
    int owner = 0;
    std::function<void(std::string, std::string)> change = [&](auto name, auto what) {
        done.push_back(what);
        manager.registerAction(name, &owner, [=, &change] { change(name, "not " + what); });
    };
    change("First", "a");
    change("Second", "b");
    manager.undo();
    manager.undo();
    manager.undo();
    EXPECT_EQ(manager.redoName(), "First");
    EXPECT_FALSE(manager.canUndo());
    manager.redo();
    EXPECT_EQ(manager.undoName() + manager.redoName(), "FirstSecond");
    EXPECT_THAT(done, ElementsAre("a", "b", "not b", "not a", "not not a"));
    change("Third", "c");
    EXPECT_FALSE(manager.canRedo());
}

TEST(UndoManager, ForgetsActionsEvenFromWithinOneAndTellsMenus) {
    UndoManager manager;
    int one = 0, other = 0, told = 0, runs = 0;
    manager.setObserver([&] { ++told; });
    const auto kept = manager.registerAction("Kept", &other, [&] { ++runs; });
    manager.registerAction("Ends its owner", &one, [&] {
        manager.registerAction("Its redo", &one, [] {});
        manager.removeActions(&one);
        manager.undo(); // not from within an action
    });
    told = 0;
    manager.undo();
    EXPECT_GT(told, 0);
    EXPECT_EQ(manager.undoName(), "Kept");
    EXPECT_FALSE(manager.canRedo());
    EXPECT_EQ(runs, 0);
    manager.removeAction(kept);
    manager.undo();
    EXPECT_EQ(runs, 0);
}

} // namespace
} // namespace tessaril
