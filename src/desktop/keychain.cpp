#include "desktop/keychain.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QStringList>
#include <qt6keychain/keychain.h>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <utility>

namespace tessaril {

namespace {

const QString service = "Tessaril";

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

/// One look-up, which both threads hold.
struct lookUp {
    void end(std::optional<std::string> found) {
        const std::lock_guard lock(mutex);
        password = std::move(found);
        isEnded = true;
        changed.notify_all();
    }

    std::mutex mutex;
    std::condition_variable changed;
    std::optional<std::string> password;
    bool isEnded = false;
};

void beginLookUp(const std::string& account, const std::shared_ptr<lookUp>& look) {
    auto* job = new QKeychain::ReadPasswordJob(service);
    start(job, account, [look](QKeychain::Job* ended) {
        if (ended->error() == QKeychain::NoError)
            look->end(static_cast<QKeychain::ReadPasswordJob*>(ended)->textData().toStdString());
        else
            look->end(std::nullopt);
    });
}

} // namespace

void Keychain::askAvailable(std::function<void(bool)> answer) {
    if (!QDBusConnection::sessionBus().isConnected()) return answer(false);
    askBus("ListNames", [answer = std::move(answer)](const QStringList& running) {
        if (namesAKeychain(running)) return answer(true);
        // Or one that starts when it is asked.
        askBus("ListActivatableNames",
               [answer](const QStringList& others) { answer(namesAKeychain(others)); });
    });
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

std::function<std::optional<std::string>(const std::string&, std::chrono::milliseconds)>
Keychain::source() {
    // The library's jobs belong to the main thread; this object is how they get there.
    const auto mainThread = std::make_shared<QObject>();
    mainThread->moveToThread(QCoreApplication::instance()->thread());
    return [mainThread](const std::string& account,
                        std::chrono::milliseconds patience) -> std::optional<std::string> {
        const auto look = std::make_shared<lookUp>();
        QMetaObject::invokeMethod(
            mainThread.get(), [account, look] { beginLookUp(account, look); },
            Qt::QueuedConnection);
        std::unique_lock lock(look->mutex);
        look->changed.wait_for(lock, patience, [&] { return look->isEnded; });
        return look->password;
    };
}

} // namespace tessaril
