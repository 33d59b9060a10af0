#pragma once

#include "platform/record_store.h"
#include "support/test.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <limits>
#include <mutex>

// What every record store does, whatever keeps the records. A server of the suite has
//     std::unique_ptr<RecordStore> client();  another machine of the same user
//     void stop(); void start();
//     void deliver();                         lets what is on its way arrive, where that takes a
//     push
namespace tessaril::testing {

/// Brings what arrives on other threads to the test.
class Arrivals {
public:
    /// Changes what `until` looks at.
    template <typename Change>
    void note(Change change) {
        const std::lock_guard lock(mutex);
        change();
        changed.notify_all();
    }

    /// Waits for the condition; false when it never came to hold.
    template <typename Server, typename Condition>
    [[nodiscard]] bool until(Server& server, Condition condition) {
        server.deliver();
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, std::chrono::minutes(2), condition);
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
};

template <typename Server>
class RecordStoreSuite : public ::testing::Test {
protected:
    struct Machine {
        std::unique_ptr<RecordStore> store;
        int changes = 0; ///< told of
    };

    ~RecordStoreSuite() override {
        for (const auto& machine : machines)
            machine->store->finish();
    }

    Machine& machine() {
        Machine& made = *machines.emplace_back(std::make_unique<Machine>());
        made.store = server.client();
        made.store->setChangeHandler([this, &made] { arrivals.note([&] { ++made.changes; }); });
        return made;
    }

    /// What an operation answered; it answers once.
    template <typename Answer, typename Ask>
    Answer answerOf(Ask ask) {
        struct received {
            std::optional<Answer> answer;
            int times = 0;
        };
        const auto got = std::make_shared<received>();
        ask([this, got](const Answer& answer) {
            arrivals.note([&] {
                got->answer = answer;
                ++got->times;
            });
        });
        EXPECT_TRUE(arrivals.until(server, [&] { return got->times > 0; })) << "no answer";
        EXPECT_EQ(got->times, 1);
        return got->answer.value_or(Answer{});
    }

    recordFetch fetch(Machine& from, std::vector<recordID> ids) {
        return answerOf<recordFetch>(
            [&](auto answer) { from.store->fetchRecords(std::move(ids), answer); });
    }
    recordSave modify(Machine& at, std::vector<cloudRecord> records) {
        return answerOf<recordSave>(
            [&](auto answer) { at.store->modifyRecords(std::move(records), answer); });
    }
    /// Saves the record, which carries its new tag from then on.
    std::optional<recordError> save(Machine& at, cloudRecord& record) {
        const auto saved =
            answerOf<recordSave>([&](auto answer) { at.store->saveRecord(record, answer); });
        if (!saved.error) record.changeTag = saved.changeTags.at(0);
        return saved.error;
    }
    std::optional<recordError> subscribe(Machine& at, std::string_view type) {
        return answerOf<std::optional<recordError>>(
            [&](auto answer) { at.store->saveSubscription(type, answer); });
    }
    accountStatus status(Machine& at) {
        return answerOf<accountStatus>([&](auto answer) { at.store->askAccountStatus(answer); });
    }
    bool hears(const Machine& machine, int changes) {
        return arrivals.until(server, [&] { return machine.changes >= changes; });
    }

    static recordErrorCode codeOf(const std::optional<recordError>& error) {
        return error ? error->code : recordErrorCode{};
    }

