#include "desktop/posix_file_system.h"

#include "desktop/file_descriptor.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/uio.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <new>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace tessaril {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t sparePadding = 64;
constexpr off_t largestReadable = off_t{4} << 30;

// Temporary names are hidden and unlike anything a person would choose.
constexpr std::string_view stagedPrefix = ".tessaril-";
constexpr std::string_view stagedSuffix = ".staged";
constexpr std::size_t stagedDigits = 16;

std::string drawStagedName() {
    static thread_local std::random_device device;
    std::array<char, stagedDigits + 1> digits{};
    std::snprintf(digits.data(), digits.size(), "%08x%08x", device(), device());
    return std::string(stagedPrefix) + digits.data() + std::string(stagedSuffix);
}

bool isStagedName(std::string_view name) {
    if (name.size() != stagedPrefix.size() + stagedDigits + stagedSuffix.size()) return false;
    if (!name.starts_with(stagedPrefix) || !name.ends_with(stagedSuffix)) return false;
    const std::string_view digits = name.substr(stagedPrefix.size(), stagedDigits);
    return digits.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

fs::path folderOf(const fs::path& path) {
    return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

/// Repeats a call that a signal interrupted.
template <typename Call>
auto uninterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

FileDescriptor open(const fs::path& path, int flags, mode_t mode = 0) {
    return FileDescriptor(
        uninterrupted([&] { return ::open(path.c_str(), flags | O_CLOEXEC, mode); }));
}

/// A new file and its name.
struct namedFile {
    fs::path path;
    FileDescriptor file;
};

/// A new, empty temporary file in `folder`; closed when none could be made.
namedFile createStaged(const fs::path& folder) {
    for (;;) {
        namedFile made{folder / drawStagedName(), {}};
        made.file = open(made.path, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
        if (made.file.isOpen() || errno != EEXIST) return made;
    }
}

bool writeAll(int file, std::span<const std::string_view> pieces) {
    std::vector<iovec> parts;
    parts.reserve(pieces.size());
    for (const std::string_view piece : pieces)
        if (!piece.empty()) parts.push_back({const_cast<char*>(piece.data()), piece.size()});

    std::span<iovec> left(parts);
    while (!left.empty()) {
        const int count = static_cast<int>(std::min<std::size_t>(left.size(), IOV_MAX));
        const ssize_t result = uninterrupted([&] { return ::writev(file, left.data(), count); });
        if (result <= 0) return false;
        auto written = static_cast<std::size_t>(result);
        while (!left.empty() && written >= left.front().iov_len) {
            written -= left.front().iov_len;
            left = left.subspan(1);
        }
        if (written > 0) {
            left.front().iov_base = static_cast<char*>(left.front().iov_base) + written;
            left.front().iov_len -= written;
        }
    }
    return true;
}

/// Takes the room for that many bytes from the start of a file without changing what it shows;
/// false when there is none. A file system that cannot tell counts as having it.
bool reserve(int file, std::size_t size) {
    if (size == 0) return true;
    const auto length = static_cast<off_t>(size);
    if (uninterrupted([&] { return ::fallocate(file, FALLOC_FL_KEEP_SIZE, 0, length); }) == 0)
        return true;
    return errno == EOPNOTSUPP || errno == ENOSYS;
}

bool copyAll(int from, int to) {
    std::vector<char> buffer(1 << 20);
    for (off_t at = 0;;) {
        const ssize_t count =
            uninterrupted([&] { return ::pread(from, buffer.data(), buffer.size(), at); });
        if (count < 0) return false;
        if (count == 0) return true;
        const std::string_view piece(buffer.data(), static_cast<std::size_t>(count));
        if (!writeAll(to, std::span(&piece, 1))) return false;
        at += count;
    }
}

/// As much of `buffer` as the file has from there; nothing when it cannot be read.
std::optional<std::string_view> readPiece(int file, std::vector<char>& buffer, off_t at) {
    std::size_t filled = 0;
    while (filled < buffer.size()) {
        const ssize_t count = uninterrupted([&] {
            return ::pread(file, buffer.data() + filled, buffer.size() - filled,
                           at + static_cast<off_t>(filled));
        });
        if (count < 0) return std::nullopt;
        if (count == 0) break;
        filled += static_cast<std::size_t>(count);
    }
    return std::string_view(buffer.data(), filled);
}

bool haveSameBytes(int a, int b) {
    std::vector<char> ofA(1 << 20);
    std::vector<char> ofB(ofA.size());
    for (off_t at = 0;; at += static_cast<off_t>(ofA.size())) {
        const auto pieceA = readPiece(a, ofA, at);
        const auto pieceB = readPiece(b, ofB, at);
        if (!pieceA || !pieceB || *pieceA != *pieceB) return false;
        if (pieceA->size() < ofA.size()) return true;
    }
}

bool syncData(int file) {
    return uninterrupted([&] { return ::fdatasync(file); }) == 0;
}

/// Makes the names in `folder` durable.
bool syncFolder(const fs::path& folder) {
    const FileDescriptor opened = open(folder, O_RDONLY | O_DIRECTORY);
    if (!opened.isOpen()) return false;
    if (uninterrupted([&] { return ::fsync(opened.get()); }) == 0) return true;
    return errno == EINVAL; // a file system that knows no syncing of folders
}

/// A regular file to be read; closed when it is none or cannot be opened.
FileDescriptor openRegular(const fs::path& path) {
    // Without O_NONBLOCK the opening of a pipe would wait for its writer.
    FileDescriptor file = open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
    struct stat status {};
    if (file.isOpen() && (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))) return {};
    return file;
}

/// Gives whether the file is now at `target`, which nothing that was there before gave way to.
bool moveToFreeName(const fs::path& path, const fs::path& target) {
    if (::renameat2(AT_FDCWD, path.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0)
        return true;
    if (errno != EINVAL && errno != ENOSYS) return false;
    struct stat status {};
    return ::lstat(target.c_str(), &status) != 0 && errno == ENOENT &&
           ::rename(path.c_str(), target.c_str()) == 0;
}

/// A second name for the content, not for a symbolic link to what is about to be replaced.
bool linkTo(const fs::path& path, const fs::path& target) {
    return ::linkat(AT_FDCWD, path.c_str(), AT_FDCWD, target.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

/// For another file system, or one without second names.
bool copyTo(const FileDescriptor& file, const fs::path& target) {
    const namedFile copy = createStaged(folderOf(target));
    if (!copy.file.isOpen()) return false;
    if (copyAll(file.get(), copy.file.get()) && syncData(copy.file.get()) &&
        moveToFreeName(copy.path, target))
        return true;
    ::unlink(copy.path.c_str());
    return false;
}

/// Where a write to `path` ends: the other end of symbolic links. Nothing for a circle of links.
std::optional<fs::path> resolved(fs::path path) {
    constexpr int mostLinks = 40; // as many as the kernel follows
    for (int followed = 0; followed < mostLinks; ++followed) {
        std::error_code error;
        const fs::path target = fs::read_symlink(path, error);
        if (error) return path;
        path = folderOf(path) / target;
    }
    return std::nullopt;
}

class PosixStagedFile : public StagedFile {
public:
    explicit PosixStagedFile(namedFile written)
        : stagedPath(std::move(written.path)), file(std::move(written.file)) {}

    ~PosixStagedFile() override {
        if (!stagedPath.empty()) ::unlink(stagedPath.c_str());
    }

    bool publishAs(const fs::path& path) override {
        const std::optional<fs::path> target = resolved(path);
        if (!target) return false;
        const fs::path folder = folderOf(*target);
        return (publishLink(folder, *target) || publishOwnName(*target) ||
                publishCopy(folder, *target)) &&
               syncFolder(folder);
    }

private:
    /// A second name for the same content, moved over the target.
    bool publishLink(const fs::path& folder, const fs::path& target) const {
        if (stagedPath.empty()) return false;
        fs::path second;
        do
            second = folder / drawStagedName();
        while (::link(stagedPath.c_str(), second.c_str()) != 0 && errno == EEXIST);
        const bool moved = ::rename(second.c_str(), target.c_str()) == 0;
        // Also after success: two names of one file are left as they are.
        ::unlink(second.c_str());
        return moved;
    }

    /// For file systems without second names: the only name goes to the first target.
    bool publishOwnName(const fs::path& target) {
        if (stagedPath.empty() || ::rename(stagedPath.c_str(), target.c_str()) != 0) return false;
        stagedPath.clear();
        return true;
    }

    /// For another file system, and for further targets where there are no second names.
    bool publishCopy(const fs::path& folder, const fs::path& target) const {
        const namedFile copy = createStaged(folder);
        if (!copy.file.isOpen()) return false;
        if (copyAll(file.get(), copy.file.get()) && syncData(copy.file.get()) &&
            ::rename(copy.path.c_str(), target.c_str()) == 0)
            return true;
        ::unlink(copy.path.c_str());
        return false;
    }

    fs::path stagedPath; ///< empty once the name has moved to a target
    FileDescriptor file;
};

/// Asks for large pages behind fresh memory: mapping the small ones takes longer than reading a
/// large file into them.
void preferLargePages(char* memory, std::size_t size) {
    constexpr std::size_t worthwhile = 8 << 20;
    constexpr std::size_t page = 4096;
    const std::size_t toPage = (page - reinterpret_cast<std::uintptr_t>(memory) % page) % page;
    if (size >= worthwhile) ::madvise(memory + toPage, size - toPage, MADV_HUGEPAGE);
}

} // namespace

bool PosixFileSystem::exists(const fs::path& path) const {
    struct stat status {};
    if (::stat(path.c_str(), &status) == 0) return true;
    return errno != ENOENT && errno != ENOTDIR;
}

std::optional<std::string> PosixFileSystem::read(const fs::path& path) const try {
    // Without O_NONBLOCK the opening of a pipe would wait for its writer.
    const FileDescriptor file = open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0) return std::nullopt;
    if (!S_ISREG(status.st_mode) || status.st_size > largestReadable) return std::nullopt;

    // One byte more than the file has, so that its end is seen without growing the text.
    constexpr std::size_t growth = 1 << 16;
    const auto expected = static_cast<std::size_t>(status.st_size);
    std::string bytes;
    bytes.reserve(expected + 1 + sparePadding);
    preferLargePages(bytes.data(), bytes.capacity());
    bytes.resize(expected + 1);
    std::size_t filled = 0;
    for (;;) {
        if (filled == bytes.size()) bytes.resize(filled + growth);
        const ssize_t count = uninterrupted(
            [&] { return ::read(file.get(), bytes.data() + filled, bytes.size() - filled); });
        if (count < 0) return std::nullopt;
        if (count == 0) break;
        filled += static_cast<std::size_t>(count);
        if (filled > static_cast<std::size_t>(largestReadable)) return std::nullopt;
    }
    bytes.resize(filled);
    bytes.reserve(filled + sparePadding);
    return bytes;
} catch (const std::bad_alloc&) {
    return std::nullopt;
}

std::unique_ptr<StagedFile> PosixFileSystem::stage(const fs::path& folder,
                                                   std::span<const std::string_view> pieces) {
    namedFile made = createStaged(folder.empty() ? fs::path(".") : folder);
    if (!made.file.isOpen()) return nullptr;
    const int file = made.file.get();
    auto staged = std::make_unique<PosixStagedFile>(std::move(made));
    if (!writeAll(file, pieces) || !syncData(file)) return nullptr;
    return staged;
}

bool PosixFileSystem::overwrite(const fs::path& path, std::string_view bytes) {
    const std::optional<fs::path> target = resolved(path);
    if (!target) return false;
    const bool isNew = !exists(*target);
    // Without O_NONBLOCK the opening of a pipe would wait for its reader.
    const FileDescriptor file = open(*target, O_WRONLY | O_CREAT | O_NONBLOCK | O_NOCTTY, 0666);
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return false;
    if (reserve(file.get(), bytes.size()) && writeAll(file.get(), std::span(&bytes, 1)) &&
        uninterrupted([&] { return ::ftruncate(file.get(), static_cast<off_t>(bytes.size())); }) ==
            0 &&
        syncData(file.get()))
        return true;
    if (isNew) ::unlink(target->c_str());
    return false;
}

bool PosixFileSystem::keep(const fs::path& path, const fs::path& keptPath) {
    if (linkTo(path, keptPath)) return syncFolder(folderOf(keptPath));
    if (errno == EEXIST || errno == ENOENT) return false;
    return moveToFreeName(path, keptPath) && syncFolder(folderOf(keptPath));
}

bool PosixFileSystem::keepCopy(const fs::path& path, const fs::path& copyPath) {
    const FileDescriptor file = openRegular(path);
    if (!file.isOpen()) return false;
    ::mkdir(folderOf(copyPath).c_str(), 0700); // what fails now fails below too
    if (!linkTo(path, copyPath) && (errno == EEXIST || errno == ENOENT || !copyTo(file, copyPath)))
        return false;
    if (syncFolder(folderOf(copyPath))) return true;
    ::unlink(copyPath.c_str());
    return false;
}

bool PosixFileSystem::haveSameContent(const fs::path& a, const fs::path& b) const {
    const FileDescriptor first = openRegular(a);
    const FileDescriptor second = openRegular(b);
    struct stat firstStatus {};
    struct stat secondStatus {};
    if (!first.isOpen() || ::fstat(first.get(), &firstStatus) != 0) return false;
    if (!second.isOpen() || ::fstat(second.get(), &secondStatus) != 0) return false;
    if (firstStatus.st_dev == secondStatus.st_dev && firstStatus.st_ino == secondStatus.st_ino)
        return true;
    return firstStatus.st_size == secondStatus.st_size && haveSameBytes(first.get(), second.get());
}

std::vector<fileEntry> PosixFileSystem::list(const fs::path& folder) const {
    std::vector<fileEntry> found;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        struct stat status {};
        if (::stat(entry->path().c_str(), &status) != 0 || !S_ISREG(status.st_mode)) continue;
        const auto sinceEpoch = std::chrono::seconds(status.st_mtim.tv_sec) +
                                std::chrono::nanoseconds(status.st_mtim.tv_nsec);
        found.push_back({entry->path(), static_cast<std::uintmax_t>(status.st_size),
                         std::chrono::system_clock::time_point(sinceEpoch)});
    }
    return found;
}

void PosixFileSystem::remove(const fs::path& path) {
    ::unlink(path.c_str());
}

void PosixFileSystem::touch(const fs::path& path) {
    ::utimensat(AT_FDCWD, path.c_str(), nullptr, 0);
}

void removeStaleStagedFiles(const fs::path& folder) {
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (isStagedName(entry->path().filename().native()))
            ::unlink(entry->path().c_str()); // never a folder: unlink refuses those
    }
}

} // namespace tessaril
