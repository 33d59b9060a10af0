#include "preferences/record_password.h"

#include "preferences/preference_keys.h"
#include "web/record_address.h"

#include <utility>
#include <variant>

namespace tessaril {

namespace {

constexpr std::string_view forServers = "For a record store on a PostgreSQL server.";
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

/// Empty unless the address is a server's.
std::string RecordPassword::account() const {
    const auto parsed = parseRecordAddress(controls.text(preferenceKeys::recordStoreAddress));
    const auto* address = std::get_if<recordAddress>(&parsed);
    return address && !address->isFile() ? accountOf(*address) : std::string();
}

bool RecordPassword::canBeSet() const {
    return shown->isAvailable && !account().empty();
}

std::string_view RecordPassword::note() const {
    const std::string now = account();
    if (now.empty()) return forServers;
    if (!shown->isAvailable) return noKeychain;
    return now == shown->account ? shown->outcome : keptInKeychain;
}

void RecordPassword::set(const std::string& password) {
    const std::string name = account();
    if (!canBeSet()) return;
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
