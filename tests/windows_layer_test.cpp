// Rules that depend on Windows: the link's result codes, and replacing an open file.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <future>
#include <limits>
#include <thread>

#include "link/sim_link.h"
#include "practice/wire.h"

namespace quirkmeter {

namespace {

using practice::Misbehaviour;
using practice::Simulator;

// A practice simulator that runs on a second thread.
class Simulating {
   public:
    explicit Simulating(const char* className, Misbehaviour kind = Misbehaviour::None)
        : wire_(simulator_, className) {
        std::promise<std::string> opened;
        Misbehave(kind);
        thread_ = std::thread([&] {
            opened.set_value(wire_.Open());
            wire_.Serve();
        });
        EXPECT_EQ(opened.get_future().get(), "");
    }
    ~Simulating() {
        simulator_.End();
        thread_.join();
    }

    void Misbehave(Misbehaviour kind) {
        simulator_.Apply({practice::Verb::Misbehave, static_cast<int>(kind)});
    }

   private:
    Simulator simulator_{{}, std::numeric_limits<double>::infinity(), [](const std::string&) {}};
    practice::Wire wire_;
    std::thread thread_;
};

int Open() {
    std::int32_t code = -1;
    SimOpen(0, code);
    return code;
}

int Batch() {
    static std::byte pause[4];
    std::int32_t code = -1;
    SimRead(0x3304, sizeof pause, pause, code);
    SimProcess(code);
    return code;
}

// This takes a minute and a half: 41 attempts of two seconds each.
TEST(WindowsLayer, AModuleThatNeverAnswersTimesOut) {
    SimInit();
    Simulating simulator("UIPCMAIN", Misbehaviour::Silent);
    EXPECT_EQ(Open(), 11);
}

TEST(WindowsLayer, TheLinkReportsItsErrors) {
    SimInit();
    EXPECT_EQ(Open(), 2) << "no simulator";
    {
        Simulating simulator("FS98MAIN", Misbehaviour::Old);
        EXPECT_EQ(Open(), 14) << "a module that is too old, in a window of the other class";
    }
    {
        Simulating simulator("UIPCMAIN");
        EXPECT_EQ(Open(), 0);
        EXPECT_EQ(Batch(), 0);
        simulator.Misbehave(Misbehaviour::Wrong);
        EXPECT_EQ(Batch(), 13) << "a wrong answer";
    }
    EXPECT_EQ(Batch(), 12) << "the window is gone";
    SimInit();  // forgets the block, which still exists
    Simulating simulator("UIPCMAIN");
    EXPECT_EQ(Open(), 5) << "a block of that name";
}

TEST(WindowsLayer, AFileIsReplacedWhileAnotherProgramReadsIt) {
    std::ofstream("profile") << "old";
    std::ifstream held("profile");  // forbids only deletion
    EXPECT_TRUE(platform::ReplaceFile("profile", "new"));
    std::string content;
    std::ifstream("profile") >> content;
    EXPECT_EQ(content, "new");
    held.close();
    std::remove("profile");
}

}  // namespace

}  // namespace quirkmeter
