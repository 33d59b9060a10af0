#pragma once

#include "events/notification_center.h"
#include "platform/dispatcher.h"
#include "platform/record_store.h"
#include "preferences/preference_keys.h"
#include "preferences/preferences.h"

#include <functional>
#include <string_view>

namespace tessaril {

enum class preferenceType { boolean, integer, string };

struct syncedPreference {
    std::string_view key;
    preferenceType type;
};

/// The keys of the application's own store that travel between machines.
inline constexpr syncedPreference syncedPreferenceKeys[] = {
    {preferenceKeys::wordWrap, preferenceType::boolean},
    {preferenceKeys::fontSize, preferenceType::integer},
    {preferenceKeys::updateOnLaunch, preferenceType::boolean},
    {preferenceKeys::showErrors, preferenceType::boolean},
    {preferenceKeys::defaultAuthor, preferenceType::string},
    {preferenceKeys::defaultNamespace, preferenceType::string},
    {preferenceKeys::awesomeness, preferenceType::boolean},
    {preferenceKeys::autocomplete, preferenceType::boolean},
    {preferenceKeys::warnIfDisabled, preferenceType::boolean},
    {preferenceKeys::warnReadOnly, preferenceType::boolean},
    {preferenceKeys::font, preferenceType::string},
    {preferenceKeys::theme, preferenceType::string},
    {preferenceKeys::showEditorTitle, preferenceType::boolean},
    {preferenceKeys::editorStyle, preferenceType::string},
};

/// The same of the store shared with the browser extension.
inline constexpr syncedPreference syncedSharedPreferenceKeys[] = {
    {preferenceKeys::toggleShortcut, preferenceType::boolean},
};

/// The fields of the cloud's `preferences` record by their names, which are the keys. Booleans are
/// the integers 1 and 0.
using preferencesRecord = recordFields;

/// Carries the synced preferences into a record and back.
class PreferenceSync {
public:
    /// All outlive it and its tasks. `shared` is null where that store cannot be opened; its keys
    /// then stay as they are on both sides.
    PreferenceSync(Preferences& standard, Preferences* shared, NotificationCenter& center,
                   Dispatcher& dispatcher);

    /// Writes every synced value, its default where none is stored, into its field. Others stay.
    void collectPreferences(preferencesRecord& record) const;

    /// Stores on the main thread what `record` holds, a task per key, then posts
    /// `prefsChangedRemotely`. A field of another type than its key's is logged and left out.
    /// From any thread.
    void applyPreferences(const preferencesRecord& record);

    /// Hands the preferences to the upload handler while `UseiCloud` is true. Nothing happens
    /// while none is set.
    void uploadPreferences();
    void setUploadHandler(std::function<void()> handler);

private:
    void apply(Preferences& store, const syncedPreference& synced, const preferencesRecord& record);

    Preferences& standard;
    Preferences* shared;
    NotificationCenter& center;
    Dispatcher& dispatcher;
    std::function<void()> upload;
};

} // namespace tessaril
