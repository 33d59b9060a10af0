#pragma once

#include "platform/password_store.h"
#include "preferences/preference_controls.h"
#include "web/record_address.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <variant>

namespace tessaril {

/// The field for the password of the record store's user. The password goes to the keychain and
/// nowhere else. Main thread only.
class RecordPassword {
public:
    /// Both outlive it. Without `passwords` there is no keychain.
    RecordPassword(PreferenceControls& controls, PasswordStore* passwords);

    /// Called when a state below has changed by itself.
    void setChangeHandler(std::function<void()> handler);

    /// The pane with the field is shown: asks whether there is a keychain.
    void paneShown();

    /// The user entered an address in its field, which stands above this one.
    void addressEntered(PreferenceControls::entered outcome) { address = outcome; }

    /// Whether the field can be used: the address is that of a server, and there is a keychain.
    bool canBeSet() const;
    /// What stands below the field, also of the address.
    std::string_view note() const;
    /// The user entered a password, or emptied the field to have it forgotten.
    void set(const std::string& password);

private:
    struct state {
        bool isAvailable = false;
        std::string account; ///< whose password was set last
        std::string_view outcome;
        std::function<void()> changed;
    };

    using entered = PreferenceControls::entered;

    std::variant<recordAddress, recordAddressFault> shownAddress() const;
    std::string account() const;

    PreferenceControls& controls;
    PasswordStore* passwords;
    entered address = entered::stored; ///< what came of the one that was entered last
    std::shared_ptr<state> shown = std::make_shared<state>();
};

} // namespace tessaril
