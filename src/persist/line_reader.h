// Reads a text file from outside line by line, in bounded memory whatever the file holds.
#pragma once

#include <array>
#include <fstream>
#include <string>

namespace quirkmeter {

class LineReader {
   public:
    /// A longer line can be none of ours and reads as an empty one.
    static constexpr std::size_t MaxLine = 1 << 20;

    explicit LineReader(const std::string& path) : file_(path, std::ios::binary) { Peek(); }

    /// The file could be opened, and read so far without an error.
    bool Ok() const { return file_.is_open() && !file_.bad(); }

    /// The next line without its end, which is CR LF, LF, CR or the end of the file; false when
    /// there is no more.
    bool Next(std::string& line);

   private:
    static constexpr int EndOfFile = -1;
    int Peek();
    int Get();

    std::ifstream file_;
    std::array<char, 65536> buffer_;
    std::size_t at_ = 0;
    std::size_t size_ = 0;
};

}  // namespace quirkmeter
