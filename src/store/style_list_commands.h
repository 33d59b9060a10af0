#pragma once

#include "platform/alerts.h"
#include "platform/dispatcher.h"
#include "store/open_styles.h"
#include "store/style_deletion.h"
#include "store/style_ids.h"
#include "store/style_list.h"
#include "undo/undo_manager.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessaril {

/// How other windows are opened from the list. One that is not set is a command that is not
/// available; one that gives false has opened nothing.
struct styleRoutes {
    /// The Style Editor; an imported style opens as such.
    std::function<bool(std::int64_t id, bool isOpeningImported)> openStyleForEditing = {};
    std::function<bool(std::int64_t id)> openStyleProps = {};
    std::function<void(const styleContainer& style)> exportFromStyleList = {};
    /// Checks one style for a newer version.
    std::function<void(std::int64_t id)> updateIndividual = {};
};

/// What the commands work with. All outlive them.
struct styleListSurroundings {
    StyleStore& store;
    StyleList& list;
    NotificationCenter& center;
    Dispatcher& dispatcher;
    Alerts& alerts;
    UndoManager& undoManager; ///< the main window's
    const OpenStyles& openStyles;
    const StyleIDs& updatingStyles;
    StyleIDs& openProperties;
};

/// The commands on the style list. Rows are positions in the list, those of a selection ascending;
/// one outside the list is passed over. While the list is locked for sync every command only beeps.
/// Main thread only.
class StyleListCommands {
public:
    explicit StyleListCommands(styleListSurroundings surroundings);

    void setRoutes(styleRoutes newRoutes) { routes = std::move(newRoutes); }
    const styleRoutes& availableRoutes() const { return routes; }

    /// Takes the style that is to be opened while the list is locked; nothing to forget it.
    void setOpenLater(std::function<void(std::int64_t id)> handler) {
        openLater = std::move(handler);
    }

    /// The row's check box.
    void onToggle(std::size_t row);
    /// Rows whose styles are being updated are passed over, as their check boxes are not available.
    void enableSelected(const std::vector<std::size_t>& rows) { setEnabled(rows, true); }
    void disableSelected(const std::vector<std::size_t>& rows) { setEnabled(rows, false); }
    /// Also those that are being updated: an update keeps what is set meanwhile.
    void enableAll();
    void disableAll();
    /// The two-segment control: 0 enables all, 1 disables all.
    void toggleAllClicked(int segment);
    /// The single button: disables all when most are enabled.
    void toggleOverflow();

    void duplicateClicked(std::size_t row) { duplicateSelected({row}); }
    void duplicateSelected(const std::vector<std::size_t>& rows);

    void deleteContextAction(std::size_t row);
    /// `delete:`
    void deleteSelected(const std::vector<std::size_t>& rows);

    /// Whether the row's name may be edited now; beeps when not.
    bool renameMenu(std::size_t row);
    /// The end of in-place editing. A blank name is refused with an alert.
    void endEditingName(std::size_t row, std::string_view name);

    /// A drop of the rows `dragged` between rows: above the row at position `row`, or behind the
    /// last one.
    void dropRows(const std::vector<std::size_t>& dragged, std::size_t row);

    void openSelected(const std::vector<std::size_t>& rows);
    void openProperties(std::size_t row);
    void exportStyle(std::size_t row);
    void updateIndividualClicked(std::size_t row);

    /// Undo and redo of the main window.
    void undo();
    void redo();

    /// Whether the list is locked for sync, which a beep tells the user.
    bool beepsAsLocked();

private:
    bool isUpdating(std::size_t row) const;
    const styleObject* rowAt(std::size_t row) const;
    std::optional<std::size_t> indexOf(std::size_t row) const;
    void setEnabled(const std::vector<std::size_t>& rows, bool isEnabled);
    void setAllFromToolbar(bool isEnabled);
    void openLinked(std::int64_t id);
    void openForEditing(std::size_t row);

    styleListSurroundings machine;
    styleRoutes routes;
    std::function<void(std::int64_t)> openLater;
    StyleDeletion deletion;
    NotificationCenter::Subscription openStyleNotif;
};

} // namespace tessaril
