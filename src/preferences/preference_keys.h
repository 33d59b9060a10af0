#pragma once

#include <string_view>

// The keys of both preference stores.
namespace tessaril::preferenceKeys {

// The application's own store.
inline constexpr std::string_view wordWrap = "ACEWordWrap";
inline constexpr std::string_view showGutter = "ACEShowGutter";
inline constexpr std::string_view fontSize = "ACEFontSize";
inline constexpr std::string_view updateOnLaunch = "UpdateOnLaunch";
inline constexpr std::string_view showErrors = "ACEShowErrors";
inline constexpr std::string_view defaultAuthor = "DefaultAuthor";
inline constexpr std::string_view defaultNamespace = "DefaultNamespace";
inline constexpr std::string_view isFirstLaunch = "isFirstLaunch";
inline constexpr std::string_view isFirstStyle = "isFirstStyle";
inline constexpr std::string_view awesomeness = "Awesomeness";
inline constexpr std::string_view autocomplete = "ACEAutocomplete";
inline constexpr std::string_view warnIfDisabled = "WarnIfDisabled";
inline constexpr std::string_view warnReadOnly = "WarnReadOnly";
inline constexpr std::string_view useiCloud = "UseiCloud";
inline constexpr std::string_view hasConfigurediCloud = "hasConfigurediCloud";
inline constexpr std::string_view lastSuccessfulSync = "lastSuccessfulSync";
inline constexpr std::string_view showEditorTitle = "showEditorTitle";
inline constexpr std::string_view editorStyle = "editorStyle";
inline constexpr std::string_view theme = "ACETheme";
inline constexpr std::string_view font = "ACEFont";

// This system's own, in the application's store.
inline constexpr std::string_view fetchSiteIcons = "FetchSiteIcons";
inline constexpr std::string_view supportAddress = "supportAddress";
inline constexpr std::string_view webSite = "webSite";
inline constexpr std::string_view siteAddress = "siteAddress";
inline constexpr std::string_view recordStoreAddress = "recordStoreAddress";

// The store shared with the browser extension.
inline constexpr std::string_view injectIframes = "InjectIframes";
inline constexpr std::string_view toggleShortcut = "toggleShortcut";

} // namespace tessaril::preferenceKeys
