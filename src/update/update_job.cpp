#include "update/update_job.h"

#include "events/notification_names.h"

#include <algorithm>
#include <utility>

namespace tessaril {

UpdateJob::UpdateJob(const updateRunSurroundings& surroundings, std::stop_token stopToken)
    : machine(surroundings), stop(std::move(stopToken)) {}

void UpdateJob::begin() {
    log = "Checking for updates...\n";
    const std::size_t count = machine.store.countNonCustomStyles();
    if (count < 1) return end("No styles need updates.");
    isRunning = true;
    step = 100.0 / static_cast<double>(count);
    styles = machine.store.snapshot().styles;
    tell();
    goOn();
}

/// Goes on with the first style that is not done.
void UpdateJob::goOn() {
    for (; processed < styles.size(); ++processed) {
        if (isCanceled) return end("Update process was interrupted. " + updatedCount());
        if (styles[processed]->source == sourceCustom) continue;
        // As it is now, which may not be what it was at the beginning.
        const auto style = machine.store.findStyle(styles[processed]->uniqueID);
        if (style && style->source != sourceCustom) return check(style);
    }
    end("Updates completed. " + updatedCount());
}

void UpdateJob::check(const std::shared_ptr<const styleContainer>& style) {
    machine.dispatcher.inBackground(taskPriority::background, [self = shared_from_this(), style] {
        if (self->stop.stop_requested()) return;
        auto result = checkStyle(*style, sheetCheck, self->machine.checks, self->stop);
        self->machine.dispatcher.onMain([self, style, result = std::move(result)]() mutable {
            self->complete(style, std::move(result));
        });
    });
}

void UpdateJob::complete(const std::shared_ptr<const styleContainer>& style, checkResult result) {
    if (stop.stop_requested()) return;
    // The sheet has its own log; in the list the style's button tells more.
    if (result.outcome != checkOutcome::updated) result.tellErrors = {};
    const checkOutcome outcome = landCheck(machine.store, *style, std::move(result), sheetCheck);
    if (outcome == checkOutcome::outdated) return goOn(); // with what the style is now
    if (outcome == checkOutcome::updated) {
        // Or an open window of properties would put the old ones back later.
        machine.center.post(notifications::closeProperties, style->uniqueID);
        ++updated;
        hasUnsavedChanges = true;
        if (isAbandoned) {
            save();
            machine.center.post(notifications::refreshTable);
        }
    }
    report(outcome);
    ++processed;
    tell();
    goOn();
}

void UpdateJob::report(checkOutcome outcome) {
    std::string name = "\"" + styles[processed]->styleData.name + "\"";
    std::ranges::replace(name, '\n', ' '); // a line each
    switch (outcome) {
    case checkOutcome::upToDate:
        log += name + " is already up-to-date.\n";
        break;
    case checkOutcome::updated:
        log += name + " was updated to the latest version.\n";
        break;
    case checkOutcome::error:
        log += "An error occurred checking for updates for " + name + ".\n";
        break;
    case checkOutcome::nothingToCheck:
    case checkOutcome::outdated:
        return;
    }
    progress += step;
}

void UpdateJob::end(std::string_view lastWords) {
    log += lastWords;
    isRunning = false;
    styles.clear();
    tell();
}

void UpdateJob::abandon() {
    changed = nullptr;
    isAbandoned = true;
    cancel();
    saveUnsaved();
}

void UpdateJob::save() {
    hasUnsavedChanges = false;
    machine.store.saveDatabase();
}

void UpdateJob::saveUnsaved() {
    if (hasUnsavedChanges) save();
}

std::string UpdateJob::updatedCount() const {
    return std::to_string(updated) +
           (updated == 1 ? " style was updated." : " styles were updated.");
}

void UpdateJob::tell() const {
    // It may end in this call.
    if (const auto handler = changed) handler();
}

} // namespace tessaril
