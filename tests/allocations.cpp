#include "allocations.h"

#include <cstdlib>
#include <new>

namespace {

std::size_t Count = 0;

}  // namespace

namespace quirkmeter {

std::size_t Allocations() {
    return Count;
}

}  // namespace quirkmeter

void* operator new(std::size_t size) {
    ++Count;
    if (void* memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
