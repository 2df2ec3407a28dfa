#include "memory/failing_memory.h"

#include <cstdlib>
#include <new>

namespace surv::test {
long allocationsLeft = -1;
}  // namespace surv::test

void* operator new(std::size_t size) {
    long& left = surv::test::allocationsLeft;
    if (left == 0) throw std::bad_alloc();
    if (left > 0) --left;
    if (void* memory = std::malloc(size != 0 ? size : 1)) return memory;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
