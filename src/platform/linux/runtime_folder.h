// The folder in which the processes of one user meet: windows, atoms and mappings lie in it.
//
// What must vanish with its process is a held file: every holder has a kernel lock on it, which
// ends when the holder does, however it does. A file that nobody holds is dead, whatever it says.
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

/// Opens the folder, after making it if need be. Allocates nothing. Empty, with the last error set,
/// when that fails or when the folder does not belong to this user alone.
FileDescriptor OpenRuntimeFolder();

/// Keeps other processes from changing the folder for its lifetime. A thread can have one at a time.
/// Everything done under it is short, and leaves the folder usable when the process is killed
/// half-way. Empty, with the last error set, when the folder cannot be opened, or when another
/// process keeps the lock for 2 seconds, as one that was stopped does. With HeedTermination, a
/// request to end this process (TerminationRequested) ends the wait.
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
    /// This and the destructor take the folder lock where there is a file to let go of: an object
    /// must outlive the lock under which it was filled.
    HeldFile& operator=(HeldFile&& other) noexcept;
    ~HeldFile() { Release(); }

    /// Makes a file and holds it, after removing the dead files of its kind. The name begins with
    /// the kind and a dash. Empty when that fails, with errno set: EEXIST when there is a live one.
    static HeldFile Create(const FolderLock& lock, std::string name);
    /// Holds a file that somebody else, or this process, holds as well. Empty when there is none.
    static HeldFile Share(const FolderLock& lock, std::string name);

    explicit operator bool() const { return static_cast<bool>(file_); }
    int Number() const { return file_.Number(); }

    /// Lets go of the file, which goes away with its last holder.
    void Release();

   private:
    HeldFile(FileDescriptor file, std::string name);

    std::string name_;
    FileDescriptor file_;
};

/// Walks the files that begin with `prefix` and that somebody holds, this process included. It needs
/// no lock, so nobody can delay it; it may miss a file that is made meanwhile.
class LiveFiles {
   public:
    explicit LiveFiles(std::string_view prefix);

    /// Goes to the next one. False behind the last one; the last error is then ErrorSuccess if all
    /// could be looked at.
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
