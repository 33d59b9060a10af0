#include "windows/advanced_pane.h"

#include "preferences/preference_keys.h"
#include "windows/pane_form.h"
#include "windows/shown_text.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>

namespace tessaril {

namespace keys = preferenceKeys;

AdvancedPane::AdvancedPane(PreferenceControls& controls, PasswordStore* passwords)
    : bound(controls), password(controls, passwords) {
    QFormLayout* form = makePaneForm(*this);
    form->addRow("In the browser:",
                 bound.checkBox("Apply styles inside &frames of a page", keys::injectIframes));
    addGap(*form);
    form->addRow("St&yle-sharing site:", bound.addressField(keys::siteAddress));
    form->addRow("&Support address:", bound.addressField(keys::supportAddress));
    form->addRow("&Web site:", bound.addressField(keys::webSite));
    QLineEdit* recordStore =
        bound.addressField(keys::recordStoreAddress, [this](PreferenceControls::entered outcome) {
            password.addressEntered(outcome);
            showPassword();
        });
    recordStore->setPlaceholderText("None");
    form->addRow("&Record store:", recordStore);
    addPasswordRow(*form);
    addGap(*form);
    auto* note = new QLabel("For those who run services of their own. A field that is emptied goes "
                            "back to its default.");
    makeNote(*note);
    note->setWordWrap(true);
    form->addRow("", note);
    password.setChangeHandler([this] { showPassword(); });
    reload();
}

void AdvancedPane::addPasswordRow(QFormLayout& form) {
    passwordField = new QLineEdit;
    passwordField->setObjectName("recordStorePassword");
    passwordField->setEchoMode(QLineEdit::Password);
    connect(passwordField, &QLineEdit::editingFinished, this, [this] {
        if (!passwordField->isModified()) return;
        const std::string entered = passwordField->text().toStdString();
        passwordField->setText({}); // nothing is shown of what the keychain has
        password.set(entered);
    });
    form.addRow("&Password:", passwordField);
    passwordNote = new QLabel;
    passwordNote->setObjectName("recordStorePasswordNote");
    makeNote(*passwordNote);
    passwordNote->setWordWrap(true);
    form.addRow("", passwordNote);
}

void AdvancedPane::reload() {
    bound.reload();
    showPassword();
}

void AdvancedPane::showPassword() {
    passwordField->setEnabled(password.canBeSet());
    passwordNote->setText(qtText(password.note()));
}

void AdvancedPane::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    password.paneShown();
}

} // namespace tessaril
