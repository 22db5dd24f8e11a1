// SPDX-License-Identifier: MIT
// Hands libFuzzer's inputs to the target that this program is built for.
#include "targets.h"

extern "C" int LLVMFuzzerTestOneInput(const quint8 *bytes, std::size_t size)
{
    FUZZ_TARGET(bytes, size);
    return 0;
}
