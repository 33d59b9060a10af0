#include "records/sql_record_store.h"

#include "model/log.h"
#include "records/random_uuid.h"

#include <algorithm>
#include <utility>

namespace tessaril {

namespace {

using namespace std::chrono_literals;

// Beyond its time an operation ends by itself in no time, unless it hangs.
constexpr auto grace = 500ms;
constexpr auto finishTime = 2s;

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

    std::mutex mutex;
    std::condition_variable changed;
    std::deque<operation> waiting;
    std::function<void()> changeHandler;
    bool hasNews = false;
    bool isClosed = false;
    std::optional<Clock::time_point> finishBy; ///< once it is to finish
};

SqlRecordStore::SqlRecordStore(sqlRecordStoreParts storeParts)
    : parts(std::move(storeParts))
    , ownName(randomUUID())
    , mailbox(std::make_shared<Mailbox>())
    , answering([this] { answerAll(); }) {}

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
    enqueue({.answer =
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
    const auto takeNext = [&] {
        operation next = std::move(mailbox->waiting.front());
        mailbox->waiting.pop_front();
        lock.unlock();
        return next;
    };
    for (;;) {
        mailbox->changed.wait(lock, [this] {
            return mailbox->finishBy || mailbox->hasNews || !mailbox->waiting.empty();
        });
        if (mailbox->finishBy) break;
        if (std::exchange(mailbox->hasNews, false)) {
            lock.unlock();
            callChangeHandler();
        } else {
            operation next = takeNext();
            carryOut(next);
        }
        lock.lock();
    }
    while (!mailbox->waiting.empty()) {
        takeNext().answer(failure(recordErrorCode::unreachable, "The application is ending."));
        lock.lock();
    }
    mailbox->isClosed = true;
    const Clock::time_point end = *mailbox->finishBy;
    lock.unlock();
    worker.reset();
    if (!listening) return;
    listening->stop();
    listening->waitForEnd(end);
}

void SqlRecordStore::carryOut(operation& next) {
    if (!followAddress())
        return next.answer(
            failure(recordErrorCode::notAuthenticated, "No record store is set up."));
    if (!next.subscribedType.empty()) {
        listenFor(next.subscribedType);
        next.task = [listening = listening](RecordSession& session,
                                            const TimeLimit& limit) -> recordOutcome {
            recordOutcome outcome;
            outcome.error = listening->waitUntilListening(limit);
            if (outcome.error) return outcome;
            auto tags = session.fetchTags(limit);
            if (auto* error = std::get_if<recordError>(&tags))
                outcome.error = std::move(*error);
            else
                outcome.tags = std::move(std::get<recordTags>(tags));
            return outcome;
        };
    }
    if (!next.task) return next.answer({});
    if (Clock::now() >= next.end)
        return next.answer(
            failure(recordErrorCode::timedOut, "Operations before it took all the time."));
    if (const auto outcome = outcomeOf(next)) return next.answer(*outcome);
    worker.reset(); // a late result counts for nothing
    next.answer(failure(recordErrorCode::timedOut, "The record store did not answer in time."));
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
        mailbox->changed.wait_until(lock, bound);
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
    const std::lock_guard lock(mailbox->mutex);
    mailbox->hasNews = false; // of the other account
    return account.has_value();
}

void SqlRecordStore::listenFor(const std::string& recordType) {
    subscribedTypes.insert(recordType);
    if (listening && !listening->hasEnded()) return listening->addType(recordType);
    listening = std::make_shared<ChangeListening>(ownName, [box = mailbox] { box->putNews(); });
    for (const std::string& type : subscribedTypes)
        listening->addType(type);
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
