#pragma once

#include "events/notification_center.h"
#include "platform/alerts.h"
#include "platform/dispatcher.h"
#include "store/open_styles.h"
#include "store/style_store.h"
#include "style_editor/editor_saves.h"
#include "style_editor/style_drafts.h"

#include <functional>

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

/// Offers at the start what an earlier run ended with unsaved. Main thread only.
class DraftOffer {
public:
    /// Opens a Style Editor on the style, whose identifier is among the open styles; false when it
    /// opened none.
    /// - isUnsaved: the style differs from the stored one of its identifier
    using Route = std::function<bool(const styleContainer& style, bool isUnsaved)>;

    explicit DraftOffer(draftOfferSurroundings surroundings);

    void setOpen(Route route) { open = std::move(route); }

    /// Asks about all drafts at once, and opens or drops them. What is unsaved in no way any more
    /// is dropped without a question.
    void offer();

private:
    bool isUnsaved(const styleContainer& draft) const;
    void drop(const styleContainer& draft, StyleDrafts::Version version);
    void restore(const styleContainer& draft, StyleDrafts::Version version);
    void openInEditor(const styleContainer& style, bool isUnsaved);

    draftOfferSurroundings machine;
    Route open;
};

} // namespace tessaril
