// Random numbers under a test's control, linked instead of the program's own.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <utility>
#include <vector>

namespace quirkmeter {

/// Answers every call of RandomInRange; by default with the lowest number.
inline std::function<std::int32_t(std::int32_t high, std::int32_t low)> ScriptedDraw =
    [](std::int32_t, std::int32_t low) { return low; };

/// During its lifetime, draws return the numbers in Next and then the lowest ones.
struct DrawScript {
    DrawScript()
        : Before(std::exchange(ScriptedDraw, [this](auto high, auto low) {
              Asked.emplace_back(high, low);
              if (Next.empty()) return low;
              std::int32_t number = Next.front();
              Next.pop_front();
              return number;
          })) {}
    ~DrawScript() { ScriptedDraw = Before; }
    DrawScript(const DrawScript&) = delete;

    std::deque<std::int32_t> Next;
    std::vector<std::pair<std::int32_t, std::int32_t>> Asked;  // high and low of every draw
    decltype(ScriptedDraw) Before;
};

}  // namespace quirkmeter
