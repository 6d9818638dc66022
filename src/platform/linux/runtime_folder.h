// The folder in which the processes of one user meet. It holds windows, atoms and mappings.
//
// Each of them is a held file: every holder has a kernel lock on it, which ends with the holder's
// process. A file without a lock is dead and ignored.
#pragma once

#include <dirent.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/linux/file_descriptor.h"

namespace quirkmeter::platform {

/// As openat, for this user only.
FileDescriptor OpenIn(int folder, const char* name, int flags);

/// Opens the folder, or creates it. Allocates nothing. Empty, with the last error set, on failure or
/// when another user has access to the folder.
FileDescriptor OpenRuntimeFolder();

/// Locks the folder against changes by other processes. A thread can have one at a time. Keep it
/// short, and leave the folder usable at each moment: the process may be killed. Empty, with the last
/// error set, when the folder cannot be opened, or when another process, such as a stopped one, keeps
/// the lock for 2 seconds. With HeedTermination, TerminationRequested ends the wait.
class FolderLock {
   public:
    static constexpr bool HeedTermination = true;
    explicit FolderLock(bool heedTermination = false);
    explicit operator bool() const { return static_cast<bool>(folder_); }
    int Folder() const { return folder_.Number(); }

   private:
    FileDescriptor folder_;
};

class HeldFile {
   public:
    HeldFile() = default;
    HeldFile(HeldFile&&) = default;
    /// This and the destructor take the folder lock when they release a file: an object must outlive
    /// the lock under which it was filled.
    HeldFile& operator=(HeldFile&& other) noexcept;
    ~HeldFile() { Release(); }

    /// Creates a file and holds it, after removing the dead files of its kind. The name begins with
    /// the kind and a dash. Empty on failure, with errno set: EEXIST when a live one exists.
    static HeldFile Create(const FolderLock& lock, std::string name);
    /// Holds a file that some process holds already. Empty when there is none.
    static HeldFile Share(const FolderLock& lock, std::string name);

    explicit operator bool() const { return static_cast<bool>(file_); }
    int Number() const { return file_.Number(); }

    /// Releases the file; the last holder removes it.
    void Release();

   private:
    HeldFile(FileDescriptor file, std::string name);

    std::string name_;
    FileDescriptor file_;
};

/// Walks the held files that begin with `prefix`, those of this process included. It takes no lock,
/// so no process can delay it; it may miss a file that is created meanwhile.
class LiveFiles {
   public:
    explicit LiveFiles(std::string_view prefix);

    /// Goes to the next file. False after the last one, with the last error ErrorSuccess if all
    /// files could be examined.
    bool Next();
    /// The number behind the prefix; 0 where there is none.
    std::uint64_t Number() const { return number_; }
    int File() const { return file_.Number(); }

   private:
    std::string_view prefix_;
    std::unique_ptr<DIR, int (*)(DIR*)> entries_;
    FileDescriptor file_;
    std::uint64_t number_ = 0;
};

/// Ends the name of the socket that belongs to a held file.
inline constexpr char SocketSuffix[] = ".socket";

}  // namespace quirkmeter::platform
