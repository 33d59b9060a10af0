#include "update/style_updates.h"

#include "events/notification_names.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace tessaril {

namespace {

/// Fewer than there are threads for what waits for the network, so that links and icons do not wait
/// for all checks.
constexpr std::size_t mostAtOnce = 8;

std::string_view statusOf(checkOutcome outcome) {
    switch (outcome) {
    case checkOutcome::updated:
        return updateStatuses::updated;
    case checkOutcome::upToDate:
        return updateStatuses::noUpdates;
    case checkOutcome::error:
        return updateStatuses::error;
    case checkOutcome::nothingToCheck:
    case checkOutcome::outdated:
        break;
    }
    return updateStatuses::none;
}

} // namespace

StyleUpdates::StyleUpdates(styleUpdatesSurroundings surroundings)
    : machine(std::move(surroundings)) {}

void StyleUpdates::checkStyleForUpdate(std::int64_t id) {
    const auto style = machine.store.findStyle(id);
    if (!style || style->source == sourceCustom) return;
    askedFor.insert(id);
    begin(id);
    startWaiting();
    tellWhetherRunning();
}

void StyleUpdates::updateAllClicked() {
    if (machine.list.isLockedForSync() || machine.list.styles().empty() || isRunning())
        return machine.alerts.beep();
    checkAll();
}

void StyleUpdates::checkAll() {
    std::vector<std::int64_t> ids; // first, as what is told of a check may change the rows
    for (const auto& row : machine.list.styles())
        if (!row->isCustom) ids.push_back(row->uniqueID);
    for (const std::int64_t id : ids)
        begin(id);
    startWaiting();
    tellWhetherRunning();
}

void StyleUpdates::updateAllStyles() {
    if (machine.list.isLockedForSync()) return machine.alerts.beep();
    machine.center.post(notifications::openUpdateSheet);
}

bool StyleUpdates::hasStylesToCheck() const {
    return std::ranges::any_of(machine.list.styles(),
                               [](const auto& row) { return !row->isCustom; });
}

void StyleUpdates::stop() {
    stopping.request_stop();
    waiting.clear();
}

void StyleUpdates::begin(std::int64_t id) {
    if (stopping.stop_requested() || machine.updatingStyles.contains(id)) return;
    machine.updatingStyles.add(id);
    machine.list.showUpdateStatus(id, updateStatuses::checking);
    machine.center.post(notifications::closeProperties, id);
    waiting.push_back(id);
}

void StyleUpdates::startWaiting() {
    while (running < mostAtOnce && !waiting.empty()) {
        const std::int64_t id = waiting.front();
        waiting.pop_front();
        if (const auto style = machine.store.findStyle(id))
            start(style);
        else
            end(id, checkOutcome::nothingToCheck);
    }
}

void StyleUpdates::start(const std::shared_ptr<const styleContainer>& style) {
    ++running;
    machine.dispatcher.inBackground(taskPriority::background, [this, style] {
        const std::stop_token stop = stopping.get_token();
        if (stop.stop_requested()) return;
        auto result = checkStyle(*style, rowCheck, machine.checks, stop);
        machine.dispatcher.onMain([this, style, result = std::move(result)]() mutable {
            if (stopping.stop_requested()) return;
            --running;
            // Nobody wants to hear at every start of the program that nothing has changed.
            const bool isNews = result.outcome == checkOutcome::updated;
            if (!isNews && !askedFor.contains(style->uniqueID)) result.tellErrors = {};
            const auto outcome = landCheck(machine.store, *style, std::move(result), rowCheck);
            if (outcome == checkOutcome::outdated)
                waiting.push_front(style->uniqueID); // for a check of what it is now
            else
                end(style->uniqueID, outcome);
            startWaiting();
            tellWhetherRunning();
        });
    });
}

void StyleUpdates::end(std::int64_t id, checkOutcome outcome) {
    askedFor.erase(id);
    machine.updatingStyles.remove(id);
    machine.list.showUpdateStatus(id, statusOf(outcome));
}

void StyleUpdates::tellWhetherRunning() {
    if (isRunning() == wasRunning) return;
    wasRunning = !wasRunning;
    if (observer) observer();
}

} // namespace tessaril
