#pragma once

#include "events/notification_center.h"
#include "model/style_container.h"
#include "platform/alerts.h"
#include "platform/dispatcher.h"
#include "settings/typed_rules.h"
#include "settings/variable_table.h"
#include "store/style_ids.h"
#include "store/style_store.h"

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tessaril {

/// The exclusions of a style: where it does not apply.
using exclDictionary = TypedRules;

/// What the properties of a style work with. All outlive it.
struct stylePropSurroundings {
    StyleStore& store;
    StyleIDs& openProperties;
    NotificationCenter& center;
    Alerts& alerts;
    Dispatcher& dispatcher;
};

/// What the window of one style's properties shows and does. It works on a copy of the style, which
/// Save hands to the store; anything else forgets it. Main thread only.
class StylePropView {
public:
    /// What the window does when it is told to. Any of it may be empty.
    struct handlers {
        std::function<void(const std::string& name)> showName;
        std::function<void()> focus;
        std::function<void()> close;
    };

    /// The appearances in which a style applies, in the order of the menu.
    static constexpr std::array<std::string_view, 3> themes = {"none", "light", "dark"};

    /// - style: whose identifier is among the open properties already
    StylePropView(stylePropSurroundings surroundings, styleContainer style);
    ~StylePropView();
    StylePropView(const StylePropView&) = delete;
    StylePropView& operator=(const StylePropView&) = delete;

    void setHandlers(handlers newHandlers) { window = std::move(newHandlers); }

    const styleContainer& style() const { return curStyle; }
    std::string_view typeText() const;

    bool allowsIframe() const { return curStyle.allowIframe.value_or(false); }
    void iframeToggled(bool isOn) { curStyle.allowIframe = isOn; }

    /// Positions in `themes`.
    std::size_t theme() const;
    void themeChanged(std::size_t item);

    exclDictionary& exclusions() { return excluded; }
    VariableTable& variables() { return variableTable; }

    /// Stores what was set, compiles it in the background, and has the window closed when that is
    /// done. Further calls do nothing.
    void saveClicked();
    bool isSaving() const { return saving; }

    /// Has the window closed, and stores nothing.
    void cancelClicked() { close(); }

    /// The window is closed: the style's properties may be opened again, when they are stored. May
    /// be called again.
    void leave();

private:
    void follow(std::string_view name, std::function<void(const notification&)> handler);
    void close();

    stylePropSurroundings machine;
    styleContainer curStyle;
    exclDictionary excluded;
    VariableTable variableTable;
    handlers window;
    bool saving = false;
    bool isOpen = true;
    std::shared_ptr<int> alive = std::make_shared<int>(); ///< for what comes by another thread
    std::vector<NotificationCenter::Subscription> subscriptions;
};

} // namespace tessaril
