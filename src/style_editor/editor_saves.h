#pragma once

#include "events/notification_center.h"
#include "platform/dispatcher.h"
#include "store/style_store.h"
#include "style_editor/style_drafts.h"

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>

namespace tessaril {

/// Stores what Style Editors save, in the background, and the saves of one style one after another:
/// each takes its time to compile, and the last must win. Main thread only.
class EditorSaves {
public:
    /// All outlive it and its tasks.
    EditorSaves(StyleStore& store, StyleDrafts& drafts, NotificationCenter& center,
                Dispatcher& dispatcher);

    /// Stores the working copy. Until it is in the database's file it is kept as a draft.
    void save(const styleContainer& style);

    bool isSaving(std::int64_t id) const { return wishes.contains(id); }

    /// The style as it is when all saves are done; nothing where there is none.
    std::optional<styleContainer> styleForEditing(std::int64_t id) const;

private:
    struct wish {
        styleContainer style;
        StyleDrafts::Version version;
    };

    void add(wish added);
    void start(const wish& first);
    void rename(std::int64_t id, const std::string& name);

    StyleStore& store;
    StyleDrafts& drafts;
    Dispatcher& dispatcher;
    std::map<std::int64_t, std::deque<wish>> wishes; ///< the first of each style is under way
    std::shared_ptr<int> alive = std::make_shared<int>();
    NotificationCenter::Subscription styleNameChanged;
};

} // namespace tessaril
