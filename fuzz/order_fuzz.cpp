// CheckSurveillance and UpdateSurveillance: packed requests of any code, with any flags.

#include "house.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::CInput input(data, size);
    fuzz::CHouse(input).Play(input, "cpudt");
    return 0;
}
