#include <fcntl.h>
#include <sys/stat.h>

#include "platform/linux/file_descriptor.h"
#include "platform/platform.h"

namespace quirkmeter::platform {

RegularFile OpenRegularFile(const std::string& path) {
    // Without O_NONBLOCK, opening a pipe waits for its writer.
    FileDescriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status;
    if (!file || fstat(file.Number(), &status) != 0 || !S_ISREG(status.st_mode)) return nullptr;
    return RegularFile(fdopen(file.Release(), "rb"));
}

}  // namespace quirkmeter::platform
