// How libFuzzer runs the one target that is linked into the program.

#include "fuzz.h"

#include <cstdint>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    startFuzzing(false);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzzTargets().first()(QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(size)));
    return 0;
}
