#include "store/style_object.h"

#include "store/style_filter.h"

namespace tessaril {

namespace {

std::string sourceLabel(const std::string& source) {
    if (source == sourceSite) return "Imported from URL";
    if (source == sourceUserCSS) return "Imported from User CSS";
    return "Custom Style";
}

} // namespace

styleObject::styleObject(const styleContainer& style)
    : source(sourceLabel(style.source))
    , name(style.styleData.name)
    , isEnabled(style.isEnabled)
    , uniqueID(style.uniqueID)
    , homepage(style.homepageURL)
    , isCustom(style.source == sourceCustom)
    , searchText(searchTextOf(style)) {}

} // namespace tessaril
