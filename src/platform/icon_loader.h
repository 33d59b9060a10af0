#pragma once

#include "model/style_container.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace tessaril {

/// A site's picture, decoded once and written anew by this application: a square PNG of
/// `siteIconSize` pixels. Rows that show the same site share one.
struct siteIcon {
    std::string png;
};

inline constexpr int siteIconSize = 48;

/// Why icons are asked for.
enum class iconRequest {
    newRow,      ///< the row shows a placeholder: the first icon found is enough
    rulesChanged ///< the style's rules have changed: every icon found replaces the one before
};

/// Finds the icons of the web sites that styles apply to. Main thread only.
class IconLoader {
public:
    using Found = std::function<void(std::int64_t id, const std::shared_ptr<const siteIcon>& icon,
                                     iconRequest request)>;

    virtual ~IconLoader() = default;

    /// Who is told of every icon found, on the main thread; nothing to stop telling.
    virtual void setFoundHandler(Found handler) = 0;

    /// The icon of the style's first site that has one, where it is in memory; never waits. Where
    /// there is one, `fetch` need not be called for a new row.
    virtual std::shared_ptr<const siteIcon> known(const styleContainer& style) const = 0;

    /// Looks in the background for the icons of the styles, in this order, and returns at once.
    /// What finds nothing is not heard of again.
    virtual void fetch(std::span<const std::int64_t> ids, iconRequest request) = 0;

    /// The styles whose rows are on the screen: what is asked for them goes before all else.
    virtual void setOnScreen(std::vector<std::int64_t> ids) = 0;
};

} // namespace tessaril