    Server server;
    Arrivals arrivals;
    std::vector<std::unique_ptr<Machine>> machines;
    const recordID database{"styleDatabase", "styleDatabase"};
    const recordID preferences{"preferences", "preferences"};
};

TYPED_TEST_SUITE_P(RecordStoreSuite);

TYPED_TEST_P(RecordStoreSuite, KeepsARecordWhole) {
    auto& first = this->machine();
    auto& second = this->machine();
    EXPECT_EQ(this->status(first), accountStatus::available);
    const recordFetch none = this->fetch(first, {this->database, this->preferences});
    EXPECT_TRUE(none.records && none.records->empty() && !none.error);

    std::string bytes(1000, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(i);
    cloudRecord document{.id = this->database, .file = std::make_shared<const std::string>(bytes)};
    cloudRecord settings{.id = this->preferences,
                         .fields = {{"least", std::numeric_limits<std::int64_t>::min()},
                                    {"text \"'", "a\n\\ \xF0\x9F\x8E\xA8 $1 ' "},
                                    {"empty", ""}}};
    EXPECT_FALSE(this->save(first, document));
    EXPECT_FALSE(this->save(first, settings));
    const recordFetch both = this->fetch(second, {this->preferences, this->database});
    ASSERT_TRUE(both.records && both.records->size() == 2);
    EXPECT_EQ(*both.records->at(this->database).file, bytes);
    EXPECT_TRUE(both.records->at(this->database).fields.empty());
    EXPECT_FALSE(both.records->at(this->preferences).file);
    EXPECT_EQ(both.records->at(this->preferences).fields, settings.fields);
    EXPECT_EQ(both.records->at(this->preferences).changeTag, settings.changeTag);

    document.file = std::make_shared<const std::string>();
    EXPECT_FALSE(this->save(first, document));
    const recordFetch one = this->fetch(second, {this->database, {"styleDatabase", "preferences"}});
    ASSERT_TRUE(one.records && one.records->size() == 1);
    ASSERT_TRUE(one.records->at(this->database).file) << "an empty file is one";
    EXPECT_EQ(one.records->at(this->database).changeTag, document.changeTag);
}

TYPED_TEST_P(RecordStoreSuite, SavesOnlyOverTheStateThatTheSaverKnows) {
    auto& first = this->machine();
    auto& second = this->machine();
    cloudRecord mine{.id = this->database, .fields = {{"by", "first"}}};
    EXPECT_FALSE(this->save(first, mine));
    cloudRecord theirs{.id = this->database, .fields = {{"by", "second"}}};
    EXPECT_EQ(this->codeOf(this->save(second, theirs)), recordErrorCode::changed) << "without tag";
    theirs.changeTag = mine.changeTag;
    EXPECT_FALSE(this->save(second, theirs));
    EXPECT_NE(theirs.changeTag, mine.changeTag);
    EXPECT_EQ(this->codeOf(this->save(first, mine)), recordErrorCode::changed) << "stale";
    cloudRecord unknown{.id = this->preferences, .changeTag = theirs.changeTag};
    EXPECT_EQ(this->codeOf(this->save(first, unknown)), recordErrorCode::changed) << "no record";

    cloudRecord good{.id = this->preferences};
    const recordSave partly = this->modify(first, {good, mine});
    EXPECT_EQ(this->codeOf(partly.error), recordErrorCode::changed);
    EXPECT_TRUE(partly.changeTags.empty());
    const recordFetch stored = this->fetch(first, {this->database, this->preferences});
    ASSERT_TRUE(stored.records && stored.records->size() == 1) << "all or none";
    EXPECT_EQ(stored.records->at(this->database).fields, theirs.fields);
    const recordSave wholly = this->modify(second, {theirs, good});
    EXPECT_FALSE(wholly.error);
    ASSERT_EQ(wholly.changeTags.size(), 2U);
    const recordFetch after = this->fetch(first, {this->database, this->preferences});
    EXPECT_EQ(after.records.value().at(this->database).changeTag, wholly.changeTags[0]);
    EXPECT_EQ(after.records.value().at(this->preferences).changeTag, wholly.changeTags[1]);
}

TYPED_TEST_P(RecordStoreSuite, OfTwoSavesAtOnceOneWins) {
    cloudRecord common{.id = this->database};
    EXPECT_FALSE(this->save(this->machine(), common));
    int won = 0, lost = 0;
    for (int i = 0; i < 4; ++i)
        this->machine().store->saveRecord(common, [&](const recordSave& saved) {
            this->arrivals.note([&] {
                won += !saved.error;
                lost += this->codeOf(saved.error) == recordErrorCode::changed;
            });
        });
    EXPECT_TRUE(this->arrivals.until(this->server, [&] { return won + lost == 4; }));
    EXPECT_EQ(won, 1);
}

TYPED_TEST_P(RecordStoreSuite, TellsTheOtherMachinesOfAChange) {
    auto& first = this->machine();
    auto& second = this->machine();
    auto& third = this->machine();
    EXPECT_FALSE(this->subscribe(first, this->database.type));
    EXPECT_FALSE(this->subscribe(second, this->database.type));
    EXPECT_FALSE(this->subscribe(second, this->database.type)) << "several are one";
    cloudRecord settings{.id = this->preferences};
    cloudRecord document{.id = this->database};
    EXPECT_FALSE(this->save(first, settings));
    EXPECT_FALSE(this->save(first, document));
    EXPECT_TRUE(this->hears(second, 1));
    // By the time when the third's save is heard of, so would have been what must not be.
    EXPECT_FALSE(this->save(third, document));
    EXPECT_TRUE(this->hears(first, 1));
    EXPECT_TRUE(this->hears(second, 2));
    EXPECT_EQ(first.changes, 1) << "who saves is not told";
    EXPECT_EQ(second.changes, 2) << "nobody asked for the preferences";
    EXPECT_FALSE(this->subscribe(first, this->preferences.type));
    EXPECT_FALSE(this->save(second, settings));
    EXPECT_TRUE(this->hears(first, 2));
}

TYPED_TEST_P(RecordStoreSuite, IsBackWhenTheServerIs) {
    auto& first = this->machine();
    auto& second = this->machine();
    cloudRecord document{.id = this->database, .fields = {{"n", std::int64_t{1}}}};
    EXPECT_FALSE(this->save(first, document));
    EXPECT_FALSE(this->subscribe(second, this->database.type));
    this->server.stop();
    const recordFetch failed = this->fetch(first, {this->database});
    EXPECT_EQ(this->codeOf(failed.error), recordErrorCode::unreachable);
    EXPECT_FALSE(failed.records) << "not an empty cloud";
    cloudRecord lost = document;
    EXPECT_EQ(this->codeOf(this->save(first, lost)), recordErrorCode::unreachable);
    this->server.start();
    const int before = second.changes;
    EXPECT_FALSE(this->save(first, document));
    EXPECT_TRUE(this->hears(second, before + 1)) << "though the connection was lost";
    const recordFetch stored = this->fetch(second, {this->database});
    EXPECT_EQ(stored.records.value().at(this->database).changeTag, document.changeTag);
}

REGISTER_TYPED_TEST_SUITE_P(RecordStoreSuite, KeepsARecordWhole,
                            SavesOnlyOverTheStateThatTheSaverKnows, OfTwoSavesAtOnceOneWins,
                            TellsTheOtherMachinesOfAChange, IsBackWhenTheServerIs);

} // namespace tessaril::testing
