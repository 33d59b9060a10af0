#include "preferences/record_password.h"

#include "preferences/preference_keys.h"
#include "web/record_address.h"

#include <utility>
#include <variant>

namespace tessaril {

namespace {

constexpr std::string_view forServers = "For a record store on a PostgreSQL server.";
constexpr std::string_view notUnderstood =
    "This address is not understood and not used. Write /folder/file.db or "
    "postgresql://user@host/database.";
constexpr std::string_view holdsPassword =
    "This address seems to hold a password and is not used. The password has a field of its own.";
constexpr std::string_view takenOut = "The password was taken out of the address; enter it here.";
constexpr std::string_view takenOutForFile =
    "The password was taken out of the address. There is no keychain here; it is read from the "
    "password file ~/.pgpass.";
constexpr std::string_view noKeychain =
    "There is no keychain here; the password is read from the password file ~/.pgpass.";
constexpr std::string_view keptInKeychain =
    "Kept in the keychain; without one there, the password file ~/.pgpass is read.";
constexpr std::string_view isKept = "The keychain keeps it now.";
constexpr std::string_view isForgotten = "The keychain has forgotten it.";
constexpr std::string_view isRefused = "The keychain did not take it.";

} // namespace

RecordPassword::RecordPassword(PreferenceControls& preferenceControls, PasswordStore* store)
    : controls(preferenceControls), passwords(store) {}

void RecordPassword::setChangeHandler(std::function<void()> handler) {
    shown->changed = std::move(handler);
}

void RecordPassword::paneShown() {
    if (!passwords) return;
    passwords->askAvailable([asked = std::weak_ptr(shown)](bool isAvailable) {
        const auto now = asked.lock();
        if (!now || std::exchange(now->isAvailable, isAvailable) == isAvailable) return;
        if (now->changed) now->changed();
    });
}

/// That of the field: what is stored, unless the user's last one was not.
std::variant<recordAddress, recordAddressFault> RecordPassword::shownAddress() const {
    if (address == entered::notUnderstood) return recordAddressFault::notUnderstood;
    if (address == entered::holdsPassword) return recordAddressFault::holdsPassword;
    return parseRecordAddress(controls.text(preferenceKeys::recordStoreAddress));
}

/// Empty unless the address is a server's.
std::string RecordPassword::account() const {
    const auto parsed = shownAddress();
    const auto* server = std::get_if<recordAddress>(&parsed);
    return server && !server->isFile() ? accountOf(*server) : std::string();
}

bool RecordPassword::canBeSet() const {
    return shown->isAvailable && !account().empty();
}

std::string_view RecordPassword::note() const {
    const auto parsed = shownAddress();
    if (const auto* fault = std::get_if<recordAddressFault>(&parsed)) {
        if (*fault == recordAddressFault::notUnderstood) return notUnderstood;
        if (*fault == recordAddressFault::holdsPassword) return holdsPassword;
    }
    const std::string now = account();
    if (now.empty()) return forServers;
    if (address == entered::storedWithoutPassword)
        return shown->isAvailable ? takenOut : takenOutForFile;
    if (!shown->isAvailable) return noKeychain;
    return now == shown->account ? shown->outcome : keptInKeychain;
}

void RecordPassword::set(const std::string& password) {
    const std::string name = account();
    if (!canBeSet()) return;
    address = entered::stored;
    passwords->keep(name, password,
                    [asked = std::weak_ptr(shown), name,
                     wanted = password.empty() ? isForgotten : isKept](bool isDone) {
                        const auto now = asked.lock();
                        if (!now) return;
                        now->account = name;
                        now->outcome = isDone ? wanted : isRefused;
                        if (now->changed) now->changed();
                    });
}

} // namespace tessaril
