#include "practice/wire.h"

#include <utility>

namespace quirkmeter::practice {

namespace {

constexpr const char* MessageName = "FSASMLIB:IPC";
constexpr const char* WindowTitle = "Practice Simulator Interface";

constexpr std::intptr_t Done = 1;
constexpr std::intptr_t NotDone = 0;
constexpr std::intptr_t WrongReply = 2;

constexpr std::uint32_t ServeMilliseconds = 100;  // the clock of the flight
constexpr std::uint32_t WaitMilliseconds = 50;
constexpr std::uint32_t LateMilliseconds = 1500;

// A client's block while it is mapped here.
class MappedBlock {
   public:
    explicit MappedBlock(const char* name)
        : mapping_(platform::OpenFileMappingA(platform::FileMapWrite, false, name)) {
        if (mapping_) view_ = platform::MapViewOfFile(mapping_, platform::FileMapWrite, 0, 0, 0);
    }
    ~MappedBlock() {
        if (view_) platform::UnmapViewOfFile(view_);
        if (mapping_) platform::CloseHandle(mapping_);
    }
    MappedBlock(const MappedBlock&) = delete;
    MappedBlock& operator=(const MappedBlock&) = delete;

    std::byte* Bytes() const { return static_cast<std::byte*>(view_); }
    std::size_t Size() const { return view_ ? platform::ViewSize(view_) : 0; }

   private:
    platform::MappingHandle mapping_;
    void* view_ = nullptr;
};

}  // namespace

Wire::Wire(Simulator& simulator, std::string className)
    : simulator_(simulator), className_(std::move(className)) {}

std::string Wire::Open() {
    platform::InstanceClaim claim = platform::ClaimSingleInstance("practice-simulator");
    if (claim == platform::InstanceClaim::Taken) return "A practice simulator runs already.";
    if (claim == platform::InstanceClaim::Claimed)
        message_ = platform::RegisterWindowMessageA(MessageName);
    if (message_ == 0 || !MakeWindow()) return platform::LastErrorText();
    simulator_.Start("ready " + className_);
    return {};
}

void Wire::Serve() {
    while (!Ended()) {
        KeepOrDropWindow();
        platform::ServeMessages(ServeMilliseconds);
        simulator_.Advance();
    }
    if (window_) platform::DropWindow(window_);
}

bool Wire::Ended() {
    if (platform::TerminationRequested()) simulator_.End();
    return simulator_.Ended();
}

bool Wire::MakeWindow() {
    window_ = platform::OwnWindow(className_.c_str(), WindowTitle,
                                  [this](std::uint32_t message, std::uintptr_t wParam,
                                         std::intptr_t) { return Answer(message, wParam); });
    return window_ != 0;
}

void Wire::KeepOrDropWindow() {
    bool wanted = simulator_.CurrentMisbehaviour() != Misbehaviour::Drop;
    if (wanted && !window_) MakeWindow();
    if (!wanted && window_) {
        platform::DropWindow(window_);
        window_ = 0;
    }
}

std::intptr_t Wire::Answer(std::uint32_t message, std::uintptr_t wParam) {
    if (message != message_ || !WaitBeforeAnswer()) return NotDone;
    if (simulator_.CurrentMisbehaviour() == Misbehaviour::Wrong) return WrongReply;
    return CarryOutBlock(static_cast<std::uint16_t>(wParam)) ? Done : NotDone;
}

// False when the message is to be dropped. The flight goes on meanwhile.
bool Wire::WaitBeforeAnswer() {
    Misbehaviour kind = simulator_.CurrentMisbehaviour();
    if (kind != Misbehaviour::Silent && kind != Misbehaviour::Late) return true;
    for (std::uint32_t waited = 0; simulator_.CurrentMisbehaviour() == kind;
         waited += WaitMilliseconds) {
        if (Ended()) return false;
        if (kind == Misbehaviour::Late && waited >= LateMilliseconds) return true;
        platform::Sleep(WaitMilliseconds);
        simulator_.Advance();
    }
    return kind == Misbehaviour::Late;
}

bool Wire::CarryOutBlock(std::uint16_t atom) {
    char name[256];
    if (platform::GlobalGetAtomNameA(atom, name, sizeof name) == 0) return false;
    MappedBlock block(name);
    return block.Bytes() && simulator_.Answer(block.Bytes(), block.Size());
}

}  // namespace quirkmeter::practice
