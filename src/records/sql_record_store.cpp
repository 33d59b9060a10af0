#include "records/sql_record_store.h"

#include "model/log.h"
#include "records/postgres_connection.h"
#include "records/random_uuid.h"

#include <algorithm>
#include <utility>

namespace tessaril {

namespace {

using namespace std::chrono_literals;

// Beyond its time an operation ends by itself in no time, unless it hangs.
constexpr auto grace = 500ms;
constexpr auto finishTime = 2s;
constexpr const char* addressChanged = "The record store's address was changed meanwhile.";

recordOutcome failure(recordErrorCode code, const char* text) {
    return {.error = recordError{code, text}};
}

std::optional<recordAddress> usableAddress(const std::string& text) {
    auto parsed = parseRecordAddress(text);
    if (auto* address = std::get_if<recordAddress>(&parsed)) return std::move(*address);
    const auto fault = std::get<recordAddressFault>(parsed);
    if (fault == recordAddressFault::holdsPassword)
        logLine("The record store's address holds a password and is not used.");
    if (fault == recordAddressFault::notUnderstood)
        logLine("The record store's address is not understood.");
    return std::nullopt;
}

} // namespace

/// What reaches the answering thread from others. Threads that were left behind hold it too.
struct SqlRecordStore::Mailbox {
    void putNews() {
        const std::lock_guard lock(mutex);
        hasNews = true;
        changed.notify_all();
    }
    void putDecided() {
        const std::lock_guard lock(mutex);
        isDecided = true;
        changed.notify_all();
    }

