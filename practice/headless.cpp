#include "practice/headless.h"

#include <iostream>
#include <thread>

#include "practice/command.h"
#include "practice/wire.h"

namespace quirkmeter::practice {

namespace {

void TakeCommands(Simulator& simulator) {
    for (std::string line; std::getline(std::cin, line);)
        if (auto command = ParseCommand(line))
            simulator.Apply(*command);
        else
            std::cerr << "unknown command: " + line + "\n";
}

}  // namespace

void PrintLine(const std::string& line) {
    std::cout << line << '\n' << std::flush;
}

std::string RunHeadless(const std::shared_ptr<Simulator>& simulator, const std::string& className) {
    Wire wire(*simulator, className);
    if (std::string fault = wire.Open(); !fault.empty()) return fault;
    // A thread that waits for a line cannot be woken and is left behind at the end. Without this
    // call it would hold the C library's lock of standard input, for which the end of the process
    // waits.
    std::ios::sync_with_stdio(false);
    std::thread([simulator] { TakeCommands(*simulator); }).detach();
    wire.Serve();
    return {};
}

}  // namespace quirkmeter::practice
