#pragma once

#include "platform/alerts.h"
#include "store/open_styles.h"
#include "store/style_ids.h"
#include "store/style_list.h"
#include "store/style_store.h"
#include "undo/undo_manager.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace tessaril {

/// What deleting works with. All outlive it.
struct styleDeletionSurroundings {
    StyleStore& store;
    StyleList& list;
    Alerts& alerts;
    UndoManager& undoManager;
    const OpenStyles& openStyles;
    const StyleIDs& updatingStyles;
};

/// Deletes styles from the list after a question, and brings them back by undo. A style that is
/// open in the Style Editor or being updated is never deleted. Main thread only.
class StyleDeletion {
public:
    explicit StyleDeletion(styleDeletionSurroundings surroundings);
    ~StyleDeletion();
    StyleDeletion(const StyleDeletion&) = delete;
    StyleDeletion& operator=(const StyleDeletion&) = delete;

    /// One row, from its context menu.
    void deleteClicked(std::size_t row);

    /// The selected rows, ascending.
    void deleteSelected(const std::vector<std::size_t>& rows);

private:
    /// A style that was deleted, and where it stood.
    struct deletedStyle {
        std::shared_ptr<const styleContainer> style;
        std::size_t index;
    };

    /// Where a style stood when it was chosen.
    struct chosenStyle {
        std::int64_t id;
        std::size_t row;
    };

    void deleteFree(std::vector<chosenStyle> chosen);
    void deleteStyles(const std::vector<chosenStyle>& chosen);
    void restore(const std::vector<deletedStyle>& deleted);

    styleDeletionSurroundings machine;
};

} // namespace tessaril
