#include "persist/line_reader.h"

namespace quirkmeter {

int LineReader::Peek() {
    if (at_ == size_) {
        file_.read(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
        at_ = 0;
        size_ = static_cast<std::size_t>(file_.gcount());
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
    int character = Get();
    for (; character != EndOfFile && character != '\n' && character != '\r'; character = Get()) {
        tooLong = tooLong || line.size() == MaxLine;
        if (!tooLong) line.push_back(static_cast<char>(character));
    }
    if (character == '\r' && Peek() == '\n') Get();
    if (tooLong) line.clear();
    return true;
}

}  // namespace quirkmeter
