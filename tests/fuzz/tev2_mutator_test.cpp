#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

// A mutator of scene files or of bodies stays inside what it is given, and asks the fuzzer for nothing outside.

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t max_size);
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t max_size,
                                               unsigned seed);

namespace
{

/// What the mutator was given last, and how often it asked for a mutation.
std::uint8_t* room_begin;
std::size_t room_size;
std::minstd_rand fuzzer_random;
long asked;

} // namespace

/// In the fuzzer's place, as rude as it may be: writes everywhere it is allowed to.
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t max_size)
{
    ++asked;
    const auto begin = static_cast<std::size_t>(data - room_begin);
    const bool inside = begin <= room_size && max_size <= room_size - begin;
    EXPECT_TRUE(inside && size <= max_size && max_size > 0)
        << size << " of " << max_size << " bytes at " << begin << " of " << room_size;
    if (!inside || max_size == 0)
        return size;
    std::generate_n(data, max_size, [] { return static_cast<std::uint8_t>(fuzzer_random() >> 8); });
    return 1 + fuzzer_random() % max_size;
}

namespace
{

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kGuard = 64;
constexpr std::uint8_t kGuardByte = 0xA5;
constexpr unsigned kSeeds = 400;

/// Mutates with many seeds; returns how many results differ from the file.
long MutateOften(const Bytes& file, std::size_t max_size)
{
    long changed = 0;
    for (unsigned seed = 1; seed <= kSeeds && !testing::Test::HasFailure(); ++seed)
    {
        Bytes buffer(max_size + kGuard, kGuardByte);
        std::copy(file.begin(), file.end(), buffer.begin());
        room_begin = buffer.data();
        room_size = max_size;
        fuzzer_random.seed(seed);
        const std::size_t size =
            LLVMFuzzerCustomMutator(buffer.data(), file.size(), max_size, seed * 2654435761U);
        EXPECT_LE(size, max_size) << "seed " << seed;
        EXPECT_EQ(std::count(buffer.end() - kGuard, buffer.end(), kGuardByte), std::ptrdiff_t{kGuard})
            << "seed " << seed;
        buffer.resize(std::min(size, max_size));
        changed += buffer != file ? 1 : 0;
    }
    return changed;
}

TEST(Mutator, StaysInItsRoom)
{
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(TV2_CORPUS_DIR))
    {
        SCOPED_TRACE(entry.path().filename());
        ++files;
        std::ifstream stream(entry.path(), std::ios::binary);
        const Bytes whole(std::istreambuf_iterator<char>(stream), {});
        for (const std::size_t cut : {std::size_t{0}, std::size_t{3}, std::size_t{4}, std::size_t{12},
                                      whole.size() / 2, whole.size()})
        {
            const std::size_t size = std::min(cut, whole.size());
            const Bytes file(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
            for (const std::size_t room : {0u, 1u, 7u, 8u, 100u, 5000u})
            {
                SCOPED_TRACE(testing::Message() << size << " bytes, room for " << room << " more");
                const long changed = MutateOften(file, std::max<std::size_t>(size + room, 1));
                ASSERT_FALSE(HasFailure());
                EXPECT_TRUE(size < whole.size() || changed > static_cast<long>(kSeeds) / 4) << changed;
            }
        }
    }
    EXPECT_GT(files, 0);
    EXPECT_GT(asked, 1000);
}

} // namespace
