#include "persist/line_reader.h"

#include <algorithm>
#include <string_view>

namespace quirkmeter {

int LineReader::Peek() {
    if (at_ == size_) {
        at_ = 0;
        size_ = file_ ? std::fread(buffer_.data(), 1, buffer_.size(), file_.get()) : 0;
        if (size_ == 0) return EndOfFile;
    }
    return static_cast<unsigned char>(buffer_[at_]);
}

int LineReader::Get() {
    int character = Peek();
    if (character != EndOfFile) ++at_;
    return character;
}

bool LineReader::Next(std::string& line) {
    line.clear();
    if (Peek() == EndOfFile) return false;
    bool tooLong = false;
    do {
        std::string_view unread(buffer_.data() + at_, size_ - at_);
        auto end = std::ranges::find_if(unread, [](char c) { return c == '\n' || c == '\r'; });
        auto length = static_cast<std::size_t>(end - unread.begin());
        tooLong = tooLong || length > MaxLine - line.size();
        if (!tooLong) line.append(unread, 0, length);
        at_ += length;
    } while (at_ == size_ && Peek() != EndOfFile);
    if (Get() == '\r' && Peek() == '\n') Get();
    if (tooLong) line.clear();
    return true;
}

}  // namespace quirkmeter
