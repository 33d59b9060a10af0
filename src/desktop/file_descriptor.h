#pragma once

#include <unistd.h>

#include <utility>

namespace tessaril {

/// An open file, closed at the end of its scope.
class FileDescriptor {
public:
    FileDescriptor() = default;
    /// Takes over what open() gave; -1 is no file.
    explicit FileDescriptor(int opened) : descriptor(opened) {}
    FileDescriptor(FileDescriptor&& other) noexcept
        : descriptor(std::exchange(other.descriptor, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(descriptor, other.descriptor);
        return *this;
    }
    ~FileDescriptor() {
        if (isOpen()) ::close(descriptor);
    }

    bool isOpen() const { return descriptor >= 0; }
    int get() const { return descriptor; }

private:
    int descriptor = -1;
};

} // namespace tessaril
