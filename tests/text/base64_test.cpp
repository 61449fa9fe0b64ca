#include "text/base64.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// The examples of RFC 4648, and the last digits.
TEST(Base64, IsWrittenAndRead)
{
    const std::vector<std::pair<std::string, std::string>> cases{
        {"", ""},
        {"f", "Zg=="},
        {"fo", "Zm8="},
        {"foo", "Zm9v"},
        {"foob", "Zm9vYg=="},
        {"fooba", "Zm9vYmE="},
        {"foobar", "Zm9vYmFy"},
        {"\xff\xff\xfe", "///+"},
    };
    for (const auto& [text, base64] : cases)
    {
        EXPECT_EQ(Base64Of(std::vector<std::uint8_t>(text.begin(), text.end())), base64);
        std::string bytes = "old";
        EXPECT_EQ(ReadBase64(base64, bytes), "");
        EXPECT_EQ(bytes, text);
    }
}
