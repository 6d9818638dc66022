// The state of the keyboard, independent of the focus. The X server tells which keys are down. Keys
// pressed between two queries wait as raw events on a separate connection.
#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>
#include <X11/keysym.h>

#include <array>
#include <bitset>

#include "platform/platform.h"

namespace quirkmeter::platform {

namespace {

using KeySet = std::bitset<256>;           // by key code
using KeySymbols = std::array<KeySym, 2>;  // the second may be NoSymbol

KeySymbols SymbolsOf(int virtualKey) {
    if (virtualKey == 16) return {XK_Shift_L, XK_Shift_R};
    if (virtualKey == 17) return {XK_Control_L, XK_Control_R};
    if (virtualKey >= '0' && virtualKey <= '9') return {XK_0 + KeySym(virtualKey - '0'), NoSymbol};
    if (virtualKey >= 'A' && virtualKey <= 'Z') return {XK_a + KeySym(virtualKey - 'A'), NoSymbol};
    return {NoSymbol, NoSymbol};
}

// During its lifetime an Xlib call on a lost connection returns. Otherwise the handler of Xlib or
// wxWidgets would end the process.
class SurvivesLostServer {
   public:
    SurvivesLostServer() : previous_(XSetIOErrorHandler([](Display*) { return 0; })) {}
    SurvivesLostServer(const SurvivesLostServer&) = delete;
    ~SurvivesLostServer() { XSetIOErrorHandler(previous_); }

   private:
    XIOErrorHandler previous_;
};

// It has no destructor: closing the connection would contact the server, which may be gone. The end
// of the process closes it.
class Keyboard {
   public:
    Keyboard() {
        SurvivesLostServer guard;
        display_ = XOpenDisplay(nullptr);
        if (!display_) return;
        XSetIOErrorExitHandler(
            display_, [](Display*, void* gone) { *static_cast<bool*>(gone) = true; }, &gone_);
        SelectRawPresses();
        CloseIfGone();
    }

    std::int16_t State(int virtualKey) {
        KeySymbols symbols = SymbolsOf(virtualKey);
        if (!display_ || symbols[0] == NoSymbol) return 0;
        SurvivesLostServer guard;
        KeySet down = KeysDown();
        ReadPresses();
        KeySet keys = KeysWith(symbols);
        CloseIfGone();
        if (!display_) return 0;
        int state = ((down & keys).any() ? 0x8000 : 0) | ((pressed_ & keys).any() ? 1 : 0);
        pressed_ &= ~keys;
        return static_cast<std::int16_t>(state);
    }

   private:
    void SelectRawPresses() {
        int event;
        int error;
        int major = 2;
        int minor = 1;  // from this on, raw events come also while somebody grabs the keyboard
        if (!XQueryExtension(display_, "XInputExtension", &inputExtension_, &event, &error) ||
            XIQueryVersion(display_, &major, &minor) != Success)
            return;
        std::array<unsigned char, XIMaskLen(XI_LASTEVENT)> bits{};
        XISetMask(bits.data(), XI_RawKeyPress);
        XIEventMask mask{XIAllMasterDevices, int{bits.size()}, bits.data()};
        XISelectEvents(display_, DefaultRootWindow(display_), &mask, 1);
        XSync(display_, False);
    }

    KeySet KeysDown() {
        std::array<char, 32> bits{};
        XQueryKeymap(display_, bits.data());
        KeySet down;
        for (std::size_t key = 0; key < down.size(); ++key)
            down[key] = bits[key / 8] >> key % 8 & 1;
        return down;
    }

    void ReadPresses() {
        while (!gone_ && XPending(display_) > 0) {
            XEvent event{};  // stays so when the connection is lost here
            XNextEvent(display_, &event);
            if (event.type == MappingNotify) XRefreshKeyboardMapping(&event.xmapping);
            XGenericEventCookie& cookie = event.xcookie;
            if (event.type != GenericEvent || cookie.extension != inputExtension_ ||
                !XGetEventData(display_, &cookie))
                continue;
            auto key = static_cast<const XIRawEvent*>(cookie.data)->detail;
            if (key >= 0 && key < 256) pressed_.set(static_cast<std::size_t>(key));
            XFreeEventData(display_, &cookie);
        }
    }

    // The keys that give a symbol without modifiers in the current layout. If there are none, as for
    // the digits of some layouts, those of the next level, then of the next layout.
    KeySet KeysWith(const KeySymbols& symbols) {
        XkbStateRec state{};
        XkbGetState(display_, XkbUseCoreKbd, &state);
        for (unsigned group = state.group; group < state.group + 4u; ++group) {
            for (unsigned level = 0; level < 4; ++level) {
                KeySet keys = KeysWith(symbols, group % 4, level);
                if (keys.any()) return keys;
            }
        }
        return {};
    }

    KeySet KeysWith(const KeySymbols& symbols, unsigned group, unsigned level) {
        KeySet keys;
        for (unsigned key = 8; key < keys.size(); ++key) {
            KeySym symbol = XkbKeycodeToKeysym(display_, static_cast<KeyCode>(key),
                                               static_cast<int>(group), static_cast<int>(level));
            keys[key] = symbol != NoSymbol && (symbol == symbols[0] || symbol == symbols[1]);
        }
        return keys;
    }

    void CloseIfGone() {
        if (!gone_) return;
        XCloseDisplay(display_);
        display_ = nullptr;
    }

    bool gone_ = false;
    Display* display_ = nullptr;
    int inputExtension_ = 0;
    KeySet pressed_;
};

}  // namespace

std::int16_t GetAsyncKeyState(int virtualKey) {
    static Keyboard keyboard;
    return keyboard.State(virtualKey);
}

}  // namespace quirkmeter::platform
