#include "store/new_style.h"

#include "events/notification_names.h"
#include "model/text.h"
#include "preferences/preference_keys.h"
#include "store/first_style_text.h"
#include "store/open_styles.h"

namespace tessaril {

namespace {

namespace keys = preferenceKeys;

std::string_view preprocessorAt(int position) {
    switch (position) {
    case 1:
        return "stylus";
    case 2:
        return "less";
    default:
        return "default";
    }
}

} // namespace

NewStyle::NewStyle(StyleStore& styleStore, const StyleList& styleList, Preferences& ownPreferences,
                   NotificationCenter& bus, Alerts& alertPresenter)
    : store(styleStore)
    , list(styleList)
    , preferences(ownPreferences)
    , center(bus)
    , alerts(alertPresenter) {}

bool NewStyle::mayBegin() {
    if (list.isLockedForSync()) alerts.beep();
    return !list.isLockedForSync();
}

bool NewStyle::canCreate(std::string_view name) {
    return !trimmed(name).empty();
}

bool NewStyle::create(const newStyleFields& fields) {
    if (!canCreate(fields.name) || !mayBegin()) return false;
    styleContainer style =
        makeStyleContainer(makeStyleJSON(std::string(trimmed(fields.name)), ""), sourceCustom,
                           noUserstyleID, store.generateUniqueID());
    style.author = preferences.string(keys::defaultAuthor);
    style.version = "1.0.0";
    style.namespace_ = preferences.string(keys::defaultNamespace);

    styleSection& section = style.styleData.sections.front();
    if (preferences.boolean(keys::isFirstStyle)) {
        section.code = firstStyleText;
        preferences.set(keys::isFirstStyle, false);
    }
    const std::string_view rule = trimmed(fields.rule);
    if (!rule.empty()) rulesAt(section, fields.ruleType).emplace_back(rule);
    style.preprocessor = preprocessorAt(fields.preprocessor);

    const std::int64_t id = store.appendStyle(std::move(style));
    store.saveDatabase();
    openRegistered(center, id, [&] {
        center.post(notifications::addLatestStyle);
        return openNewStyleInEditor && openNewStyleInEditor(id);
    });
    return true;
}

} // namespace tessaril