    std::mutex mutex;
    std::condition_variable changed;
    std::deque<operation> waiting;
    std::function<void()> changeHandler;
    bool hasNews = false;
    bool isDecided = false; ///< a subscription that waits may go on
    bool isClosed = false;
    std::optional<Clock::time_point> finishBy; ///< once it is to finish
};

SqlRecordStore::SqlRecordStore(sqlRecordStoreParts storeParts)
    : parts(std::move(storeParts))
    , ownName(randomUUID())
    , mailbox(std::make_shared<Mailbox>())
    , answering([this] { answerAll(); }) {
    PostgresConnection::outliveProgram();
}

SqlRecordStore::~SqlRecordStore() {
    finish();
}

void SqlRecordStore::askAccountStatus(AccountHandler answer) {
    enqueue({.answer = [answer = std::move(answer)](const recordOutcome& outcome) {
        answer(outcome.error ? accountStatus::notAvailable : accountStatus::available);
    }});
}

void SqlRecordStore::fetchRecords(std::vector<recordID> ids, FetchHandler answer) {
    enqueue({.task = [ids](RecordSession& session, const TimeLimit& limit) -> recordOutcome {
                 recordFetch fetched = session.fetch(ids, limit);
                 return {.error = std::move(fetched.error), .records = std::move(fetched.records)};
             },
             .answer =
                 [this, ids, answer = std::move(answer)](const recordOutcome& outcome) {
                     if (outcome.records)
                         for (const recordID& id : ids) {
                             const auto found = outcome.records->find(id);
                             knownTags[id] =
                                 found == outcome.records->end() ? "" : found->second.changeTag;
                         }
                     answer({.records = outcome.records, .error = outcome.error});
                 }});
}

void SqlRecordStore::modifyRecords(std::vector<cloudRecord> records, SaveHandler answer) {
    std::vector<recordID> ids;
    std::vector<std::string> newTags;
    for (const cloudRecord& record : records) {
        ids.push_back(record.id);
        newTags.push_back(randomUUID());
    }
    auto save = std::make_shared<const recordsToSave>(std::move(records), newTags, ownName);
    enqueue({.task = [save](RecordSession& session, const TimeLimit& limit) -> recordOutcome {
                 recordSave saved = session.save(*save, limit);
                 return {.error = std::move(saved.error),
                         .changeTags = std::move(saved.changeTags)};
             },
             .answer =
                 [this, ids = std::move(ids),
                  answer = std::move(answer)](const recordOutcome& outcome) {
                     for (std::size_t i = 0; i < outcome.changeTags.size(); ++i)
                         knownTags[ids[i]] = outcome.changeTags[i];
                     answer({.error = outcome.error, .changeTags = outcome.changeTags});
                 },
             .newTags = std::move(newTags)});
}

void SqlRecordStore::saveRecord(cloudRecord record, SaveHandler answer) {
    std::vector<cloudRecord> records;
    records.push_back(std::move(record));
    modifyRecords(std::move(records), std::move(answer));
}

void SqlRecordStore::saveSubscription(std::string_view recordType, DoneHandler answer) {
    const std::string type(recordType);
    enqueue({.task = [](RecordSession& session, const TimeLimit& limit) -> recordOutcome {
                 auto tags = session.fetchTags(limit);
                 if (auto* error = std::get_if<recordError>(&tags))
                     return {.error = std::move(*error)};
                 return {.tags = std::move(std::get<recordTags>(tags))};
             },
             .answer =
                 [this, type, answer = std::move(answer)](const recordOutcome& outcome) {
                     answer(outcome.error);
                     if (!outcome.error && hasMissedChange(type, outcome.tags)) mailbox->putNews();
                 },
             .subscribedType = type});
}

void SqlRecordStore::setChangeHandler(std::function<void()> handler) {
    const std::lock_guard lock(mailbox->mutex);
    mailbox->changeHandler = std::move(handler);
}

void SqlRecordStore::finish() {
    const std::lock_guard once(finishing);
    if (!answering.joinable()) return;
    {
        const std::lock_guard lock(mailbox->mutex);
        mailbox->finishBy = Clock::now() + finishTime;
        mailbox->changed.notify_all();
    }
    answering.join();
}

void SqlRecordStore::enqueue(operation asked) {
    asked.end = Clock::now() + parts.operationTime;
    const std::lock_guard lock(mailbox->mutex);
    if (mailbox->isClosed) return; // nobody is there any more to be answered
    mailbox->waiting.push_back(std::move(asked));
    mailbox->changed.notify_all();
}

void SqlRecordStore::answerAll() {
    std::unique_lock lock(mailbox->mutex);
    const auto hasWork = [this] {
        return mailbox->finishBy || mailbox->hasNews || mailbox->isDecided ||
               !mailbox->waiting.empty();
    };
    for (;;) {
        if (subscriptions.empty())
            mailbox->changed.wait(lock, hasWork);
        else
            mailbox->changed.wait_until(lock, subscriptions.front().asked.end, hasWork);
        if (mailbox->finishBy) break;
        if (std::exchange(mailbox->hasNews, false)) {
            lock.unlock();
            callChangeHandler();
        } else if (!mailbox->waiting.empty()) {
            operation next = std::move(mailbox->waiting.front());
            mailbox->waiting.pop_front();
            lock.unlock();
            carryOut(next);
        } else {
            mailbox->isDecided = false;
            lock.unlock();
            resumeSubscriptions();
        }
        lock.lock();
    }
    const Clock::time_point end = *mailbox->finishBy;
    lock.unlock();
    answerRest();
    worker.reset();
    if (!listening) return;
    listening->stop();
    listening->waitForEnd(end);
}

/// Answers what was not begun, and from then on nothing.
void SqlRecordStore::answerRest() {
    const recordOutcome ending =
        failure(recordErrorCode::unreachable, "The application is ending.");
    for (const subscription& each : std::exchange(subscriptions, {}))
        each.asked.answer(ending);
    std::unique_lock lock(mailbox->mutex);
    while (!mailbox->waiting.empty()) {
        const operation next = std::move(mailbox->waiting.front());
        mailbox->waiting.pop_front();
        lock.unlock();
        next.answer(ending);
        lock.lock();
    }
    mailbox->isClosed = true;
}

void SqlRecordStore::carryOut(operation& next) {
    answerFailedSubscriptions();
    if (!followAddress())
        return next.answer(
            failure(recordErrorCode::notAuthenticated, "No record store is set up."));
    if (!next.subscribedType.empty()) return subscribe(next);
    if (!next.task) return next.answer({});
    answerOutcomeOf(next);
}

void SqlRecordStore::answerOutcomeOf(const operation& next) {
    if (Clock::now() >= next.end)
        return next.answer(
            failure(recordErrorCode::timedOut, "Operations before it took all the time."));
    const auto asked = account;
    std::optional<recordOutcome> outcome = outcomeOf(next);
    if (!outcome) {
        worker.reset(); // a late result counts for nothing
        outcome = failure(recordErrorCode::timedOut, "The record store did not answer in time.");
    }
    followAddress();
    // What another account holds is no answer any more.
    if (account != asked) outcome = failure(recordErrorCode::unreachable, addressChanged);
    next.answer(*outcome);
    // The user was refused, but no longer is.
    if (!outcome->error && listening && listening->hasEnded()) listenAnew();
}

/// Nothing when the operation did not end in time.
std::optional<recordOutcome> SqlRecordStore::outcomeOf(const operation& next) {
    if (!worker)
        worker = std::make_unique<AbandonableWorker>(
            RecordSession(*account, parts.passwords, parts.operationTime));
    if (listening && !next.newTags.empty()) listening->addOwnTags(next.newTags);

    const auto result = std::make_shared<std::optional<recordOutcome>>();
    worker->carryOut(next.task, next.end, [box = mailbox, result](recordOutcome outcome) {
        const std::lock_guard lock(box->mutex);
        *result = std::move(outcome);
        box->changed.notify_all();
    });
    std::unique_lock lock(mailbox->mutex);
    while (!*result) {
        Clock::time_point bound = next.end + grace;
        if (mailbox->finishBy) bound = std::min(bound, *mailbox->finishBy);
        if (Clock::now() >= bound) return std::nullopt;
        if (!subscriptions.empty()) bound = std::min(bound, subscriptions.front().asked.end);
        mailbox->changed.wait_until(lock, bound);
        lock.unlock();
        answerFailedSubscriptions();
        lock.lock();
    }
    return std::move(*result);
}

/// Whether there is an account at the address as it is now.
bool SqlRecordStore::followAddress() {
    std::string now = parts.address();
    if (now == lastAddress) return account.has_value();
    auto parsed = usableAddress(now);
    lastAddress = std::move(now);
    if (parsed == account) return account.has_value();
    account = std::move(parsed);
    worker.reset();
    knownTags.clear();
    subscribedTypes.clear();
    if (listening) listening->stop();
    listening.reset();
    for (const subscription& each : std::exchange(subscriptions, {}))
        each.asked.answer(failure(recordErrorCode::unreachable, addressChanged));
    const std::lock_guard lock(mailbox->mutex);
    mailbox->hasNews = false; // of the other account
    return account.has_value();
}

void SqlRecordStore::subscribe(operation& asked) {
    listenFor(asked.subscribedType);
    const int asking = listening->ask();
    if (listening->beginningSince(asking) == ChangeListening::beginning::done)
        return answerOutcomeOf(asked);
    subscriptions.push_back({std::move(asked), listening, asking});
}

/// Those whose listening failed or took all their time; also while an operation is under way.
void SqlRecordStore::answerFailedSubscriptions() {
    for (subscription& each : std::exchange(subscriptions, {})) {
        const auto beginning = each.listening->beginningSince(each.asking);
        if (beginning == ChangeListening::beginning::failed) {
            each.asked.answer({.error = each.listening->error()});
        } else if (Clock::now() >= each.asked.end) {
            each.listening->addMissed();
            each.asked.answer(
                failure(recordErrorCode::timedOut, "Changes are not listened for in time."));
        } else {
            subscriptions.push_back(std::move(each));
        }
    }
}

void SqlRecordStore::resumeSubscriptions() {
    const auto hasBegun = [](const subscription& each) {
        return each.listening->beginningSince(each.asking) == ChangeListening::beginning::done;
    };
    for (;;) {
        followAddress();
        answerFailedSubscriptions();
        const auto next = std::ranges::find_if(subscriptions, hasBegun);
        if (next == subscriptions.end()) return;
        operation asked = std::move(next->asked);
        // What was saved before changes were listened for is found by the tags, if those are.
        asked.answer = [begun = next->listening,
                        answer = std::move(asked.answer)](const recordOutcome& outcome) {
            if (outcome.error) begun->addMissed();
            answer(outcome);
        };
        subscriptions.erase(next);
        answerOutcomeOf(asked);
    }
}

void SqlRecordStore::listenFor(const std::string& recordType) {
    subscribedTypes.insert(recordType);
    if (!listening || listening->hasEnded()) return listenAnew();
    listening->addType(recordType);
}

void SqlRecordStore::listenAnew() {
    const bool isFirst = !listening;
    listening = std::make_shared<ChangeListening>(
        ownName, [box = mailbox] { box->putNews(); }, [box = mailbox] { box->putDecided(); });
    for (const std::string& type : subscribedTypes)
        listening->addType(type);
    if (!isFirst) listening->addMissed();
    startListening(listening, *account, parts.passwords, parts.operationTime);
}

void SqlRecordStore::callChangeHandler() {
    // The address may have changed since.
    if (!followAddress() || !listening) return;
    std::function<void()> handler;
    {
        const std::lock_guard lock(mailbox->mutex);
        handler = mailbox->changeHandler;
    }
    if (handler) handler();
}

/// Whether a record of the type was changed between its last fetch or save here and the moment from
/// which changes are listened for.
bool SqlRecordStore::hasMissedChange(const std::string& recordType, const recordTags& tags) const {
    return std::ranges::any_of(tags, [&](const auto& stored) {
        const auto known = knownTags.find(stored.first);
        return stored.first.type == recordType && known != knownTags.end() &&
               known->second != stored.second;
    });
}

} // namespace tessaril
