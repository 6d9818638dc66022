// A descriptor that is closed with its owner, and room for a file.
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

/// Takes room on the disk for the first `size` bytes of a file, which grows to that if it is
/// shorter. False when there is not enough; it may have grown then as well.
inline bool Reserve(int file, std::uint64_t size) {
    if (size == 0) return true;
    int error;
    do {
        error = posix_fallocate(file, 0, static_cast<off_t>(size));
    } while (error == EINTR);
    return error == 0;
}

}  // namespace quirkmeter::platform
