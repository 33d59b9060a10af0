#include "preferences/preference_controls.h"

#include "model/text.h"
#include "preferences/preference_keys.h"
#include "web/record_address.h"

#include <variant>

namespace tessaril {

namespace {

bool isSharedKey(std::string_view key) {
    return key == preferenceKeys::injectIframes || key == preferenceKeys::toggleShortcut;
}

} // namespace

PreferenceControls::PreferenceControls(Preferences& standardStore, Preferences& sharedStore,
                                       PreferenceSync& preferenceSync)
    : standard(standardStore), shared(sharedStore), sync(preferenceSync) {}

bool PreferenceControls::isOn(std::string_view key) const {
    return (isSharedKey(key) ? shared : standard).boolean(key);
}

void PreferenceControls::turn(std::string_view key, bool on) {
    (isSharedKey(key) ? shared : standard).set(key, on);
    // Of this machine alone.
    if (key != preferenceKeys::injectIframes) sync.uploadPreferences();
}

int PreferenceControls::position(const valueMenu& menu) const {
    return positionOf(menu, standard.string(menu.key));
}

void PreferenceControls::choose(const valueMenu& menu, int position) {
    standard.set(menu.key, std::string(valueAt(menu, position)));
    sync.uploadPreferences();
}

std::int64_t PreferenceControls::fontSize() const {
    return standard.integer(preferenceKeys::fontSize);
}

void PreferenceControls::setFontSize(std::int64_t size) {
    standard.set(preferenceKeys::fontSize, size);
    sync.uploadPreferences();
}

std::string PreferenceControls::text(std::string_view key) const {
    return standard.string(key);
}

void PreferenceControls::edit(std::string_view key, std::string_view text) {
    standard.set(key, std::string(text));
    edited.insert(std::string(key));
}

void PreferenceControls::endEditing(std::string_view key) {
    const auto found = edited.find(key);
    if (found == edited.end()) return;
    edited.erase(found);
    sync.uploadPreferences();
}

void PreferenceControls::endAllEditing() {
    if (edited.empty()) return;
    edited.clear();
    sync.uploadPreferences();
}

PreferenceControls::entered PreferenceControls::setAddress(std::string_view key,
                                                           std::string_view address) {
    const std::string wanted(trimmed(address));
    if (key != preferenceKeys::recordStoreAddress) return store(key, wanted);
    const auto parsed = parseRecordAddress(wanted);
    const auto* fault = std::get_if<recordAddressFault>(&parsed);
    if (!fault || *fault == recordAddressFault::empty) return store(key, wanted);
    if (*fault == recordAddressFault::notUnderstood) return entered::notUnderstood;
    const auto usable = withoutPassword(wanted);
    if (!usable) return entered::holdsPassword;
    store(key, *usable);
    return entered::storedWithoutPassword;
}

PreferenceControls::entered PreferenceControls::store(std::string_view key,
                                                      const std::string& address) {
    if (address.empty())
        standard.reset(key);
    else if (address != standard.string(key))
        standard.set(key, address);
    return entered::stored;
}

} // namespace tessaril
