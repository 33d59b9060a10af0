#pragma once

#include "update/update_run.h"

#include <cstddef>

namespace tessaril {

/// The work of a run, which may outlive its sheet: only the checks themselves are done in the
/// background, one after another, and all else on the main thread.
class UpdateJob : public std::enable_shared_from_this<UpdateJob> {
public:
    UpdateJob(const updateRunSurroundings& surroundings, std::stop_token stop);

    void begin();
    /// Ends at the next style.
    void cancel() { isCanceled = true; }
    /// Nobody looks any more: from now on every change is saved and shown as it is made.
    void abandon();
    void save();
    void saveUnsaved();

    const updateRunSurroundings machine;
    std::function<void()> changed;

    std::string log;
    double progress = 0;
    bool isRunning = false;
    bool isCanceled = false;

private:
    void goOn();
    void check(const std::shared_ptr<const styleContainer>& style);
    void complete(const std::shared_ptr<const styleContainer>& style, checkResult result);
    void report(checkOutcome outcome);
    void end(std::string_view lastWords);
    std::string updatedCount() const;
    void tell() const;

    std::stop_token stop;
    liveDatabase::styleList styles; ///< as they were at the beginning
    double step = 0;                ///< of the progress
    std::size_t processed = 0;
    std::size_t updated = 0;
    bool isAbandoned = false;
    bool hasUnsavedChanges = false;
};

} // namespace tessaril
