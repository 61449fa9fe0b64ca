#include "fuzz/tev2_mutations.h"

// Changes inputs of the target of bodies: a byte that picks the class, then the body.

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t max_size,
                                               unsigned seed)
{
    tv2_fuzz::Input input(data, size, max_size, seed);
    if (size == 0 || input.Below(50) == 0)
        return LLVMFuzzerMutate(data, size, max_size);
    if (input.Below(50) == 0)
        data[0] = static_cast<std::uint8_t>(input.Below(64));
    tv2_fuzz::Body(input, 1, size).Mutate();
    return input.Size();
}
