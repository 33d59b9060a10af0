#pragma once

#include "platform/record_store.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace tessaril::testing {

class MemoryRecordStore;

/// The records of one user in memory, for any number of machines on one thread. Answers and
/// changes arrive when the test says so.
struct MemoryRecordServer {
    std::map<recordID, cloudRecord> records;
    std::vector<MemoryRecordStore*> machines;
    std::deque<std::function<void()>> answers; ///< on their way
    int savesSoFar = 0;

    bool deliverNext() {
        if (answers.empty()) return false;
        const auto answer = std::move(answers.front());
        answers.pop_front();
        answer();
        return true;
    }
    /// Everything on its way, and what that begins.
    void deliver() {
        while (deliverNext()) {
        }
    }
};

/// How one machine reaches the server. Operations are carried out when they are asked for.
class MemoryRecordStore : public RecordStore {
public:
    explicit MemoryRecordStore(MemoryRecordServer& recordServer) : server(recordServer) {
        server.machines.push_back(this);
    }
    ~MemoryRecordStore() override { std::erase(server.machines, this); }

    void askAccountStatus(AccountHandler answer) override {
        later([answer, status = status] { answer(status); });
    }

    void fetchRecords(std::vector<recordID> ids, FetchHandler answer) override {
        operations.push_back("fetch");
        recordFetch result{.records = std::nullopt, .error = takeError()};
        if (!result.error) {
            result.records.emplace();
            for (const recordID& id : ids)
                if (const auto found = server.records.find(id); found != server.records.end())
                    result.records->insert(*found);
        }
        later([answer, result] { answer(result); });
    }

    void modifyRecords(std::vector<cloudRecord> records, SaveHandler answer) override {
        operations.push_back("modify");
        save(std::move(records), std::move(answer));
    }
    void saveRecord(cloudRecord record, SaveHandler answer) override {
        operations.push_back("save " + record.id.type);
        save({std::move(record)}, std::move(answer));
    }

    void saveSubscription(std::string_view recordType, DoneHandler answer) override {
        operations.push_back("subscribe " + std::string(recordType));
        const auto error = takeError();
        if (!error) subscribed.emplace(recordType);
        later([answer, error] { answer(error); });
    }

    void setChangeHandler(std::function<void()> handler) override { changed = std::move(handler); }
    void finish() override { isFinished = true; }

    accountStatus status = accountStatus::available;
    std::deque<std::optional<recordErrorCode>> errors; ///< of the next operations
    std::vector<std::string> operations;               ///< asked for so far
    bool losesNextAnswer = false; ///< of a save, which is carried out all the same
    std::set<std::string, std::less<>> subscribed;
    std::function<void()> changed;
    bool isFinished = false;

private:
    std::optional<recordError> takeError() {
        if (errors.empty()) return std::nullopt;
        const auto code = errors.front();
        errors.pop_front();
        return code ? std::optional(recordError{*code, "as the test says"}) : std::nullopt;
    }
    void later(std::function<void()> answer) { server.answers.push_back(std::move(answer)); }

    std::optional<recordError> changedOnServer(const std::vector<cloudRecord>& records) const {
        for (const cloudRecord& record : records) {
            const auto stored = server.records.find(record.id);
            const std::string tag = stored == server.records.end() ? "" : stored->second.changeTag;
            if (tag != record.changeTag)
                return recordError{recordErrorCode::changed, "changed on the server"};
        }
        return std::nullopt;
    }

    void save(std::vector<cloudRecord> records, SaveHandler answer) {
        recordSave result{.error = takeError()};
        if (!result.error) result.error = changedOnServer(records);
        if (!result.error)
            for (cloudRecord& record : records) {
                record.changeTag = "state " + std::to_string(++server.savesSoFar);
                result.changeTags.push_back(record.changeTag);
                for (MemoryRecordStore* machine : server.machines)
                    if (machine != this && machine->subscribed.contains(record.id.type))
                        later([machine, &machines = server.machines] {
                            // It may have gone meanwhile.
                            if (std::ranges::find(machines, machine) != machines.end())
                                machine->changed();
                        });
                server.records.insert_or_assign(record.id, std::move(record));
            }
        if (std::exchange(losesNextAnswer, false))
            result = {.error = recordError{recordErrorCode::timedOut, "as the test says"}};
        later([answer, result] { answer(result); });
    }

    MemoryRecordServer& server;
};

} // namespace tessaril::testing
