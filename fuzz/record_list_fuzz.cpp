// The records of a start's lists and of every call that takes one, with orders and marks between them.

#include "house.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::CInput input(data, size);
    fuzz::CHouse(input).Play(input, "SAURFDPIMYKVXNEcutm");
    return 0;
}
