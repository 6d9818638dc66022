// A descriptor that is closed with its owner.
#pragma once

#include <unistd.h>

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

    void Close() {
        if (descriptor_ >= 0) close(std::exchange(descriptor_, -1));
    }

   private:
    int descriptor_ = -1;
};

}  // namespace quirkmeter::platform
