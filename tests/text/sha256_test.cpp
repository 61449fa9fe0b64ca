#include "text/sha256.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace
{

std::vector<std::uint8_t> Bytes(const std::string& text)
{
    return {text.begin(), text.end()};
}

// The digests are those of FIPS 180-2, appendix B, and of sha256sum.
TEST(Sha256, KnownDigests)
{
    const std::vector<std::pair<std::string, std::string>> cases{
        {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
        {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
        {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
         "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
        {std::string(55, 'x'), "d5e285683cd4efc02d021a5c62014694958901005d6f71e89e0989fac77e4072"},
        {std::string(64, 'x'), "7ce100971f64e7001e8fe5a51973ecdfe1ced42befe7ee8d5fd6219506b5393c"},
        {std::string(119, 'x'), "000b48d4edf0fa7bee3c6236ecd2785baa5db4eeb8bb54341b029e0d9fa5fb0c"},
        {std::string(1'000'000, 'a'), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
    };
    for (const auto& [text, digest] : cases)
        EXPECT_EQ(HexOf(Sha256Of(Bytes(text))), digest) << text.size() << " bytes";
}

TEST(Sha256, InstructionsOfTheProcessorGiveTheSame)
{
    Sha256Step* const step = Sha256StepOfProcessor();
    if (step == nullptr)
        GTEST_SKIP() << "this processor has none";
    std::mt19937 random(1);
    Sha256State by_instructions{};
    for (std::uint32_t& word : by_instructions)
        word = static_cast<std::uint32_t>(random());
    Sha256State plain = by_instructions;
    std::array<std::uint8_t, kSha256Block> block{};
    for (int i = 0; i < 1000; ++i)
    {
        for (std::uint8_t& byte : block)
            byte = static_cast<std::uint8_t>(random());
        step(by_instructions, block.data());
        AddSha256Block(plain, block.data());
        ASSERT_EQ(by_instructions, plain) << i;
    }
}

TEST(Sha256, PiecesOfAnySizeGiveTheSameDigest)
{
    const std::vector<std::uint8_t> bytes = Bytes(std::string(300, 'q'));
    for (std::size_t piece = 1; piece <= bytes.size(); ++piece)
    {
        Sha256 hash;
        for (std::size_t at = 0; at < bytes.size(); at += piece)
        {
            hash.Add(std::span(bytes).subspan(at, std::min(piece, bytes.size() - at)));
            hash.Finish(); // does not disturb what follows
        }
        ASSERT_EQ(hash.Finish(), Sha256Of(bytes)) << piece;
    }
}

} // namespace
