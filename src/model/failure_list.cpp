#include "model/failure_list.h"

#include <algorithm>

#include "model/catalogue.h"

namespace quirkmeter {

FailureRow FailureList[FailureListRows + 1];
std::int32_t FailureCount = 0;
std::int32_t LastFailureCount = 0;

void AddFailure(int system, int subsystem) {
    if (FailureCount >= FailureListRows) return;
    Catalogue[system][subsystem].Failed = true;
    ++FailureCount;
    FailureList[FailureCount] = {.System = system, .SubSystem = subsystem};
}

int FindFailure(int system, int subsystem) {
    int row = FailureCount;
    while (row > 0 &&
           (FailureList[row].System != system || FailureList[row].SubSystem != subsystem))
        --row;
    return row;
}

void RemoveFailureRow(int row) {
    Catalogue[FailureList[row].System][FailureList[row].SubSystem].Failed = false;
    std::copy(FailureList + row + 1, FailureList + FailureCount + 1, FailureList + row);
    FailureList[FailureCount] = {};
    --FailureCount;
}

}  // namespace quirkmeter
