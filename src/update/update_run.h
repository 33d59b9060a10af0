#pragma once

#include "events/notification_center.h"
#include "platform/dispatcher.h"
#include "store/style_store.h"
#include "update/style_check.h"

#include <functional>
#include <memory>
#include <stop_token>
#include <string>
#include <vector>

namespace tessaril {

class UpdateJob;

/// What runs work with. All outlive them and their tasks.
struct updateRunSurroundings {
    StyleStore& store;
    NotificationCenter& center;
    Dispatcher& dispatcher;
    checkSurroundings checks;
};

/// One check of every style in turn, as the update sheet shows it. The sheet may go at any time:
/// the check then ends with the style it is at, and what it has changed is saved. Main thread only.
class UpdateRun {
public:
    explicit UpdateRun(std::shared_ptr<UpdateJob> job);
    ~UpdateRun();
    UpdateRun(const UpdateRun&) = delete;
    UpdateRun& operator=(const UpdateRun&) = delete;

    /// - changed: called when what the sheet shows has changed
    /// - close: called when the sheet is to close
    void setHandlers(std::function<void()> changed, std::function<void()> close);

    /// To be called once, when the sheet appears.
    void begin();

    const std::string& log() const; ///< only ever grows
    double progress() const;        ///< 0 to 100
    /// Whether styles are still being checked: the spinner turns and Cancel is enabled; otherwise
    /// Done is.
    bool isRunning() const;
    /// Whether it ends after the style that it is at.
    bool isCanceled() const;

    /// Ends the run at the next style. At the fifth time saves and closes at once.
    void cancelClicked();
    /// Saves and closes.
    void doneClicked();

private:
    void saveAndClose();

    std::shared_ptr<UpdateJob> job;
    NotificationCenter& center;
    std::function<void()> close;
    int cancelCount = 0;
};

/// Makes the runs and ends them when the application quits. Main thread only.
class UpdateRuns {
public:
    explicit UpdateRuns(updateRunSurroundings surroundings);

    std::unique_ptr<UpdateRun> make();

    /// Ends all runs at once and saves what they have changed. For quitting.
    void stop();

private:
    updateRunSurroundings machine;
    std::stop_source stopping;
    std::vector<std::weak_ptr<UpdateJob>> jobs;
};

} // namespace tessaril
