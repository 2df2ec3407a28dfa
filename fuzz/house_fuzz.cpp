// A door of the house: the exported calls whose letters the target is built with.

#include "house.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::CInput input(data, size);
    fuzz::CHouse(input).Play(input, SURVEILLANCE_FUZZ_CALLS);
    return 0;
}
