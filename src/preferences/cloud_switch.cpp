#include "preferences/cloud_switch.h"

#include "events/notification_names.h"
#include "preferences/preference_keys.h"

namespace tessaril {

CloudSwitch::CloudSwitch(Preferences& standardStore, NotificationCenter& bus,
                         Dispatcher& taskDispatcher)
    : standard(standardStore), center(bus), dispatcher(taskDispatcher) {}

void CloudSwitch::paneShown() {
    if (cloud.askAccountStatus)
        cloud.askAccountStatus([this](bool isAvailable) { accountAnswered(isAvailable); });
    else
        accountAnswered(false);
}

void CloudSwitch::accountAnswered(bool isAvailable) {
    available = isAvailable;
    if (!available && isOn()) turnOff();
    if (changed) changed();
}

bool CloudSwitch::isOn() const {
    return standard.boolean(preferenceKeys::useiCloud);
}

void CloudSwitch::turn(bool on) {
    if (!available || on == isOn()) return;
    if (!on) return turnOff();
    standard.set(preferenceKeys::useiCloud, true);
    if (cloud.prepareSync) cloud.prepareSync();
    center.post(notifications::lockForiCloud);
    if (cloud.startSync) dispatcher.inBackground(taskPriority::userInitiated, cloud.startSync);
}

void CloudSwitch::turnOff() {
    standard.set(preferenceKeys::useiCloud, false);
    if (cloud.endSync) cloud.endSync();
}

} // namespace tessaril
