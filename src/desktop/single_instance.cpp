#include "desktop/single_instance.h"

#include "model/log.h"

#include <QDataStream>
#include <QDeadlineTimer>
#include <QFile>
#include <QLocalSocket>
#include <QThread>

#include <fcntl.h>
#include <sys/file.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>

namespace tessaril {

namespace {

constexpr char acknowledgement = 'k';
constexpr int retryPause = 20; // milliseconds
// Longer than any command line that the kernel passes on.
constexpr qint64 largestMessage = qint64{64} << 20;

QByteArray bytes(const std::string& text) {
    return QByteArray(text.data(), static_cast<qsizetype>(text.size()));
}

// A message is its length in bytes (64 bits, big-endian), the token, and the list of arguments.
QByteArray encoded(const laterStart& start) {
    QByteArrayList arguments;
    for (const std::string& argument : start.arguments)
        arguments.append(bytes(argument));
    QByteArray body;
    QDataStream bodyStream(&body, QIODevice::WriteOnly);
    bodyStream << bytes(start.activationToken) << arguments;
    QByteArray length;
    QDataStream lengthStream(&length, QIODevice::WriteOnly);
    lengthStream << static_cast<qint64>(body.size());
    return length + body;
}

enum class reception { incomplete, complete, broken };

reception decode(QLocalSocket& socket, laterStart& start) {
    constexpr qint64 lengthSize = sizeof(qint64);
    if (socket.bytesAvailable() < lengthSize) return reception::incomplete;
    qint64 length = 0;
    QDataStream(socket.peek(lengthSize)) >> length;
    if (length < 0 || length > largestMessage) return reception::broken;
    if (socket.bytesAvailable() < lengthSize + length) return reception::incomplete;

    QDataStream stream(socket.read(lengthSize + length).mid(lengthSize));
    QByteArray token;
    QByteArrayList arguments;
    stream >> token >> arguments;
    if (stream.status() != QDataStream::Ok) return reception::broken;
    start.activationToken = token.toStdString();
    for (const QByteArray& argument : arguments)
        start.arguments.push_back(argument.toStdString());
    return reception::complete;
}

/// The address of the first one's socket as it stands in the lock file; empty while it starts.
QString addressIn(int lockFile) {
    constexpr std::size_t longest = 4096;
    QByteArray address(longest, Qt::Uninitialized);
    const ssize_t size = ::pread(lockFile, address.data(), longest, 0);
    address.truncate(std::max<ssize_t>(size, 0));
    return QFile::decodeName(address);
}

void writeAddress(int lockFile, const QString& address) {
    const QByteArray text = QFile::encodeName(address);
    if (::ftruncate(lockFile, 0) != 0 ||
        ::pwrite(lockFile, text.data(), static_cast<std::size_t>(text.size()), 0) != text.size())
        logLine("Error writing the instance lock.");
}

/// Whether the first one took `message`.
bool handOver(const QString& address, const QByteArray& message, const QDeadlineTimer& deadline) {
    const auto remaining = [&] { return static_cast<int>(deadline.remainingTime()); };
    QLocalSocket socket;
    socket.connectToServer(address);
    if (!socket.waitForConnected(remaining())) return false;
    socket.write(message);
    while (socket.bytesToWrite() > 0)
        if (!socket.waitForBytesWritten(remaining())) return false;
    while (socket.bytesAvailable() == 0)
        if (!socket.waitForReadyRead(remaining())) return false;
    char answer = 0;
    return socket.read(&answer, 1) == 1 && answer == acknowledgement;
}

} // namespace

SingleInstance::SingleInstance(std::filesystem::path sharedContainer)
    : container(std::move(sharedContainer)) {
    server.setSocketOptions(QLocalServer::UserAccessOption);
    QObject::connect(&server, &QLocalServer::newConnection, &server, [this] {
        while (QLocalSocket* socket = server.nextPendingConnection())
            receiveFrom(socket);
    });
}

SingleInstance::~SingleInstance() {
    release();
}

SingleInstance::role SingleInstance::begin(const laterStart& start, Handler onLaterStart,
                                           std::chrono::milliseconds patience) {
    handler = std::move(onLaterStart);
    const QByteArray message = encoded(start);
    const QDeadlineTimer deadline(patience);
    // The first one may just be starting, or just be ending: then this process takes its place.
    do {
        if (lock()) {
            listen();
            return role::first;
        }
        const QString address = addressIn(lockFile.get());
        if (!address.isEmpty() && handOver(address, message, deadline)) return role::handedOver;
        QThread::msleep(retryPause);
    } while (!deadline.hasExpired());
    return role::refused;
}

void SingleInstance::stopListening() {
    server.close();
    for (QLocalSocket* socket : server.findChildren<QLocalSocket*>())
        socket->abort();
}

void SingleInstance::release() {
    stopListening();
    lockFile = {};
}

/// Where the folder cannot be locked at all, every process counts as the first: a second window
/// does less harm than none.
bool SingleInstance::lock() {
    const std::filesystem::path path = container / "instance.lock";
    if (!lockFile.isOpen())
        lockFile = FileDescriptor(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (!lockFile.isOpen()) return true;
    if (::flock(lockFile.get(), LOCK_EX | LOCK_NB) != 0) return errno != EWOULDBLOCK;
    return true;
}

void SingleInstance::listen() {
    // With the lock held, a socket that lies here belonged to a process that was killed.
    const QString inContainer = QFile::decodeName(bytes((container / "instance.socket").native()));
    QLocalServer::removeServer(inContainer);
    if (!server.listen(inContainer)) {
        // The path is too long for a socket, or the file system holds none.
        socketFolder = std::make_unique<QTemporaryDir>();
        if (!server.listen(socketFolder->filePath("instance.socket"))) {
            logLine("Unable to listen for later starts.");
            return;
        }
    }
    writeAddress(lockFile.get(), server.fullServerName());
}

void SingleInstance::receiveFrom(QLocalSocket* socket) {
    const auto receive = [this, socket] {
        laterStart start;
        const reception state = decode(*socket, start);
        if (state == reception::incomplete) return;
        if (state == reception::broken) return socket->abort();
        if (handler) handler(std::move(start));
        socket->write(&acknowledgement, 1);
        socket->flush(); // the loop may not come round again
        socket->disconnectFromServer();
    };
    QObject::connect(socket, &QLocalSocket::readyRead, socket, receive);
    QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    receive();
}

} // namespace tessaril
