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
    /// What came of an address that was entered.
    enum class entered {
        stored,
        storedWithoutPassword,
        notUnderstood, ///< and not stored, nor
        holdsPassword, ///< that no usable address would be left without
    };

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
    /// travel. Of the record store's nothing is stored that cannot be used, and no password, which
    /// would stay in the file for everybody to read.
    entered setAddress(std::string_view key, std::string_view address);

private:
    entered store(std::string_view key, const std::string& address);

    Preferences& standard;
    Preferences& shared;
    PreferenceSync& sync;
    std::set<std::string, std::less<>> edited; ///< since the last upload
};

} // namespace tessaril
