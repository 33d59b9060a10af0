#include "style_editor/editor_saves.h"

namespace tessaril {

EditorSaves::EditorSaves(StyleStore& styleStore, StyleDrafts& styleDrafts,
                         Dispatcher& taskDispatcher)
    : store(styleStore), drafts(styleDrafts), dispatcher(taskDispatcher) {}

void EditorSaves::save(const styleContainer& style) {
    auto& waiting = wishes[style.uniqueID];
    if (waiting.size() > 1) waiting.pop_back(); // nobody has begun with it
    waiting.push_back({style, drafts.next()});
    if (waiting.size() == 1) start(waiting.front());
}

void EditorSaves::start(const wish& first) {
    dispatcher.inBackground(taskPriority::background, [this, first] {
        const std::int64_t id = first.style.uniqueID;
        store.applyEditorChanges(id, first.style);
        // Of a style that is gone, what was written stays for the next start.
        if (store.findStyle(id)) drafts.drop(id, first.version);
        dispatcher.onMain([this, id] {
            auto& waiting = wishes[id];
            waiting.pop_front();
            if (!waiting.empty()) return start(waiting.front());
            wishes.erase(id);
        });
    });
}

std::optional<styleContainer> EditorSaves::styleForEditing(std::int64_t id) const {
    const auto stored = store.findStyle(id);
    if (!stored) return std::nullopt;
    styleContainer style = *stored;
    const auto waiting = wishes.find(id);
    if (waiting != wishes.end()) takeEditorChanges(style, waiting->second.back().style);
    return style;
}

} // namespace tessaril
