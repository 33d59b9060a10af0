#pragma once

#include "platform/record_store.h"
#include "records/abandonable_worker.h"
#include "records/change_listening.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>

namespace tessaril {

struct sqlRecordStoreParts {
    /// Where the records are, as the user writes it (see `parseRecordAddress`); read for each
    /// operation, on threads of the store, never once `finish` has returned.
    std::function<std::string()> address;
    /// The desktop's keychain; may be null. libpq's password file is read beside it.
    PasswordSource passwords;
    /// How long an operation may take; what does not end by itself then is given up a little later.
    std::chrono::milliseconds operationTime = std::chrono::seconds(9);
};

/// The records in an SQLite file or on a PostgreSQL server, as the address says. All handlers are
/// called on one thread.
///
/// Without an address that can be used there is no account, and operations end as
/// `notAuthenticated`. An address that holds a password is not used. When the address changes, the
/// connections to the old one are closed and its subscriptions end: what another account holds is
/// no change of this one's records, and must not be merged as one.
class SqlRecordStore : public RecordStore {
public:
    explicit SqlRecordStore(sqlRecordStoreParts parts);
    ~SqlRecordStore() override;
    SqlRecordStore(const SqlRecordStore&) = delete;
    SqlRecordStore& operator=(const SqlRecordStore&) = delete;

    void askAccountStatus(AccountHandler answer) override;
    void fetchRecords(std::vector<recordID> ids, FetchHandler answer) override;
    void modifyRecords(std::vector<cloudRecord> records, SaveHandler answer) override;
    void saveRecord(cloudRecord record, SaveHandler answer) override;
    void saveSubscription(std::string_view recordType, DoneHandler answer) override;
    void setChangeHandler(std::function<void()> handler) override;
    /// Gives the operation under way two seconds. Not to be called by a handler.
    void finish() override;

private:
    using Clock = TimeLimit::Clock;
    struct operation {
        AbandonableWorker::Task task; ///< none of what is answered at once
        std::function<void(const recordOutcome&)> answer;
        std::vector<std::string> newTags; ///< of a save
        std::string subscribedType;       ///< of a subscription
        Clock::time_point end{};
    };
    struct Mailbox;

    /// A subscription that waits until changes are listened for, beside further operations: making
    /// the connection for that may take as long as an operation.
    struct subscription {
        operation asked;
        std::shared_ptr<ChangeListening> listening;
        int asking; ///< see `ChangeListening::ask`
    };

    void enqueue(operation asked);
    void answerAll();
    void answerRest();
    void carryOut(operation& next);
    void answerOutcomeOf(const operation& next);
    std::optional<recordOutcome> outcomeOf(const operation& next);
    bool followAddress();
    void listenFor(const std::string& recordType);
    void listenAnew();
    void subscribe(operation& asked);
    void answerFailedSubscriptions();
    void resumeSubscriptions();
    void callChangeHandler();
    bool hasMissedChange(const std::string& recordType, const recordTags& tags) const;

    const sqlRecordStoreParts parts;
    const std::string ownName;
    const std::shared_ptr<Mailbox> mailbox;

    // Of the answering thread alone.
    std::optional<std::string> lastAddress; ///< as it was read last
    std::optional<recordAddress> account;
    std::unique_ptr<AbandonableWorker> worker;
    std::shared_ptr<ChangeListening> listening;
    std::set<std::string> subscribedTypes;
    std::deque<subscription> subscriptions; ///< that wait, by their ends
    recordTags knownTags; ///< that were fetched or saved last; empty for no record

    std::mutex finishing; ///< held while the thread is joined
    std::thread answering;
};

} // namespace tessaril
