#include "support/test.h"
#include "undo/undo_manager.h"

namespace tessaril {
namespace {

TEST(UndoManager, TurnsBackAndForthUntilSomethingNewHappens) {
    UndoManager manager;
    std::string done;
    std::function<void(std::string)> change = [&](const std::string& what) {
        done += what + " ";
        manager.registerAction(what.substr(what.size() - 1), &manager,
                               [=, &change] { change("-" + what); });
    };
    change("a");
    change("b");
    for (int round = 0; round < 3; ++round)
        manager.undo();
    EXPECT_FALSE(manager.canUndo());
    manager.redo();
    EXPECT_EQ(manager.undoName() + manager.redoName(), "ab");
    EXPECT_EQ(done, "a b -b -a --a ");
    change("c");
    EXPECT_FALSE(manager.canRedo());
}

TEST(UndoManager, ForgetsActionsEvenFromWithinOneAndTellsMenus) {
    UndoManager manager;
    int owner = 0, told = 0, runs = 0;
    const auto kept = manager.registerAction("Kept", &manager, [&] { ++runs; });
    manager.registerAction("Ends its owner", &owner, [&] {
        manager.registerAction("Its redo", &owner, [] {});
        manager.removeActions(&owner);
        manager.undo(); // not from within an action
    });
    manager.setObserver([&] { ++told; });
    manager.undo();
    EXPECT_GT(told, 0);
    EXPECT_EQ(manager.undoName(), "Kept");
    manager.removeAction(kept);
    manager.undo();
    EXPECT_TRUE(runs == 0 && !manager.canRedo());
}

} // namespace
} // namespace tessaril
