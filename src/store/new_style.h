#pragma once

#include "events/notification_center.h"
#include "model/rule_types.h"
#include "platform/alerts.h"
#include "preferences/preferences.h"
#include "store/style_list.h"
#include "store/style_store.h"

#include <array>
#include <functional>
#include <string>
#include <string_view>

namespace tessaril {

/// The menu of the new style sheet, in order; its other one is `ruleTypes`.
inline constexpr std::array<std::string_view, 3> preprocessorTitles = {"None (CSS)", "Stylus",
                                                                       "Less"};

/// What the new style sheet holds. Texts are UTF-8 as typed, menus positions.
struct newStyleFields {
    std::string name = "";
    int ruleType = 0;
    std::string rule = ""; ///< blank: the style applies everywhere
    int preprocessor = 0;
};

/// Makes the styles that are written from scratch. Main thread only.
class NewStyle {
public:
    /// Opens the Style Editor on the style; false when it opened none.
    using Route = std::function<bool(std::int64_t id)>;

    /// All outlive it.
    NewStyle(StyleStore& store, const StyleList& list, Preferences& preferences,
             NotificationCenter& center, Alerts& alerts);

    void setOpenNewStyleInEditor(Route route) { openNewStyleInEditor = std::move(route); }

    /// Whether a style may be made now; not while the list is locked for sync, which beeps.
    bool mayBegin();

    /// Whether the create button is enabled: the name is not blank.
    static bool canCreate(std::string_view name);

    /// Adds the style to the database, announces it and opens it in the editor. The first one of an
    /// installation comes with some advice in it. Nothing happens, and false is given, for a blank
    /// name and while `mayBegin` is false.
    bool create(const newStyleFields& fields);

private:
    StyleStore& store;
    const StyleList& list;
    Preferences& preferences;
    NotificationCenter& center;
    Alerts& alerts;
    Route openNewStyleInEditor;
};

} // namespace tessaril
