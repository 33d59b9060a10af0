#include "desktop/keychain.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QStringList>
#include <qt6keychain/keychain.h>

#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace tessaril {

namespace {

using Clock = std::chrono::steady_clock;

const QString service = "Tessaril";
/// Who asks still later has the user asked anew.
constexpr std::chrono::minutes longestPrompt{1};

bool namesAKeychain(const QStringList& services) {
    for (const char* known :
         {"org.freedesktop.secrets", "org.kde.kwalletd", "org.kde.kwalletd5", "org.kde.kwalletd6"})
        if (services.contains(known)) return true;
    return false;
}

/// Asks the bus for names, by one of its methods.
void askBus(const char* method, std::function<void(const QStringList&)> answer) {
    const auto call = QDBusMessage::createMethodCall(
        "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method);
    auto* waiting = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call),
                                                QCoreApplication::instance());
    QObject::connect(waiting, &QDBusPendingCallWatcher::finished, waiting,
                     [waiting, answer = std::move(answer)] {
                         const QDBusPendingReply<QStringList> reply = *waiting;
                         waiting->deleteLater();
                         answer(reply.isError() ? QStringList() : reply.value());
                     });
}

/// Starts a job, which deletes itself.
void start(QKeychain::Job* job, const std::string& account,
           std::function<void(QKeychain::Job*)> done) {
    job->setKey(QString::fromStdString(account));
    QObject::connect(job, &QKeychain::Job::finished, job, std::move(done));
    job->start();
}

/// One look-up, which its threads hold.
class LookUp {
public:
    void end(passwordAnswer found) {
        const std::lock_guard lock(mutex);
        answer = std::move(found);
        isEnded = true;
        changed.notify_all();
    }
    passwordAnswer wait(std::chrono::milliseconds patience) {
        std::unique_lock lock(mutex);
        changed.wait_for(lock, patience, [this] { return isEnded; });
        return answer;
    }
    bool canBeJoined() {
        const std::lock_guard lock(mutex);
        return !isEnded && Clock::now() < begun + longestPrompt;
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    passwordAnswer answer{.password = {}, .isUnknown = true};
    bool isEnded = false;
    const Clock::time_point begun = Clock::now();
};

/// Those under way. Who asks again while the user is still unlocking the keychain waits for the
/// same answer, instead of having the user asked again.
class LookUps {
public:
    struct joined {
        std::shared_ptr<LookUp> look;
        bool isNew;
    };
    joined join(const std::string& account) {
        const std::lock_guard lock(mutex);
        std::weak_ptr<LookUp>& known = byAccount[account];
        if (auto look = known.lock(); look && look->canBeJoined())
            return {.look = std::move(look), .isNew = false};
        auto look = std::make_shared<LookUp>();
        known = look;
        return {.look = std::move(look), .isNew = true};
    }

private:
    std::mutex mutex;
    std::map<std::string, std::weak_ptr<LookUp>> byAccount; ///< gone with who waits and the job
};

/// Whether the desktop has a keychain, running or ready to be started.
void askForKeychain(std::function<void(bool)> answer) {
    if (!QDBusConnection::sessionBus().isConnected()) return answer(false);
    askBus("ListNames", [answer = std::move(answer)](const QStringList& running) {
        if (namesAKeychain(running)) return answer(true);
        // Or one that starts when it is asked.
        askBus("ListActivatableNames",
               [answer](const QStringList& others) { answer(namesAKeychain(others)); });
    });
}

void beginLookUp(const std::string& account, const std::shared_ptr<LookUp>& look) {
    askForKeychain([account, look](bool isThere) {
        if (!isThere) return look->end({});
        auto* job = new QKeychain::ReadPasswordJob(service);
        start(job, account, [job, look](QKeychain::Job* ended) {
            if (ended->error() == QKeychain::NoError)
                return look->end({.password = job->textData().toStdString()});
            // One that stays locked, or fails, may still hold it.
            look->end({.isUnknown = ended->error() != QKeychain::EntryNotFound});
        });
    });
}

} // namespace

void Keychain::askAvailable(std::function<void(bool)> answer) {
    askForKeychain(std::move(answer));
}

void Keychain::keep(const std::string& account, const std::string& password,
                    std::function<void(bool)> answer) {
    if (password.empty())
        return start(new QKeychain::DeletePasswordJob(service), account,
                     [answer = std::move(answer)](QKeychain::Job* ended) {
                         answer(ended->error() == QKeychain::NoError ||
                                ended->error() == QKeychain::EntryNotFound);
                     });
    auto* job = new QKeychain::WritePasswordJob(service);
    job->setTextData(QString::fromStdString(password));
    start(job, account, [answer = std::move(answer)](QKeychain::Job* ended) {
        answer(ended->error() == QKeychain::NoError);
    });
}

PasswordSource Keychain::source() {
    // The library's jobs belong to the main thread; this object is how they get there.
    const auto mainThread = std::make_shared<QObject>();
    mainThread->moveToThread(QCoreApplication::instance()->thread());
    const auto underWay = std::make_shared<LookUps>();
    return [mainThread, underWay](const std::string& account,
                                  std::chrono::milliseconds patience) -> passwordAnswer {
        const auto [look, isNew] = underWay->join(account);
        if (isNew)
            QMetaObject::invokeMethod(
                mainThread.get(), [account, look = look] { beginLookUp(account, look); },
                Qt::QueuedConnection);
        return look->wait(patience);
    };
}

} // namespace tessaril
