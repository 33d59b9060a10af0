#include "import/imported_style.h"

#include "events/notification_names.h"
#include "formats/user_css_reader.h"

#include <utility>

namespace tessaril {

namespace {

constexpr std::string_view plainStyleName = "New Style from CSS";

} // namespace

styleContainer plainStyle(std::string css, const styleMaking& making) {
    return makeStyleContainer(makeStyleJSON(std::string(plainStyleName), std::move(css)),
                              sourceCustom, noUserstyleID, making.generateUniqueID());
}

quietlyRead parseQuietly(std::string_view text, const importSurroundings& machine,
                         const std::function<void(styleContainer&)>& complete) {
    quietlyRead result;
    styleMaking making = machine.making;
    making.compileStyle = [&](styleContainer& style) {
        complete(style);
        result.tellErrors = machine.compileQuietly(style);
    };
    result.style = parseUserCSS(text, making);
    return result;
}

void setSourceByUpdateAddress(styleContainer& style) {
    style.source = style.updateURL && !style.updateURL->empty() ? sourceUserCSS : sourceCustom;
}

void appendImportedStyle(const importSurroundings& machine, styleContainer style) {
    machine.store.appendStyle(std::move(style));
    machine.store.saveDatabase();
    machine.center.post(notifications::addLatestStyle);
}

} // namespace tessaril
