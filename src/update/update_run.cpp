#include "update/update_run.h"

#include "events/notification_names.h"
#include "update/update_job.h"

#include <utility>

namespace tessaril {

namespace {

constexpr int cancelsThatClose = 5;

} // namespace

UpdateRun::UpdateRun(std::shared_ptr<UpdateJob> ownJob)
    : job(std::move(ownJob)), center(job->machine.center) {}

UpdateRun::~UpdateRun() {
    job->abandon();
}

void UpdateRun::setHandlers(std::function<void()> changed, std::function<void()> closeHandler) {
    job->changed = std::move(changed);
    close = std::move(closeHandler);
}

void UpdateRun::begin() {
    job->begin();
}

const std::string& UpdateRun::log() const {
    return job->log;
}

double UpdateRun::progress() const {
    return job->progress;
}

bool UpdateRun::isRunning() const {
    return job->isRunning;
}

bool UpdateRun::isCanceled() const {
    return job->isCanceled;
}

void UpdateRun::cancelClicked() {
    if (!isRunning()) return;
    job->cancel();
    if (++cancelCount == cancelsThatClose) return saveAndClose();
    if (const auto changed = job->changed) changed();
}

void UpdateRun::doneClicked() {
    if (!isRunning()) saveAndClose();
}

void UpdateRun::saveAndClose() {
    job->save();
    job->abandon();
    center.post(notifications::refreshTable);
    if (close) close();
}

// The runs of the application

UpdateRuns::UpdateRuns(updateRunSurroundings surroundings) : machine(std::move(surroundings)) {}

std::unique_ptr<UpdateRun> UpdateRuns::make() {
    std::erase_if(jobs, [](const auto& job) { return job.expired(); });
    auto job = std::make_shared<UpdateJob>(machine, stopping.get_token());
    jobs.push_back(job);
    return std::make_unique<UpdateRun>(std::move(job));
}

void UpdateRuns::stop() {
    stopping.request_stop();
    for (const auto& each : jobs)
        if (const auto job = each.lock()) job->saveUnsaved();
}

} // namespace tessaril
