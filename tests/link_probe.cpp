// link-probe: works the link by hand. It takes an operation a line: init, open VERSION, read OFFSET
// SIZE, process; and answers each with its result code. What sets no code shows as -1. Beside that it
// can keep a file open, until its end: hold FILE.
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "link/sim_link.h"

int main() {
    using namespace quirkmeter;
    static std::vector<std::byte> answers(BlockSize);
    std::cin.unsetf(std::ios::basefield);  // 0x for hexadecimal
    std::string operation;
    std::ifstream held;
    while (std::cin >> operation) {
        std::int32_t result = -1, number = 0, size = 0;
        if (operation == "init") {
            SimInit();
        } else if (operation == "open") {
            std::cin >> number;
            SimOpen(number, result);
        } else if (operation == "read") {
            std::cin >> number >> size;
            SimRead(number, size, answers.data(), result);
        } else if (operation == "process") {
            SimProcess(result);
        } else if (operation == "hold") {
            std::string name;
            std::cin >> name;
            held.open(name);
        }
        std::cout << result << std::endl;
    }
}
