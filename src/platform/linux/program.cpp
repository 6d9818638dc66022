#include <langinfo.h>
#include <locale.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <thread>

#include "platform/linux/last_error.h"
#include "platform/linux/runtime_folder.h"
#include "platform/platform.h"

namespace quirkmeter::platform {

namespace {

// The prefix of an instance's file name; the process id follows.
std::string InstancePrefix(const char* program) {
    return std::string("instance-") + program + "-";
}

}  // namespace

std::uint32_t GetCurrentProcessId() {
    return static_cast<std::uint32_t>(getpid());
}

void Sleep(std::uint32_t milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

double SecondsSinceMidnight() {
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    tm local;
    localtime_r(&now.tv_sec, &local);
    int seconds = local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec;
    return std::fmod(seconds + static_cast<double>(now.tv_nsec) / 1e9, 86400);  // a leap second
}

InstanceClaim ClaimSingleInstance(const char* program) {
    static HeldFile instance;
    if (instance) return InstanceClaim::Claimed;
    std::string prefix = InstancePrefix(program);
    FolderLock lock(FolderLock::HeedTermination);
    if (!lock) return InstanceClaim::Failed;
    LiveFiles instances(prefix);
    if (instances.Next()) return InstanceClaim::Taken;
    if (GetLastError() != ErrorSuccess) return InstanceClaim::Failed;
    instance = HeldFile::Create(lock, prefix + std::to_string(getpid()));
    if (instance) return InstanceClaim::Claimed;
    SetLastError(ErrorNotEnoughMemory);
    return InstanceClaim::Failed;
}

std::optional<std::uint32_t> InstanceProcess(const char* program) {
    std::string prefix = InstancePrefix(program);
    LiveFiles instances(prefix);
    if (instances.Next()) return static_cast<std::uint32_t>(instances.Number());
    if (GetLastError() != ErrorSuccess) return std::nullopt;
    return 0;
}

std::string ProgramFile(std::string_view name) {
    std::error_code error;
    std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    return (program.parent_path() / name.substr(1)).string();
}

std::string FileName(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

bool FileExists(const std::string& path) {
    std::error_code error;
    return std::filesystem::exists(path, error);
}

bool HoldsPath(const std::wstring& path) {
    return std::ranges::none_of(path, [](wchar_t c) { return c < L' ' || c == L'\x7F'; });
}

char DecimalSeparator() {
    static char separator = [] {
        locale_t user = newlocale(LC_NUMERIC_MASK, "", nullptr);
        if (!user) return '.';
        std::string text = nl_langinfo_l(RADIXCHAR, user);
        freelocale(user);
        return text.size() == 1 ? text[0] : '.';
    }();
    return separator;
}

}  // namespace quirkmeter::platform
