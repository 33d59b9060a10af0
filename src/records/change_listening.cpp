#include "records/change_listening.h"

#include "model/log.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace tessaril {

namespace {

using namespace std::chrono_literals;
constexpr std::chrono::milliseconds shortestPause = 1s;
constexpr std::chrono::milliseconds longestPause = 60s;
// More than are saved between two looks at the file. One that is missing costs a needless fetch.
constexpr std::size_t keptTags = 100;

} // namespace

ChangeListening::ChangeListening(std::string ownName, std::function<void()> onNews,
                                 std::function<void()> onDecided)
    : name(std::move(ownName))
    , news(std::move(onNews))
    , decided(std::move(onDecided))
    , nextPause(shortestPause) {}

void ChangeListening::addType(std::string_view recordType) {
    const std::lock_guard lock(mutex);
    types.emplace(recordType);
}

int ChangeListening::ask() {
    const std::lock_guard lock(mutex);
    isAsked = !isListening;
    changed.notify_all();
    return attempts;
}

ChangeListening::beginning ChangeListening::beginningSince(int asked) const {
    const std::lock_guard lock(mutex);
    if (isListening) return beginning::done;
    return isEnded || attempts != asked ? beginning::failed : beginning::open;
}

recordError ChangeListening::error() const {
    const std::lock_guard lock(mutex);
    return lastError;
}

void ChangeListening::addMissed() {
    const std::lock_guard lock(mutex);
    if (!isListening)
        mayHaveMissed = true;
    else if (!signal->isStopped())
        news();
}

void ChangeListening::addOwnTags(std::span<const std::string> tags) {
    const std::lock_guard lock(mutex);
    ownTags.insert(ownTags.end(), tags.begin(), tags.end());
    while (ownTags.size() > keptTags)
        ownTags.pop_front();
}

void ChangeListening::stop() {
    const std::lock_guard lock(mutex);
    signal->stop();
    changed.notify_all();
}

void ChangeListening::waitForEnd(TimeLimit::Clock::time_point until) {
    std::unique_lock lock(mutex);
    changed.wait_until(lock, until, [this] { return isEnded; });
}

bool ChangeListening::isAskedFor(std::string_view recordType) const {
    const std::lock_guard lock(mutex);
    return types.contains(recordType);
}

bool ChangeListening::isOwnTag(const std::string& tag) const {
    const std::lock_guard lock(mutex);
    return std::ranges::find(ownTags, tag) != ownTags.end();
}

void ChangeListening::tellNews() const {
    const std::lock_guard lock(mutex);
    if (!signal->isStopped()) news();
}

void ChangeListening::tellBegun() {
    const std::lock_guard lock(mutex);
    isListening = true;
    isAsked = false;
    nextPause = shortestPause;
    decided();
    if (std::exchange(mayHaveMissed, false) && !signal->isStopped()) news();
}

void ChangeListening::tellFailed(const recordError& error) {
    const std::lock_guard lock(mutex);
    if (!mayHaveMissed)
        logLine("Changes of other machines are not heard of for now. " + error.text);
    isListening = false;
    mayHaveMissed = true;
    isAsked = false;
    ++attempts;
    lastError = error;
    // Asked again and again with a wrong password, a server might lock the user out.
    isEnded = error.code == recordErrorCode::notAuthenticated;
    changed.notify_all();
    decided();
}

void ChangeListening::pause() {
    std::unique_lock lock(mutex);
    changed.wait_for(lock, nextPause, [this] { return isAsked || signal->isStopped(); });
    nextPause = std::min(nextPause * 2, longestPause);
}

void ChangeListening::tellEnded() {
    const std::lock_guard lock(mutex);
    isListening = false;
    isEnded = true;
    changed.notify_all();
    decided();
}

bool ChangeListening::hasEnded() const {
    const std::lock_guard lock(mutex);
    return isEnded;
}

void startListening(std::shared_ptr<ChangeListening> listening, recordAddress address,
                    PasswordSource passwords, std::chrono::milliseconds operationTime) {
    std::thread([listening = std::move(listening), address = std::move(address),
                 passwords = std::move(passwords), operationTime] {
        for (;;) {
            const recordError error =
                address.isFile() ? listenToSqlite(*listening, address, operationTime)
                                 : listenToPostgres(*listening, address, passwords, operationTime);
            if (listening->isStopped()) break;
            listening->tellFailed(error);
            if (listening->hasEnded()) return;
            listening->pause();
            if (listening->isStopped()) break;
        }
        listening->tellEnded();
    }).detach(); // looking up a host's name cannot be interrupted
}

} // namespace tessaril
