#include "preferences/preferences.h"

#include "preferences/preference_keys.h"

namespace tessaril {

namespace {

// The first day of the year 1, in seconds since 2001-01-01: everything counts as newer.
constexpr double distantPast = -63114076800.0;

} // namespace

Preferences::Preferences(PreferenceStore& ownStore, std::function<void()> afterSet)
    : store(ownStore), wasSet(std::move(afterSet)) {}

void Preferences::registerDefault(std::string_view key, preferenceValue value) {
    const std::lock_guard lock(mutex);
    defaults.insert_or_assign(std::string(key), std::move(value));
}

template <typename T>
std::optional<T> Preferences::find(std::string_view key) const {
    const std::lock_guard lock(mutex);
    if (const auto stored = store.value(key, preferenceValue(T())))
        if (const T* value = std::get_if<T>(&*stored)) return *value;
    return findDefault<T>(key);
}

/// With the mutex held.
template <typename T>
std::optional<T> Preferences::findDefault(std::string_view key) const {
    const auto found = defaults.find(key);
    if (found == defaults.end()) return std::nullopt;
    const T* value = std::get_if<T>(&found->second);
    return value ? std::optional(*value) : std::nullopt;
}

bool Preferences::boolean(std::string_view key) const {
    return find<bool>(key).value_or(false);
}

std::int64_t Preferences::integer(std::string_view key) const {
    return find<std::int64_t>(key).value_or(0);
}

double Preferences::real(std::string_view key) const {
    return find<double>(key).value_or(0);
}

std::string Preferences::string(std::string_view key) const {
    return findString(key).value_or("");
}

std::optional<std::string> Preferences::findString(std::string_view key) const {
    return find<std::string>(key);
}

void Preferences::set(std::string_view key, const preferenceValue& value) {
    {
        const std::lock_guard lock(mutex);
        store.setValue(key, value);
    }
    if (wasSet) wasSet();
}

void Preferences::reset(std::string_view key) {
    {
        const std::lock_guard lock(mutex);
        store.removeValue(key);
    }
    if (wasSet) wasSet();
}

void registerPreferenceDefaults(Preferences& standard, Preferences& shared,
                                std::int64_t namespaceDraw, bool darkAppearance) {
    namespace keys = preferenceKeys;
    standard.registerDefault(keys::wordWrap, true);
    standard.registerDefault(keys::showGutter, true);
    standard.registerDefault(keys::fontSize, std::int64_t{12});
    standard.registerDefault(keys::updateOnLaunch, false);
    standard.registerDefault(keys::showErrors, false);
    standard.registerDefault(keys::defaultAuthor, "Tessaril User");
    standard.registerDefault(keys::defaultNamespace, "tessaril" + std::to_string(namespaceDraw));
    standard.registerDefault(keys::isFirstLaunch, true);
    standard.registerDefault(keys::isFirstStyle, true);
    standard.registerDefault(keys::awesomeness, false);
    standard.registerDefault(keys::autocomplete, true);
    standard.registerDefault(keys::warnIfDisabled, true);
    standard.registerDefault(keys::warnReadOnly, true);
    standard.registerDefault(keys::useiCloud, false);
    standard.registerDefault(keys::hasConfigurediCloud, false);
    standard.registerDefault(keys::lastSuccessfulSync, distantPast);
    standard.registerDefault(keys::showEditorTitle, true);
    standard.registerDefault(keys::editorStyle, "unified");

    shared.registerDefault(keys::injectIframes, false);
    shared.registerDefault(keys::toggleShortcut, true);

    standard.registerDefault(keys::theme, darkAppearance ? "dark" : "light");
    // The name that every current system resolves to its own fixed-width face.
    standard.registerDefault(keys::font, "ui-monospace");

    standard.registerDefault(keys::fetchSiteIcons, true);
    standard.registerDefault(keys::supportAddress, "support@tessaril.example");
    standard.registerDefault(keys::webSite, "https://tessaril.example/");
    standard.registerDefault(keys::siteAddress, "https://styles.tessaril.example");
    standard.registerDefault(keys::recordStoreAddress, ""); // none
}

} // namespace tessaril
