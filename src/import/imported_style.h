#pragma once

#include "events/notification_center.h"
#include "model/style_making.h"
#include "platform/alerts.h"
#include "platform/dispatcher.h"
#include "store/style_list.h"
#include "store/style_store.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

// What all ways of importing a style's text share.
namespace tessaril {

/// What an import works with. All outlive it.
struct importSurroundings {
    Alerts& alerts;
    Dispatcher& dispatcher;
    NotificationCenter& center;
    StyleStore& store;
    StyleList& list;
    styleMaking making;
    QuietCompile compileQuietly;
};

/// The alert about a text that yields no section.
inline constexpr std::string_view invalidStyleTitle = "Invalid Style";

/// The new style of plain CSS: one section without rules, which is `css` as it stands.
styleContainer plainStyle(std::string css, const styleMaking& making);

/// What `parseUserCSS` makes of a text, and what tells the user of the compiler's errors.
struct quietlyRead {
    std::optional<styleContainer> style;
    std::function<void()> tellErrors = {}; ///< empty where it could be compiled
};

/// - complete: adds what the text does not say, before the style is compiled
quietlyRead parseQuietly(
    std::string_view text, const importSurroundings& machine,
    const std::function<void(styleContainer&)>& complete = [](styleContainer&) {});

/// A style with an update address came from somewhere, any other is the user's own.
void setSourceByUpdateAddress(styleContainer& style);

/// Appends the style to the database, saves and announces it. Main thread only.
void appendImportedStyle(const importSurroundings& machine, styleContainer style);

} // namespace tessaril
