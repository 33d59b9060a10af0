#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tessaril {

/// Two stacks of named actions, one to undo and one to redo. What an action registers while it is
/// being undone becomes its redo, and the other way round; an action registered at any other time
/// makes everything that could be redone obsolete. An action that registers nothing cannot be
/// turned back. Main thread only.
class UndoManager {
public:
    using Action = std::function<void()>;
    /// Tells one registered action from all others of the same manager.
    using Token = std::uint64_t;

    /// - name: as menus show it behind "Undo" and "Redo"
    /// - owner: whose action it is; compared, never looked into
    Token registerAction(std::string name, const void* owner, Action action);

    bool canUndo() const { return !undoStack.empty(); }
    bool canRedo() const { return !redoStack.empty(); }

    /// The name of the action that would run next; empty when there is none.
    std::string undoName() const;
    std::string redoName() const;

    /// Runs the newest action. Does nothing when there is none, or from within an action.
    void undo();
    void redo();

    /// Forgets one action, on whichever stack it is; does nothing when it is gone already.
    void removeAction(Token token);

    /// Forgets every action of an owner. To be called before the owner goes away.
    void removeActions(const void* owner);

    /// Forgets what an owner could redo, as something else has been done since.
    void removeRedos(const void* owner);

    /// Called after every change of what can be undone or redone; nothing to stop.
    void setObserver(std::function<void()> newObserver) { observer = std::move(newObserver); }

private:
    struct step {
        Token token;
        std::string name;
        const void* owner;
        Action action;
    };
    enum class activity { none, undoing, redoing };

    void run(std::vector<step>& stack, activity now);
    template <typename Matches>
    void removeWhere(Matches matches);
    void tellObserver() const;

    std::vector<step> undoStack;
    std::vector<step> redoStack;
    activity current = activity::none;
    Token lastToken = 0;
    std::function<void()> observer;
};

} // namespace tessaril
