// ProcessRPFInfo: messages of any length, over positions that they margin anew.

#include "house.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::CInput input(data, size);
    fuzz::CHouse(input).Play(input, "rsucE");
    return 0;
}
