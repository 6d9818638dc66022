#include <fcntl.h>
#include <langinfo.h>
#include <locale.h>
#include <time.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "platform/linux/runtime_folder.h"
#include "platform/platform.h"

namespace quirkmeter::platform {

namespace {

// The prefix of the name of an instance's file, behind which its process id stands.
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

// Whether there is an instance is waited for as long as it takes: what is taken for ended because it
// could not be seen might be started a second time.
bool ClaimSingleInstance(const char* program) {
    static HeldFile instance;
    if (instance) return true;
    std::string prefix = InstancePrefix(program);
    FolderLock lock(FolderLock::ForEver);
    if (!lock || !LiveFiles(lock, prefix).empty()) return false;
    instance = HeldFile(lock, prefix + std::to_string(getpid()), O_CREAT | O_EXCL);
    return static_cast<bool>(instance);
}

std::uint32_t InstanceProcess(const char* program) {
    std::string prefix = InstancePrefix(program);
    FolderLock lock(FolderLock::ForEver);
    if (!lock) return 0;
    std::vector<std::string> files = LiveFiles(lock, prefix);
    return files.empty() ? 0 : static_cast<std::uint32_t>(std::atoi(&files[0][prefix.size()]));
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
    return std::filesystem::is_regular_file(path, error);
}

bool HoldsPath(const std::wstring&) {
    return true;
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
