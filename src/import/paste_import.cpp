#include "import/paste_import.h"

#include "formats/moz_document.h"
#include "formats/user_css_reader.h"
#include "model/text.h"

#include <utility>

namespace tessaril {

namespace {

constexpr std::string_view unnamedStyle = "Style from @-moz-document Format";
constexpr std::string_view invalidStyleText =
    "There was an error importing this style. Please make sure there were no formatting or syntax "
    "errors in this style.";
constexpr std::string_view noRulesTitle = "CSS Imported With No Rules";
constexpr std::string_view noRulesText =
    "The style you have imported does not have any defined rules for where it should be applied. "
    "If you do not define these rules, the style will be applied to all sites.";

constexpr const char* discardTitle = "Do you want to discard the text in the paste window?";
constexpr const char* discardText = "It has not been imported.";

bool isBlank(std::string_view text) {
    return trimmed(text).empty();
}

} // namespace

/// What has become of a text.
struct PasteImport::outcome : quietlyRead {
    bool isPlain = false; ///< plain CSS
};

PasteImport::PasteImport(importSurroundings surroundings) : machine(std::move(surroundings)) {}

bool PasteImport::canImport(std::string_view text) {
    if (!machine.list.isLockedForSync()) return !isBlank(text);
    machine.alerts.beep();
    return false;
}

PasteImport::Ticket PasteImport::importText(std::string text,
                                            std::function<void(bool imported)> done) {
    const Ticket ticket = std::make_shared<char>();
    machine.dispatcher.inBackground(taskPriority::utility, [this, valid = std::weak_ptr(ticket),
                                                            text = std::move(text),
                                                            done = std::move(done)]() mutable {
        if (valid.expired()) return;
        machine.dispatcher.onMain([this, valid = std::move(valid), result = read(std::move(text)),
                                   done = std::move(done)]() mutable {
            if (!valid.expired()) finish(std::move(result), done);
        });
    });
    return ticket;
}

PasteImport::outcome PasteImport::read(std::string text) const {
    if (!contains(text, mozDocumentKeyword) && !contains(text, metadataOpening))
        return {{plainStyle(std::move(text), machine.making)}, true};
    outcome result{parseQuietly(text, machine)};
    if (!result.style) return result;
    setSourceByUpdateAddress(*result.style);
    std::string& name = result.style->styleData.name;
    if (name == defaultStyleName) name = unnamedStyle;
    return result;
}

void PasteImport::finish(outcome result, const std::function<void(bool imported)>& done) {
    if (!result.style) {
        machine.alerts.showAlert(invalidStyleTitle, invalidStyleText);
        return done(false);
    }
    if (machine.list.isLockedForSync()) {
        machine.alerts.beep();
        return done(false);
    }
    appendImportedStyle(machine, std::move(*result.style));
    done(true);
    if (result.tellErrors) result.tellErrors();
    if (result.isPlain) machine.alerts.showAlert(noRulesTitle, noRulesText);
}

bool PasteImport::mayDiscard(std::string_view text) {
    if (isBlank(text)) return true;
    return machine.alerts
               .ask({.title = discardTitle,
                     .text = discardText,
                     .buttons = {"Keep Editing", "Discard"},
                     .destructiveButton = 1})
               .button == 1;
}

} // namespace tessaril
