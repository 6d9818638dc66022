// The functions of the operating system that the programs use, by their Windows names, and the
// receiving side of messages for the practice simulator and the companion.
//
// One header, three sets of .cpp files, chosen at link time: windows/ forwards to the real
// functions, linux/ does the same work between Linux processes, inprocess/ does it within one
// process under the control of a test. Where a function bears a Windows name, its contract is the
// one Microsoft documents for it; the comments here say only what is narrower.
//
// Texts are bytes: in the ANSI code page on Windows, in the file system's encoding elsewhere.
// Nothing here throws. Everything is for use from one thread, except where it says otherwise.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

// windows.h, which wxWidgets may have included before, makes macros of these.
#undef ReplaceFile
#undef RtlMoveMemory
#undef RtlZeroMemory

namespace quirkmeter::platform {

using WindowHandle = std::uintptr_t;   // 0: none
using MappingHandle = std::uintptr_t;  // 0: none

inline constexpr MappingHandle InvalidFileHandle = ~MappingHandle{0};  // backed by the paging file

inline constexpr std::uint32_t PageReadWrite = 4;
inline constexpr std::uint32_t FileMapWrite = 2;
inline constexpr std::uint32_t SendBlock = 1;   // SMTO_BLOCK
inline constexpr std::uint32_t SoundAsync = 1;  // SND_ASYNC
inline constexpr int ShowNormal = 1;
inline constexpr int ShowMinimized = 2;

inline constexpr std::uint32_t ErrorSuccess = 0;
inline constexpr std::uint32_t ErrorFileNotFound = 2;
inline constexpr std::uint32_t ErrorInvalidHandle = 6;
inline constexpr std::uint32_t ErrorNotEnoughMemory = 8;
inline constexpr std::uint32_t ErrorAlreadyExists = 183;
inline constexpr std::uint32_t ErrorInvalidWindowHandle = 1400;

// --- Windows and messages: the sending side ---------------------------------------------------

/// Finds a top-level window by its class, and by its title where `title` is not null.
/// `parent` and `childAfter` must be 0: only the search from the start is supported.
/// Returns 0 with the last error ErrorSuccess when there is none. With any other error the search
/// failed, and the window may exist.
WindowHandle FindWindowExA(WindowHandle parent, WindowHandle childAfter, const char* className,
                           const char* title);
WindowHandle FindWindowA(const char* className, const char* title);

/// The number of the message of that name, 0xC000 to 0xFFFF, the same in every process of the
/// user for as long as one of them runs that has asked for it; 0 on failure.
std::uint32_t RegisterWindowMessageA(const char* name);

/// Sends a message to the window of another thread or process and waits at most
/// `timeoutMilliseconds` for its answer, which goes to `*reply`. Returns 0 on failure, and the
/// last error is then 0 when the time ran out (in every version of the system) and not 0 otherwise:
/// ErrorInvalidWindowHandle exactly when there is no such window, or no longer.
std::intptr_t SendMessageTimeoutA(WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                                  std::intptr_t lParam, std::uint32_t flags,
                                  std::uint32_t timeoutMilliseconds, std::uintptr_t* reply);

// --- Windows and messages: the owning side ----------------------------------------------------

/// Answers a message sent to an owned window; the result is the sender's reply.
using MessageHandler = std::function<std::intptr_t(std::uint32_t message, std::uintptr_t wParam,
                                                   std::intptr_t lParam)>;

/// Makes a top-level window of that class and title, which FindWindowExA finds from then on until
/// DropWindow or the end of the process, however it ends. It is not visible yet. 0 on failure.
/// The thread that owns a window must call ServeMessages for it.
WindowHandle OwnWindow(const char* className, const char* title, MessageHandler handler);
void DropWindow(WindowHandle window);

/// Shows an owned window minimised in the task bar, if there is a display. Closing it requests the
/// end of the process (TerminationRequested).
void ShowInTaskBar(WindowHandle window);

/// Calls the handlers for the messages sent to this thread's windows, waiting for at most
/// `milliseconds`; returns after the messages that had arrived, or when the time is up.
void ServeMessages(std::uint32_t milliseconds);

// --- Global atoms -----------------------------------------------------------------------------

std::uint32_t GetCurrentProcessId();

/// Atoms are 0xC000 to 0xFFFF; 0 on failure. Names compare without letter case, at most 255 bytes.
/// Only a process that has added an atom deletes it, as often as that. On Linux an atom goes with the
/// last process that holds it.
std::uint16_t GlobalAddAtomA(const char* name);
std::uint16_t GlobalDeleteAtom(std::uint16_t atom);
/// Copies at most `size` - 1 bytes of the name and a zero; returns the bytes copied without the
/// zero, 0 when there is no such atom.
std::uint32_t GlobalGetAtomNameA(std::uint16_t atom, char* buffer, int size);

// --- Named mappings ---------------------------------------------------------------------------

/// Creates a mapping that lies in memory only. The last error is ErrorAlreadyExists when a mapping
/// of that name exists already (the result is then a handle to that one), else 0. 0 on failure.
MappingHandle CreateFileMappingA(MappingHandle file, void* security, std::uint32_t protection,
                                 std::uint32_t sizeHigh, std::uint32_t sizeLow, const char* name);
MappingHandle OpenFileMappingA(std::uint32_t access, bool inherit, const char* name);
/// Maps the whole object: the offset and the length must be 0. Null on failure.
void* MapViewOfFile(MappingHandle mapping, std::uint32_t access, std::uint32_t offsetHigh,
                    std::uint32_t offsetLow, std::size_t length);
bool UnmapViewOfFile(const void* view);
/// Bytes that may be touched from the start of a view that MapViewOfFile returned, 0 for any other
/// address: how large an object made by another process really is.
std::size_t ViewSize(const void* view);
bool CloseHandle(MappingHandle handle);

std::uint32_t GetLastError();

inline void RtlMoveMemory(void* destination, const void* source, std::size_t length) {
    std::memmove(destination, source, length);
}
inline void RtlZeroMemory(void* destination, std::size_t length) {
    std::memset(destination, 0, length);
}

// --- Time, keys, sound, shell -----------------------------------------------------------------

void Sleep(std::uint32_t milliseconds);

/// Seconds since midnight, local time, 0 to below 86400.
double SecondsSinceMidnight();

/// Top bit: the key is down; lowest bit: it was pressed since the last query for it. 0 for any key
/// where there is no keyboard to ask. Linux knows digits, letters, SHIFT and CTRL only.
std::int16_t GetAsyncKeyState(int virtualKey);

/// Starts a sound file and returns at once; a sound still playing stops. Where there is no sound
/// device, there is silence.
bool sndPlaySoundA(const char* path, std::uint32_t flags);

/// Opens a document or starts a program; 32 or less means failure.
std::intptr_t ShellExecuteA(WindowHandle owner, const char* operation, const char* file,
                            const char* parameters, const char* directory, int showCommand);

// --- The display ------------------------------------------------------------------------------

/// Puts the program's windows on an X server if one can be reached, also beside Wayland, where keys
/// typed into another program's window cannot be seen. Call it before wxWidgets starts.
void PreferX11();

/// Calls `end` when the display is lost (the X server or the compositor has ended), then ends the
/// process with status 1. `end` must not touch a window. Call it once there is a display.
void WhenDisplayIsLost(const std::function<void()>& end);

/// Makes message boxes with the style of a warning show its icon, which GTK 3 leaves out.
void ShowWarningIcons();

/// Gives a check box an edge that can be seen on a dark ground, whatever the theme, if the theme
/// draws the box. `checkBox` is wxWidgets' handle.
void EdgeOnDarkGround(WindowHandle checkBox);

// --- Accessibility ----------------------------------------------------------------------------

/// The factor, 1 or more, by which the user enlarged texts beside the scale of the display. There
/// must be a display.
double TextScale();

/// The kind of a control: one of the system's own, or one that wxWidgets draws.
enum class ControlKind { Native, PickList, List, Display };

/// Tells screen readers the name of a control and, where wxWidgets draws it, its kind and value.
/// They read these when the control gets the focus, and when they change while it has the focus.
/// `control` is wxWidgets' handle.
void Describe(WindowHandle control, ControlKind kind, const std::wstring& name,
              const std::wstring& shown);

// --- The program and its folder ---------------------------------------------------------------

enum class InstanceClaim { Claimed, Taken, Failed };

/// Claims the single instance of a program of that name: Claimed for the first process that asks,
/// until it ends; Taken while such a process of the same user runs; Failed when it could not be
/// found out within two seconds, or not until TerminationRequested. A process claims one name at
/// most.
InstanceClaim ClaimSingleInstance(const char* program);
/// The process of the user that claimed that name, 0 when none runs. Nothing when it could not be
/// found out.
std::optional<std::uint32_t> InstanceProcess(const char* program);

/// The message for a user whose program cannot start, because a call has failed with the last error
/// of this thread: the fault and its remedy.
std::string LastErrorText();

/// True once the user or the system has asked the process to end: on Linux by an interrupt, a
/// termination or a hang-up signal, which do not end it by themselves after the first call; on
/// Windows by a request to close an owned window, which does not close it.
bool TerminationRequested();

/// True when that standard stream (0 in, 1 out, 2 errors) is a terminal from which the program was
/// started. A console that Windows opened for this process alone does not count.
bool OnTerminal(int stream);

/// Closes a console of that kind. Elsewhere there is none.
void CloseOwnConsole();

/// True when the user sent standard output into a file or a pipe. The log of a desktop session, a
/// file that grows by both standard output and errors, does not count.
bool OutputRedirected();

/// True when the path names a device, a pipe or one of the process's own streams, such as
/// /dev/stdout, instead of a file.
bool IsStream(const std::string& path);

/// The path of a file in the folder of the running executable; `name` begins with a backslash,
/// which becomes the system's own separator.
std::string ProgramFile(std::string_view name);

/// The part of a path behind its last separator, all of it when there is none.
std::string FileName(const std::string& path);

/// True when there is anything of that name, a folder or a device as well.
bool FileExists(const std::string& path);

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using RegularFile = std::unique_ptr<std::FILE, FileCloser>;

/// Opens a file for reading. Null when that fails and for anything else than a regular file or a
/// link to one: reading a pipe or a device might never end.
RegularFile OpenRegularFile(const std::string& path);

/// True when a line of text can hold the path letter for letter: when it has no control characters
/// and, on Windows, all of its letters are in the ANSI code page.
bool HoldsPath(const std::wstring& path);

/// The decimal separator of the user's regional settings.
char DecimalSeparator();

/// Replaces a file's content, or creates the file. Follows links, also to a file that does not exist
/// yet, and keeps hard links. On Linux, owner, group and permissions stay; on Windows the file gets
/// the folder's permissions.
///
/// If the folder allows it, the replacement is one step: after any failure or end of the process the
/// file holds either all of its old content or all of the new one. If the folder forbids it, or a new
/// file would change the owner or break a hard link, the file is written in place after all checks.
/// A process that is killed in that millisecond leaves a mixture of both. Returns false on failure;
/// missing permissions and a full disk leave the old content as it is.
bool ReplaceFile(const std::string& path, std::string_view content);

/// True when ReplaceFile will succeed there, as far as can be checked. Changes nothing.
bool CanReplaceFile(const std::string& path);

}  // namespace quirkmeter::platform
