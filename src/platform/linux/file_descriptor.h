// A descriptor that closes with its owner, and disk space for a file.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <utility>

namespace quirkmeter::platform {

class FileDescriptor {
   public:
    FileDescriptor() = default;
    /// Takes over `descriptor`; a negative one, as a failed call returns it, makes an empty object.
    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept
        : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        other.Close();
        return *this;
    }
    ~FileDescriptor() { Close(); }

    explicit operator bool() const { return descriptor_ >= 0; }
    int Number() const { return descriptor_; }
    int Release() { return std::exchange(descriptor_, -1); }

    void Close() {
        if (descriptor_ >= 0) close(Release());
    }

   private:
    int descriptor_ = -1;
};

/// Allocates disk space for the first `size` bytes of a file, and extends a shorter file to that
/// size. False when there is too little space; the file may have grown nevertheless.
inline bool Reserve(int file, std::uint64_t size) {
    if (size == 0) return true;
    int error;
    do {
        error = posix_fallocate(file, 0, static_cast<off_t>(size));
    } while (error == EINTR);
    return error == 0;
}

}  // namespace quirkmeter::platform
