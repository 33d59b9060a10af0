#pragma once

#include "desktop/file_descriptor.h"

#include <QByteArray>
#include <QLocalServer>
#include <QTemporaryDir>

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class QLocalSocket;

namespace tessaril {

/// What a later start hands over.
struct laterStart {
    std::vector<std::string> arguments; ///< any bytes
    /// The desktop's leave to take the focus; empty where it gave none.
    std::string activationToken;

    bool operator==(const laterStart&) const = default;
};

/// Sees to it that one process at a time works on a container: a lock on the file `instance.lock`
/// in it, which the kernel takes back however the process ends, and a local socket for this user
/// only, through which a later start hands over what it was asked to open. Main thread only; needs
/// an application object.
class SingleInstance {
public:
    /// Receives a later start, on the main thread; the later process ends when this has returned.
    using Handler = std::function<void(laterStart)>;

    enum class role {
        first,      ///< this process works on the container until `release` or its end
        handedOver, ///< another does, and has taken `start`
        refused,    ///< another does, and did not answer in time
    };

    explicit SingleInstance(std::filesystem::path container);
    ~SingleInstance();

    /// Becomes the first, or hands `start` to it; waits up to `patience` for the other's answer.
    role begin(const laterStart& start, Handler handler,
               std::chrono::milliseconds patience = std::chrono::seconds(30));

    /// Takes no more starts but stays the first, so that the next start waits until this process
    /// has written everything and ended. To be called when the event loop has ended.
    void stopListening();

    /// Lets another process be the first.
    void release();

private:
    bool lock();
    void listen();
    void receiveFrom(QLocalSocket* socket);

    std::filesystem::path container;
    FileDescriptor lockFile;
    Handler handler;
    std::unique_ptr<QTemporaryDir> socketFolder; ///< where the container cannot hold the socket
    QLocalServer server;
};

} // namespace tessaril
