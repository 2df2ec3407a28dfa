// AddAndComputeMTM: touchlines over what events have left.

#include "house.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::CInput input(data, size);
    fuzz::CHouse(input).Play(input, "tmu");
    return 0;
}
