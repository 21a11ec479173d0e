// What libFuzzer calls: the one target of this program.
#include <cstddef>
#include <cstdint>

#include "fuzz/Target.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    salvor::fuzz::Target::first()->run({data, size});
    return 0;
}
