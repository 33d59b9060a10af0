#include "undo/undo_manager.h"

#include <utility>

namespace tessaril {

UndoManager::Token UndoManager::registerAction(std::string name, const void* owner, Action action) {
    std::vector<step>& stack = current == activity::undoing ? redoStack : undoStack;
    stack.push_back({++lastToken, std::move(name), owner, std::move(action)});
    if (current == activity::none) redoStack.clear();
    const Token token = lastToken; // the observer may register another one
    tellObserver();
    return token;
}

std::string UndoManager::undoName() const {
    return undoStack.empty() ? "" : undoStack.back().name;
}

std::string UndoManager::redoName() const {
    return redoStack.empty() ? "" : redoStack.back().name;
}

void UndoManager::undo() {
    run(undoStack, activity::undoing);
}

void UndoManager::redo() {
    run(redoStack, activity::redoing);
}

void UndoManager::run(std::vector<step>& stack, activity now) {
    if (stack.empty() || current != activity::none) return;

    // Off the stack first: the action may remove its owner's actions, itself among them.
    const step taken = std::move(stack.back());
    stack.pop_back();
    current = now;
    taken.action();
    current = activity::none;
    tellObserver();
}

template <typename Matches>
void UndoManager::removeWhere(Matches matches) {
    if (std::erase_if(undoStack, matches) + std::erase_if(redoStack, matches) > 0) tellObserver();
}

void UndoManager::removeAction(Token token) {
    removeWhere([token](const step& s) { return s.token == token; });
}

void UndoManager::removeActions(const void* owner) {
    removeWhere([owner](const step& s) { return s.owner == owner; });
}

void UndoManager::removeRedos(const void* owner) {
    if (std::erase_if(redoStack, [owner](const step& s) { return s.owner == owner; }) > 0)
        tellObserver();
}

void UndoManager::tellObserver() const {
    if (observer) observer();
}

} // namespace tessaril
