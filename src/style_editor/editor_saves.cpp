#include "style_editor/editor_saves.h"

#include "events/notification_names.h"
#include "events/observe_on_main.h"

#include <utility>

namespace tessaril {

EditorSaves::EditorSaves(StyleStore& styleStore, StyleDrafts& styleDrafts,
                         NotificationCenter& center, Dispatcher& taskDispatcher)
    : store(styleStore)
    , drafts(styleDrafts)
    , dispatcher(taskDispatcher)
    , styleNameChanged(observeOnMain(center, dispatcher, notifications::styleNameChanged, alive,
                                     [this](const notification& posted) {
                                         const auto* name = posted.info<std::string>("newname");
                                         if (posted.id() && name) rename(*posted.id(), *name);
                                     })) {}

void EditorSaves::save(const styleContainer& style) {
    add({style, drafts.next()});
}

void EditorSaves::add(wish added) {
    auto& waiting = wishes[added.style.uniqueID];
    if (waiting.size() > 1) waiting.pop_back(); // nobody has begun with it
    waiting.push_back(std::move(added));
    if (waiting.size() == 1) return start(waiting.front());
    dispatcher.inBackground(taskPriority::utility, [&drafts = drafts, wish = waiting.back()] {
        drafts.keep(wish.style, wish.version);
    });
}

/// What is on its way carries the old name with it.
void EditorSaves::rename(std::int64_t id, const std::string& name) {
    const auto waiting = wishes.find(id);
    if (waiting == wishes.end()) return;
    wish renamed = waiting->second.back();
    renamed.style.styleData.name = name;
    add(std::move(renamed));
}

void EditorSaves::start(const wish& first) {
    dispatcher.inBackground(taskPriority::background, [this, first] {
        const std::int64_t id = first.style.uniqueID;
        drafts.keep(first.style, first.version); // it compiles first, which takes its time
        store.applyEditorChanges(id, first.style);
        // Of a style that is gone, or a disk that is full, what was written stays for the next
        // start.
        if (store.findStyle(id) && store.waitForSaves()) drafts.drop(id, first.version);
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
