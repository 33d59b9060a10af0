#pragma once

#include "events/notification_center.h"
#include "platform/alerts.h"
#include "platform/dispatcher.h"
#include "store/open_styles.h"
#include "store/style_store.h"
#include "style_editor/editor_saves.h"
#include "style_editor/style_drafts.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace tessaril {

/// What the offer works with. All outlive it and its tasks.
struct draftOfferSurroundings {
    StyleStore& store;
    StyleDrafts& drafts;
    EditorSaves& saves;
    const OpenStyles& openStyles;
    NotificationCenter& center;
    Alerts& alerts;
    Dispatcher& dispatcher;
};

/// A style for a Style Editor.
struct styleToEdit {
    styleContainer style;
    bool isUnsaved = false; ///< it differs from the stored one
};

/// Offers what was written and not saved: at the start all that an earlier run has left, and when a
/// style is opened what there is of it. A question that is not answered leaves everything as it
/// is. Main thread only.
class DraftOffer {
public:
    /// Opens a Style Editor on the style, whose identifier is among the open styles; false when it
    /// opened none.
    using Route = std::function<bool(const styleToEdit& opened)>;

    explicit DraftOffer(draftOfferSurroundings surroundings);

    void setOpen(Route route) { open = std::move(route); }

    /// Asks about all drafts at once, and opens or drops them. What is unsaved in no way any more
    /// is dropped without a question. A draft that has no place any more, as its style was deleted
    /// or is read-only, becomes a style of its own, switched off.
    void offer();

    /// The style as a Style Editor is to show it, once the user has been asked about its draft;
    /// nothing where there is no such style.
    std::optional<styleToEdit> styleForEditing(std::int64_t id);

private:
    bool isUnsaved(const styleContainer& draft) const;
    bool hasPlace(const styleContainer& draft) const;
    void drop(std::int64_t id, StyleDrafts::Version version);
    void restore(const styleContainer& draft, StyleDrafts::Version version);
    void restoreAsNew(const styleContainer& draft, StyleDrafts::Version version);
    void openInEditor(const styleToEdit& opened);

    draftOfferSurroundings machine;
    Route open;
};

} // namespace tessaril
