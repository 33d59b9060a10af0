#pragma once

#include "platform/record_store.h"
#include "records/postgres_connection.h"
#include "records/record_tables.h"
#include "records/time_limit.h"
#include "web/record_address.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace tessaril {

/// What a record store and its thread that listens for the changes of others have in common. Safe
/// to use from both.
class ChangeListening {
public:
    /// - news: called on the listening thread when others changed what is asked for, or may have;
    ///   not once `stop` has returned
    /// - decided: called there whenever the answer of `beginningSince` may be another
    ChangeListening(std::string ownName, std::function<void()> news, std::function<void()> decided);

    // Of the store.

    void addType(std::string_view recordType);
    /// Has it tried at once where changes are not listened for. Gives a number for the following.
    int ask();
    enum class beginning { open, done, failed };
    /// What has come of it. Also where it failed it goes on being tried, unless the user was
    /// refused.
    beginning beginningSince(int asked) const;
    recordError error() const; ///< the last one
    /// Changes may have been missed: that they are listened for is news, now or later.
    void addMissed();
    /// Tags that this store itself is about to save. Those of older saves are forgotten, as by then
    /// they have been seen or replaced.
    void addOwnTags(std::span<const std::string> tags);
    void stop();
    /// Waits for the end of the thread; not longer than `until`.
    void waitForEnd(TimeLimit::Clock::time_point until);

    // Of the thread.

    const std::string& ownName() const { return name; }
    std::shared_ptr<const StopSignal> stopSignal() const { return signal; }
    bool isStopped() const { return signal->isStopped(); }
    bool isAskedFor(std::string_view recordType) const;
    bool isOwnTag(const std::string& tag) const;
    void tellNews() const;
    /// Listening began. What happened before it since it was lost is news.
    void tellBegun();
    void tellFailed(const recordError& error);
    /// Pauses before it is tried again; longer each time. Ends at once when the store asks.
    void pause();
    void tellEnded();
    bool hasEnded() const;

private:
    const std::string name;
    const std::function<void()> news;
    const std::function<void()> decided;
    const std::shared_ptr<StopSignal> signal = std::make_shared<StopSignal>();

    mutable std::mutex mutex;
    std::condition_variable changed;
    std::set<std::string, std::less<>> types;
    std::deque<std::string> ownTags; ///< the last ones
    bool isListening = false;
    bool mayHaveMissed = false;
    bool isAsked = false; ///< somebody waits for it to be tried
    bool isEnded = false;
    int attempts = 0; ///< that failed, since the start
    recordError lastError{recordErrorCode::unreachable, "Changes are not listened for."};
    std::chrono::milliseconds nextPause;
};

/// Listens on a thread of its own, which holds `listening`, until that is stopped or the user was
/// refused. Whoever is let in by another connection may have it start anew.
void startListening(std::shared_ptr<ChangeListening> listening, recordAddress address,
                    PasswordSource passwords, std::chrono::milliseconds operationTime);

// On the listening thread; both return when listening was lost, or could not begin.
recordError listenToPostgres(ChangeListening& listening, const recordAddress& address,
                             const PasswordSource& passwords,
                             std::chrono::milliseconds operationTime);
recordError listenToSqlite(ChangeListening& listening, const recordAddress& address,
                           std::chrono::milliseconds operationTime);

} // namespace tessaril
