#pragma once

#include "preferences/preference_menus.h"
#include "preferences/preference_sync.h"
#include "preferences/preferences.h"

#include <cstdint>
#include <set>
#include <string>
#include <string_view>

namespace tessaril {

/// What the controls of the Preferences window show and do. A change is stored at once; what is
/// announced to the cloud, and when, is decided here. Main thread only.
class PreferenceControls {
public:
    /// All outlive it.
    PreferenceControls(Preferences& standard, Preferences& shared, PreferenceSync& sync);

    /// A check box, by its key.
    bool isOn(std::string_view key) const;
    void turn(std::string_view key, bool on);

    int position(const valueMenu& menu) const;
    void choose(const valueMenu& menu, int position);

    std::int64_t fontSize() const;
    void setFontSize(std::int64_t size);

    /// The fields of author and namespace: each edit is stored, its end uploads.
    std::string text(std::string_view key) const;
    void edit(std::string_view key, std::string_view text);
    void endEditing(std::string_view key);
    /// For a window that goes away with an edit under way.
    void endAllEditing();

    /// The fields of addresses: stored once they are complete, as nobody is to reach half of one.
    /// Surrounding blanks are dropped, and an emptied one becomes its default again. They never
    /// travel. A password in the record store's address is not stored.
    void setAddress(std::string_view key, std::string_view address);

private:
    Preferences& standard;
    Preferences& shared;
    PreferenceSync& sync;
    std::set<std::string, std::less<>> edited; ///< since the last upload
};

} // namespace tessaril
