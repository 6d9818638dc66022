// The folder in which the processes of one user meet: windows, atoms and mappings lie in it.
//
// What must vanish with its process is a held file: every holder has a kernel lock on it, which
// ends when the holder does, however it does. A file that nobody holds is dead, whatever it says.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/file_descriptor.h"

namespace quirkmeter::platform {

/// As openat, for this user only. What the system has no room for at the moment is tried again for
/// some 50 ms: one moment without a free descriptor must not make a living window look dead.
FileDescriptor OpenPatiently(int folder, const char* name, int flags);

/// Opens the folder, after making it if need be. Empty, with the last error set, when there is no
/// room for that, or none that belongs to this user alone, which is also said on stderr once.
FileDescriptor OpenRuntimeFolder();

/// Waits until no other process works on the folder, then keeps them out for its lifetime. A thread
/// can have one at a time. Everything done under it is short, and leaves the folder usable when the
/// process is killed half-way. Empty, with the last error set, when another process keeps it for 2
/// seconds, as one that was stopped does, unless it is to be waited for.
class FolderLock {
   public:
    static constexpr bool ForEver = true;
    explicit FolderLock(bool forEver = false);
    explicit operator bool() const { return static_cast<bool>(folder_); }
    int Folder() const { return folder_.Number(); }

   private:
    FileDescriptor folder_;
};

class HeldFile {
   public:
    HeldFile() = default;
    /// Opens and holds the file of that name. `flags` is 0 for one that LiveFiles returned under
    /// the same lock, O_CREAT | O_EXCL for a new one. Empty when that fails.
    HeldFile(const FolderLock& lock, std::string name, int flags);
    HeldFile(HeldFile&&) = default;
    /// This and the destructor take the folder lock where there is a file to let go of: an object
    /// must outlive the lock under which it was filled.
    HeldFile& operator=(HeldFile&& other) noexcept;
    ~HeldFile() { Release(); }

    explicit operator bool() const { return static_cast<bool>(file_); }
    int Number() const { return file_.Number(); }

    /// Lets go of the file, which goes away with its last holder.
    void Release();

   private:
    std::string name_;
    FileDescriptor file_;
};

/// The names of the files that begin with `prefix` and that somebody holds, this process included.
/// Removes those that nobody holds, each with the socket beside it.
std::vector<std::string> LiveFiles(const FolderLock& lock, std::string_view prefix);

/// The name of the socket that belongs to a held file.
inline std::string SocketName(const std::string& heldFile) {
    return heldFile + ".socket";
}

}  // namespace quirkmeter::platform
