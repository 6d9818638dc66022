// Reads a text file from outside line by line, in bounded memory whatever the file holds.
#pragma once

#include <array>
#include <string>

#include "platform/platform.h"

namespace quirkmeter {

class LineReader {
   public:
    /// The longest line; a longer one reads as an empty line.
    static constexpr std::size_t MaxLine = 1 << 20;

    explicit LineReader(const std::string& path) : file_(platform::OpenRegularFile(path)) {
        Peek();
    }

    /// True for a regular file that could be opened, and read so far without an error.
    bool Ok() const { return file_ && std::ferror(file_.get()) == 0; }

    /// The next line without its end, which is CR LF, LF, CR or the end of the file; false when
    /// there is no more.
    bool Next(std::string& line);

   private:
    static constexpr int EndOfFile = -1;
    int Peek();
    int Get();

    platform::RegularFile file_;
    std::array<char, 65536> buffer_;
    std::size_t at_ = 0;
    std::size_t size_ = 0;
};

}  // namespace quirkmeter
