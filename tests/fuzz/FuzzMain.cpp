#include "FuzzTargets.h"

#include <cstddef>
#include <cstdint>

/// What the fuzzer calls again and again, with the target that this executable is built for.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzTargets::VELTA_FUZZ_TARGET(
        QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    return 0;
}
