#include "model/text.h"
#include "support/record_store_suite.h"
#include "support/sql_records.h"

#include <atomic>
#include <future>

namespace tessaril::testing {
namespace {

/// A place where nobody accepts the connections that are made to it.
struct Listener {
    explicit Listener(int queue) {
        place.sin_family = AF_INET;
        place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(::bind(socket, reinterpret_cast<sockaddr*>(&place), size), 0);
        EXPECT_EQ(::listen(socket, queue), 0);
        EXPECT_EQ(::getsockname(socket, reinterpret_cast<sockaddr*>(&place), &size), 0);
    }
    ~Listener() { ::close(socket); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    std::string address() const {
        return "postgresql://me@127.0.0.1:" + std::to_string(ntohs(place.sin_port)) + "/x";
    }

    int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in place{};
    socklen_t size = sizeof place;
};

class PostgresStore : public RecordStoreSuite<PostgresRecords> {
protected:
    Machine& machineAt(const std::string& address, PasswordSource passwords = passwordOf) {
        Machine& made = *machines.emplace_back(std::make_unique<Machine>());
        made.store = sqlClient(address, generousTime, std::move(passwords));
        made.store->setChangeHandler([this, &made] { arrivals.note([&] { ++made.changes; }); });
        return made;
    }
    recordErrorCode codeAt(const std::string& address, PasswordSource passwords = passwordOf) {
        return codeOf(fetch(machineAt(address, std::move(passwords)), {database}).error);
    }
};

TEST_F(PostgresStore, UsersOfOneDatabaseSeeNothingOfEachOther) {
    auto& first = machine();
    cloudRecord mine{.id = database, .fields = {{"of", "first"}}};
    EXPECT_FALSE(save(first, mine));
    EXPECT_FALSE(subscribe(first, database.type));
    const std::string otherUser = server.server.addUser();
    auto& other = machineAt(server.server.address(otherUser, server.database));
    const recordFetch none = fetch(other, {database});
    EXPECT_TRUE(none.records && none.records->empty());
    cloudRecord theirs{.id = database, .fields = {{"of", "other"}}};
    EXPECT_FALSE(save(other, theirs)) << "the tables are the first one's";
    EXPECT_EQ(fetch(first, {database}).records.value().at(database).fields, mine.fields);
    EXPECT_FALSE(save(machine(), mine));
    EXPECT_TRUE(hears(first, 1));
    EXPECT_EQ(first.changes, 1) << "of the other user's saves nothing was told before";

    // The server itself keeps them apart, not only this application's statements.
    const auto countAs = [&](const std::string& user) {
        return server.execute("SET ROLE " + user + "; SELECT count(*) FROM tessaril.records");
    };
    EXPECT_EQ(countAs(server.user), "1\n") << "also from who made the tables";
    EXPECT_EQ(countAs(otherUser), "1\n");
    EXPECT_EQ(server.execute("SET ROLE " + otherUser +
                             "; WITH gone AS (DELETE FROM "
                             "tessaril.records RETURNING 1) SELECT count(*) FROM gone"),
              "1\n");
    EXPECT_EQ(fetch(first, {database}).records.value().size(), 1U);
    // The statements do where the server does not.
    server.execute("ALTER ROLE " + otherUser + " SUPERUSER");
    EXPECT_TRUE(fetch(machineAt(server.server.address(otherUser, server.database)), {database})
                    .records.value()
                    .empty());
}

TEST_F(PostgresStore, WhoeverWaitsForTheTablesToBeMadeFindsThem) {
    constexpr int count = 4;
    const std::string lockers = "SELECT count(*) FROM pg_locks WHERE locktype = 'advisory' AND "
                                "database = (SELECT oid FROM pg_database WHERE datname = "
                                "current_database())";
    auto held = std::async(std::launch::async, [&] {
        server.execute("DO $$ BEGIN PERFORM pg_advisory_xact_lock(7228465910334187); WHILE (" +
                       lockers + " AND NOT granted) < " + std::to_string(count) +
                       " LOOP PERFORM pg_sleep(0.01); END LOOP; END $$");
    });
    while (server.execute(lockers) != "1\n") {
    }
    int saved = 0;
    std::string errors;
    for (int i = 0; i < count; ++i)
        machine().store->saveRecord({.id = {"preferences", std::to_string(i)}},
                                    [&](const recordSave& save) {
                                        arrivals.note([&] {
                                            ++saved;
                                            if (save.error) errors += save.error->text + "\n";
                                        });
                                    });
    held.get();
    EXPECT_TRUE(arrivals.until(server, [&] { return saved == count; }));
    EXPECT_EQ(errors, "");
}

TEST_F(PostgresStore, WhoIsNotLetInIsNotAuthenticated) {
    const auto none = [](const std::string&, std::chrono::milliseconds) {
        return passwordAnswer{};
    };
    const auto wrong = [](const std::string&, std::chrono::milliseconds) {
        return passwordAnswer{.password = "wrong"};
    };
    EXPECT_EQ(codeAt(server.address(), none), recordErrorCode::notAuthenticated);
    EXPECT_EQ(codeAt(server.address(), wrong), recordErrorCode::notAuthenticated);
    EXPECT_EQ(codeAt(server.server.address("nobody_at_all", server.database)),
              recordErrorCode::notAuthenticated);
    const std::string other = server.server.addUser();
    const std::string otherAddress = server.server.address(other, server.database);
    EXPECT_EQ(codeAt(otherAddress), recordErrorCode::failed)
        << "who may make no tables has logged in all the same";
    server.execute("REVOKE CONNECT ON DATABASE " + server.database + " FROM PUBLIC");
    EXPECT_EQ(codeAt(otherAddress), recordErrorCode::notAuthenticated);
    EXPECT_EQ(codeAt(server.server.address(server.user, "no_database")), recordErrorCode::failed);
    EXPECT_EQ(codeOf(subscribe(machineAt(server.address(), wrong), database.type)),
              recordErrorCode::notAuthenticated);
    auto& letIn = machine();
    EXPECT_TRUE(fetch(letIn, {database}).records);
    for (const std::string revoked : {"ALL ON tessaril.records", "USAGE ON SCHEMA tessaril"}) {
        server.execute("REVOKE " + revoked + " FROM " + server.user + ", PUBLIC");
        EXPECT_EQ(codeOf(fetch(letIn, {database}).error), recordErrorCode::failed) << revoked;
    }
}

TEST_F(PostgresStore, AKeychainThatIsStillLockedRefusesNobody) {
    const auto isUnlocked = std::make_shared<std::atomic<bool>>(false);
    auto& waiting = machineAt(server.address(), [isUnlocked](const std::string& account,
                                                             std::chrono::milliseconds patience) {
        return *isUnlocked ? passwordOf(account, patience) : passwordAnswer{.isUnknown = true};
    });
    EXPECT_EQ(codeOf(fetch(waiting, {database}).error), recordErrorCode::timedOut);
    EXPECT_EQ(codeOf(subscribe(waiting, database.type)), recordErrorCode::timedOut);
    *isUnlocked = true;
    EXPECT_TRUE(hears(waiting, 1)) << "listening went on being tried";
    EXPECT_TRUE(fetch(waiting, {database}).records);
}

TEST_F(PostgresStore, ASubscriptionThatWaitsHoldsUpNothing) {
    const auto release = std::make_shared<std::promise<void>>();
    const std::shared_future<void> released = release->get_future().share();
    const auto mayHang = std::make_shared<std::atomic<bool>>(false);
    auto& waiting = machineAt(server.address(), [released, mayHang](auto& account, auto patience) {
        if (*mayHang) released.wait();
        return passwordOf(account, patience);
    });
    cloudRecord document{.id = database};
    EXPECT_FALSE(save(waiting, document)) << "this connection is there from then on";
    *mayHang = true;
    std::optional<recordErrorCode> subscribed, atLast;
    waiting.store->saveSubscription(database.type, [&](const auto& error) {
        arrivals.note([&] { subscribed = codeOf(error); });
    });
    EXPECT_FALSE(save(waiting, document));
    EXPECT_FALSE(subscribed) << "its own connection is not";
    EXPECT_FALSE(save(machine(), document)) << "and this may not be missed";
    release->set_value();
    EXPECT_TRUE(arrivals.until(server, [&] { return subscribed.has_value(); }));
    EXPECT_EQ(subscribed, recordErrorCode{});
    EXPECT_TRUE(hears(waiting, 1));

    // Neither does it hold up the end, nor is it forgotten then, nor after its time.
    const auto never = std::make_shared<std::promise<void>>();
    const auto hangs = [wait = never->get_future().share()](auto& account, auto patience) {
        wait.wait();
        return passwordOf(account, patience);
    };
    auto& ending = machineAt(server.address(), hangs);
    ending.store->saveSubscription(database.type,
                                   [&](const auto& error) { atLast = codeOf(error); });
    EXPECT_EQ(status(ending), accountStatus::available) << "by then it waits";
    ending.store->finish();
    EXPECT_EQ(atLast, recordErrorCode::unreachable);
    const auto impatient = sqlClient(server.address(), std::chrono::milliseconds(300), hangs);
    EXPECT_EQ(codeOf(answerOf<std::optional<recordError>>(
                  [&](auto answer) { impatient->saveSubscription(database.type, answer); })),
              recordErrorCode::timedOut);
    never->set_value();
}

TEST_F(PostgresStore, WhatWasMissedIsToldAlsoWhereItCannotBeLookedFor) {
    std::promise<void> isAsked, mayGoOn;
    std::atomic<int> times = 0;
    auto& waiting = *machines.emplace_back(std::make_unique<Machine>());
    waiting.store =
        sqlClient(server.address(), std::chrono::seconds(3),
                  [&, wait = mayGoOn.get_future().share()](auto& account, auto patience) {
                      if (times++ == 0) {
                          isAsked.set_value();
                          wait.wait();
                      }
                      return passwordOf(account, patience);
                  });
    waiting.store->setChangeHandler([&] { arrivals.note([&] { ++waiting.changes; }); });
    std::optional<recordErrorCode> subscribed;
    waiting.store->saveSubscription(database.type, [&](const auto& error) {
        arrivals.note([&] { subscribed = codeOf(error); });
    });
    isAsked.get_future().wait();
    cloudRecord document{.id = database};
    EXPECT_FALSE(save(machine(), document));
    server.holdUpRecords();
    mayGoOn.set_value();
    EXPECT_TRUE(arrivals.until(server, [&] { return subscribed.has_value(); }));
    EXPECT_EQ(subscribed, recordErrorCode::timedOut);
    EXPECT_TRUE(hears(waiting, 1));
    waiting.store->finish();
}

TEST_F(PostgresStore, NothingOfTheOldAccountIsAnsweredOnceTheAddressHasChanged) {
    PostgresRecords other;
    cloudRecord document{.id = database};
    EXPECT_FALSE(save(machine(), document));
    std::mutex mutex;
    std::string address = server.address();
    std::atomic<int> asked = 0;
    std::promise<void> isBegun, isOver;
    // The user enters another address while the operation is connecting. What is asked first is a
    // subscription, which connects for itself, and not before this test is over.
    const auto changes = [&, end = isOver.get_future().share()](
                             const std::string& account, std::chrono::milliseconds patience) {
        if (asked++ == 0) {
            isBegun.set_value();
            end.wait();
            return passwordOf(account, patience);
        }
        const std::lock_guard lock(mutex);
        address = other.address();
        return passwordOf(account, patience);
    };
    SqlRecordStore store({.address =
                              [&] {
                                  const std::lock_guard lock(mutex);
                                  return address;
                              },
                          .passwords = changes,
                          .operationTime = generousTime});
    const auto fetched = [&] {
        return answerOf<recordFetch>([&](auto answer) { store.fetchRecords({database}, answer); });
    };
    std::optional<recordErrorCode> subscribed;
    store.saveSubscription(database.type, [&](const auto& error) {
        arrivals.note([&] { subscribed = codeOf(error); });
    });
    isBegun.get_future().wait();
    const recordFetch early = fetched();
    EXPECT_EQ(subscribed, recordErrorCode::unreachable);
    EXPECT_EQ(codeOf(early.error), recordErrorCode::unreachable);
    EXPECT_FALSE(early.records);
    EXPECT_TRUE(fetched().records.value().empty());
    isOver.set_value();
    store.finish();
}

TEST_F(PostgresStore, ReadsThePasswordFile) {
    const TemporaryFolder folder;
    writeFile(folder / "pgpass", "127.0.0.1:*:*:" + server.user + ":" + server.user + "\n");
    std::filesystem::permissions(folder / "pgpass", std::filesystem::perms::owner_read);
    ::setenv("PGPASSFILE", (folder / "pgpass").c_str(), 1);
    EXPECT_EQ(codeAt(server.address(), nullptr), recordErrorCode{});
    ::unsetenv("PGPASSFILE");
}

TEST_F(PostgresStore, AServerKilledInTheMiddleLeavesTheOldStateOrTheNew) {
    auto& first = machine();
    auto& second = machine();
    cloudRecord document{.id = database, .fields = {{"n", std::int64_t{1}}}};
    EXPECT_FALSE(save(first, document));
    EXPECT_FALSE(subscribe(second, database.type));

    const auto killedDuring = [&](auto begin) {
        server.holdUpRecords();
        std::promise<recordErrorCode> answered;
        begin([&](const auto& answer) { answered.set_value(codeOf(answer.error)); });
        server.waitUntilHeldUp();
        server.stop();
        const recordErrorCode code = answered.get_future().get();
        server.start();
        return code;
    };
    EXPECT_EQ(killedDuring([&](auto answer) { first.store->fetchRecords({database}, answer); }),
              recordErrorCode::unreachable);
    cloudRecord changed = document;
    changed.fields["n"] = std::int64_t{2};
    EXPECT_EQ(killedDuring([&](auto answer) { first.store->saveRecord(changed, answer); }),
              recordErrorCode::unreachable);
    const recordFetch stored = fetch(first, {database});
    EXPECT_EQ(stored.records.value().at(database).fields, document.fields);
    const int before = second.changes;
    EXPECT_FALSE(save(first, changed));
    EXPECT_TRUE(hears(second, before + 1));
}

TEST_F(PostgresStore, AConnectionThatTheServerClosedIsMadeAgainUnnoticed) {
    auto& first = machine();
    auto& second = machine();
    cloudRecord document{.id = database};
    EXPECT_FALSE(save(first, document));
    EXPECT_FALSE(subscribe(second, database.type));
    server.execute("SELECT pg_terminate_backend(pid) FROM pg_stat_activity WHERE datname = "
                   "current_database() AND pid <> pg_backend_pid()");
    EXPECT_FALSE(save(first, document)) << "nothing of it was done before";
    EXPECT_TRUE(hears(second, 1));
}

TEST_F(PostgresStore, ListensAgainOnceARefusalHasPassed) {
    auto& first = machine();
    auto& second = machine();
    cloudRecord document{.id = database};
    EXPECT_FALSE(save(first, document));
    EXPECT_FALSE(subscribe(second, database.type));
    server.execute("ALTER ROLE " + server.user + " NOLOGIN;" +
                   "SELECT pg_terminate_backend(pid) FROM pg_stat_activity WHERE query LIKE "
                   "'LISTEN %' AND datname = current_database()");
    // The other connections are still there.
    while (codeOf(subscribe(second, database.type)) != recordErrorCode::notAuthenticated) {
    }
    EXPECT_FALSE(save(first, document)) << "what happens meanwhile is told of later";
    const int before = second.changes;
    server.execute("ALTER ROLE " + server.user + " LOGIN");
    EXPECT_TRUE(fetch(second, {database}).records);
    EXPECT_TRUE(hears(second, before + 1));
}

TEST_F(PostgresStore, RefusesWhatANewerVersionMade) {
    auto& connected = machine();
    cloudRecord document{.id = database};
    EXPECT_FALSE(save(connected, document));
    server.execute("UPDATE tessaril.schema_version SET version = 2");
    EXPECT_EQ(codeOf(save(connected, document)), recordErrorCode::failed);
    EXPECT_EQ(server.execute("SELECT change_tag FROM tessaril.records"), document.changeTag + "\n");
    const recordFetch refused = fetch(machine(), {database});
    EXPECT_EQ(codeOf(refused.error), recordErrorCode::failed);
    EXPECT_THAT(refused.error->text, HasSubstr("newer version"));
}

TEST_F(PostgresStore, TrustsOnlyTheCertificateThatTheAddressNames) {
    const std::string secure = server.address() + "?sslmode=verify-full";
    auto& trusting = machineAt(secure + "&sslrootcert=" + server.server.certificate().string());
    EXPECT_TRUE(fetch(trusting, {database}).records);
    EXPECT_EQ(server.execute("SELECT DISTINCT ssl FROM pg_stat_ssl JOIN pg_stat_activity USING "
                             "(pid) WHERE usename = '" +
                             server.user + "'"),
              "t\n");
    EXPECT_EQ(codeAt(secure), recordErrorCode::unreachable) << "no authority vouches for it";
    // It counts as another machine, though it is this one: encrypted and verified unless asked.
    const std::string remote = replacingAll(server.address(), "127.0.0.1", "0.0.0.0");
    EXPECT_EQ(codeAt(remote), recordErrorCode::unreachable);
    EXPECT_EQ(codeAt(remote + "?sslmode=require"), recordErrorCode{});
}

TEST_F(PostgresStore, AServerThatNeverAnswersHoldsNobodyUp) {
    const Listener silent(16);
    const auto impatient = sqlClient(silent.address(), std::chrono::milliseconds(300));
    for (int i = 0; i < 2; ++i) {
        const auto fetched = answerOf<recordFetch>(
            [&](auto answer) { impatient->fetchRecords({database}, answer); });
        EXPECT_EQ(codeOf(fetched.error), recordErrorCode::timedOut);
        const auto saved = answerOf<recordSave>(
            [&](auto answer) { impatient->saveRecord({.id = database}, answer); });
        EXPECT_EQ(codeOf(saved.error), recordErrorCode::timedOut);
    }
    // Whoever quits does not wait for it either, whether it was begun or not.
    auto& patient = machineAt(silent.address());
    std::optional<recordErrorCode> code;
    patient.store->fetchRecords({database},
                                [&](const recordFetch& fetched) { code = codeOf(fetched.error); });
    patient.store->finish();
    EXPECT_TRUE(code == recordErrorCode::unreachable || code == recordErrorCode::timedOut);
}

TEST_F(PostgresStore, AnAddressThatSwallowsEverythingLeavesTimeForTheNext) {
    // A queue that is full has the system drop who else wants to connect.
    const Listener full(0);
    std::array<int, 2> waiting{};
    for (int& each : waiting) {
        each = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        ::connect(each, reinterpret_cast<const sockaddr*>(&full.place), full.size);
    }
    const auto store = sqlClient(full.address(), std::chrono::seconds(9));
    const auto fetched =
        answerOf<recordFetch>([&](auto answer) { store->fetchRecords({database}, answer); });
    EXPECT_EQ(codeOf(fetched.error), recordErrorCode::unreachable) << "before the time was over";
    for (const int each : waiting)
        ::close(each);
}

TEST_F(PostgresStore, AnOperationThatHangsIsLeftBehind) {
    // The way to the password hangs, as the look-up of a name may.
    const auto release = std::make_shared<std::promise<void>>();
    const std::shared_future<void> released = release->get_future().share();
    const auto hangs = [released, times = std::make_shared<std::atomic<int>>()](
                           const std::string& account, std::chrono::milliseconds patience) {
        if ((*times)++ == 0) released.wait();
        return passwordOf(account, patience);
    };
    const auto impatient = sqlClient(server.address(), std::chrono::seconds(3), hangs);
    const auto hung =
        answerOf<recordFetch>([&](auto answer) { impatient->fetchRecords({database}, answer); });
    EXPECT_EQ(codeOf(hung.error), recordErrorCode::timedOut);
    const auto next =
        answerOf<recordFetch>([&](auto answer) { impatient->fetchRecords({database}, answer); });
    EXPECT_TRUE(next.records) << "on a connection of its own";
    release->set_value();
}

} // namespace
} // namespace tessaril::testing
