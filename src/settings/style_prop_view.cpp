#include "settings/style_prop_view.h"

#include "events/notification_names.h"
#include "events/observe_on_main.h"

#include <algorithm>
#include <utility>

namespace tessaril {

namespace {

std::vector<typedRule> exclusionsOf(const styleContainer& style) {
    using list = std::vector<std::string>;
    return typedRulesFrom({.domains = style.exclDomain.value_or(list{}),
                           .urls = style.exclURL.value_or(list{}),
                           .urlPrefixes = style.exclPrefix.value_or(list{}),
                           .regexps = style.exclRegExp.value_or(list{})});
}

void setExclusions(styleContainer& style, const std::vector<typedRule>& rows) {
    ruleLists lists = ruleListsFrom(rows);
    style.exclDomain = std::move(lists.domains);
    style.exclURL = std::move(lists.urls);
    style.exclPrefix = std::move(lists.urlPrefixes);
    style.exclRegExp = std::move(lists.regexps);
}

} // namespace

StylePropView::StylePropView(stylePropSurroundings surroundings, styleContainer style)
    : machine(surroundings)
    , curStyle(std::move(style))
    , excluded(exclusionsOf(curStyle), false)
    , variableTable(curStyle, machine.alerts) {
    follow(notifications::styleNameChanged, [this](const notification& posted) {
        const auto* name = posted.info<std::string>("newname");
        if (!name) return;
        curStyle.styleData.name = *name;
        if (window.showName) window.showName(*name);
    });
    follow(notifications::closeProperties, [this](const notification&) { close(); });
    follow(notifications::focusProperties, [this](const notification&) {
        if (window.focus) window.focus();
    });
}

StylePropView::~StylePropView() {
    leave();
}

void StylePropView::follow(std::string_view name,
                           std::function<void(const notification&)> handler) {
    subscriptions.push_back(
        observeOnMain(machine.center, machine.dispatcher, name, alive,
                      [id = curStyle.uniqueID, handle = std::move(handler)](const auto& posted) {
                          if (posted.id() == id) handle(posted);
                      }));
}

std::string_view StylePropView::typeText() const {
    if (curStyle.source == sourceSite) return "Imported from URL";
    if (curStyle.source == sourceUserCSS) return "Imported from User CSS";
    return "Custom Style";
}

std::size_t StylePropView::theme() const {
    const auto found = std::ranges::find(themes, curStyle.systemTheme.value_or(""));
    return found == themes.end() ? 0 : static_cast<std::size_t>(found - themes.begin());
}

void StylePropView::themeChanged(std::size_t item) {
    if (item < themes.size()) curStyle.systemTheme = themes[item];
}

void StylePropView::saveClicked() {
    if (std::exchange(saving, true)) return;
    setExclusions(curStyle, excluded.rows());
    const auto task = [this, style = curStyle, machine = machine, watched = std::weak_ptr(alive)] {
        machine.store.applyStyleProperties(style.uniqueID, style);
        machine.dispatcher.onMain([this, id = style.uniqueID, machine, watched] {
            machine.openProperties.remove(id);
            if (watched.expired()) return;
            saving = false;
            close();
        });
    };
    machine.dispatcher.inBackground(taskPriority::userInitiated, task);
}

void StylePropView::leave() {
    if (!std::exchange(isOpen, false)) return;
    // Opened again before, they would show what is no more, and might be stored the earlier.
    if (!saving) machine.openProperties.remove(curStyle.uniqueID);
}

void StylePropView::close() {
    leave();
    if (window.close) window.close();
}

} // namespace tessaril
