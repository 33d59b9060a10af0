#include "windows/advanced_pane.h"

#include "preferences/preference_keys.h"
#include "windows/pane_form.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>

namespace tessaril {

namespace keys = preferenceKeys;

AdvancedPane::AdvancedPane(PreferenceControls& controls) : bound(controls) {
    QFormLayout* form = makePaneForm(*this);
    form->addRow("In the browser:",
                 bound.checkBox("Apply styles inside &frames of a page", keys::injectIframes));
    addGap(*form);
    form->addRow("St&yle-sharing site:", bound.addressField(keys::siteAddress));
    form->addRow("&Support address:", bound.addressField(keys::supportAddress));
    form->addRow("&Web site:", bound.addressField(keys::webSite));
    QLineEdit* recordStore = bound.addressField(keys::recordStoreAddress);
    recordStore->setPlaceholderText("None");
    form->addRow("&Record store:", recordStore);
    auto* note = new QLabel("For those who run services of their own. A field that is emptied goes "
                            "back to its default.");
    makeNote(*note);
    note->setWordWrap(true);
    form->addRow("", note);
    bound.reload();
}

} // namespace tessaril
