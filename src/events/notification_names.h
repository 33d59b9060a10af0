#pragma once

#include <string_view>

// Every name on the event bus, in one place. The user-info key "id" always holds a style's
// `uniqueID`. Posters post from the main thread, except the cloud sync.
namespace tessaril::notifications {

/// Rebuild all rows of the style list.
inline constexpr std::string_view refreshTable = "refreshTable";
/// Rebuild all rows, scroll to the end and select the last one.
inline constexpr std::string_view refreshTableAndScroll = "refreshTableAndScroll";
/// One style was appended to the database.
inline constexpr std::string_view addLatestStyle = "addLatestStyle";
/// "id": a Style Editor window opens on the style.
inline constexpr std::string_view addToOpenStyles = "addToOpenStyles";
/// "id": the style's editor window closed.
inline constexpr std::string_view removeFromOpenStyles = "removeFromOpenStyles";
/// "id": the style is open already; its editor window comes to the front.
inline constexpr std::string_view checkIfWindowFocus = "checkIfWindowFocus";
/// "id": open the style in the editor.
inline constexpr std::string_view openStyleNotif = "openStyleNotif";
/// "id", "newname": the style was renamed.
inline constexpr std::string_view styleNameChanged = "styleNameChanged";
/// "id": the style's properties window closes.
inline constexpr std::string_view closeProperties = "closeProperties";
/// "id": the style's properties window comes to the front.
inline constexpr std::string_view focusProperties = "focusProperties";
/// "id": fetch the icon of the style's row anew.
inline constexpr std::string_view updateFavicons = "updateFavicons";
/// "id": the row has a new icon; draw it.
inline constexpr std::string_view refreshFavicons = "refreshFavicons";
/// Open the sheet that checks all styles for updates.
inline constexpr std::string_view openUpdateSheet = "openUpdateSheet";
/// The first cloud fetch is in; run the launch update.
inline constexpr std::string_view performFirstUpdate = "performFirstUpdate";
/// Lock the style list while the cloud copy is fetched.
inline constexpr std::string_view lockForiCloud = "lockForiCloud";
/// The first cloud fetch failed.
inline constexpr std::string_view iCloudError = "iCloudError";
/// "changedIDs": a list of identifiers of styles that changed in the cloud.
inline constexpr std::string_view stylesChangedInCloud = "stylesChangedInCloud";
/// The set of recoverable styles changed.
inline constexpr std::string_view deletedStylesChanged = "deletedStylesChanged";
/// Preferences arrived from another machine.
inline constexpr std::string_view prefsChangedRemotely = "prefsChangedRemotely";
/// A value of a preference store was set. Several settings in a row may be announced as one.
inline constexpr std::string_view preferencesDidChange = "preferencesDidChange";
/// The user changed the text of a code editor; the object is its `WKAceView`.
inline constexpr std::string_view ACEDidChange = "ACEDidChange";

} // namespace tessaril::notifications
