#include "records/change_listening.h"
#include "records/sqlite_connection.h"

#include <poll.h>
#include <sys/inotify.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>

namespace tessaril {

namespace {

recordError systemError(const char* what) {
    return {recordErrorCode::unreachable, std::string(what) + ": " + std::strerror(errno)};
}

enum class folderEvents { none, ofTheFile, folderIsGone };

/// Reads what happened in a watched folder, all of it, before anything is looked at.
folderEvents readEvents(int watching, const std::string& fileName) {
    folderEvents found = folderEvents::none;
    alignas(inotify_event) std::array<char, 16384> buffer{};
    for (;;) {
        const ssize_t size = ::read(watching, buffer.data(), buffer.size());
        if (size <= 0) return found;
        for (std::size_t at = 0; at < static_cast<std::size_t>(size);) {
            inotify_event event{};
            std::memcpy(&event, buffer.data() + at, sizeof event);
            const char* name = buffer.data() + at + sizeof event;
            at += sizeof event + event.len;
            if ((event.mask & (IN_IGNORED | IN_UNMOUNT | IN_DELETE_SELF | IN_MOVE_SELF)) != 0)
                return folderEvents::folderIsGone;
            // The journal's end is the end of a save; an overflow may have been anything.
            const bool isOfTheFile = event.len > 0 && std::string_view(name).starts_with(fileName);
            if (isOfTheFile || (event.mask & IN_Q_OVERFLOW) != 0) found = folderEvents::ofTheFile;
        }
    }
}

/// The tags in the file; none while the file is not there.
std::variant<recordTags, recordError> tagsIn(const std::string& path, const TimeLimit& limit) {
    std::error_code error;
    if (!std::filesystem::exists(path, error)) return recordTags{};
    const auto opened = openSqlite(path);
    if (const auto* failure = std::get_if<recordError>(&opened)) return *failure;
    SqlConnection& connection = *std::get<0>(opened);
    if (auto failure = prepareTables(connection, limit)) return *failure;
    return fetchTagsFrom(connection, limit);
}

} // namespace

recordError listenToSqlite(ChangeListening& listening, const recordAddress& address,
                           std::chrono::milliseconds operationTime) {
    const std::filesystem::path path(resolvedPath(address.file));
    const FileDescriptor watching(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    if (!watching.isOpen()) return systemError("The record store's file cannot be watched");
    if (::inotify_add_watch(watching.get(), path.parent_path().c_str(),
                            IN_MODIFY | IN_CREATE | IN_DELETE | IN_MOVED_TO | IN_MOVED_FROM |
                                IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR) < 0)
        return systemError("The record store's folder cannot be watched");
    // A link may come to lead elsewhere. Where it lies in the same folder, this adds nothing.
    ::inotify_add_watch(watching.get(), std::filesystem::path(address.file).parent_path().c_str(),
                        IN_CREATE | IN_DELETE | IN_MOVED_TO | IN_MOVED_FROM | IN_MASK_ADD);

    const auto tags = [&] {
        return tagsIn(path.string(),
                      TimeLimit(TimeLimit::Clock::now() + operationTime, listening.stopSignal()));
    };
    const auto before = tags();
    if (const auto* error = std::get_if<recordError>(&before)) return *error;
    recordTags known = std::get<recordTags>(before);
    listening.tellBegun();

    const TimeLimit endless(TimeLimit::Clock::time_point::max(), listening.stopSignal());
    while (endless.waitFor(watching.get(), POLLIN) != 0) {
        const folderEvents events = readEvents(watching.get(), path.filename().string());
        if (events == folderEvents::folderIsGone)
            return {recordErrorCode::unreachable, "The record store's folder is gone."};
        if (resolvedPath(address.file) != path)
            return {recordErrorCode::unreachable, "The record store's file lies elsewhere now."};
        if (events == folderEvents::none) continue;
        const auto now = tags();
        if (const auto* error = std::get_if<recordError>(&now)) return *error;
        bool isNews = false;
        for (const auto& [id, tag] : std::get<recordTags>(now)) {
            std::string& last = known[id];
            if (last == tag) continue;
            last = tag;
            if (!listening.isOwnTag(tag) && listening.isAskedFor(id.type)) isNews = true;
        }
        if (isNews) listening.tellNews();
    }
    return {recordErrorCode::unreachable, "The record store's file is no longer watched."};
}

} // namespace tessaril
