#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <vector>

namespace tev2_viewer
{

/// The numbers of a page: 32-bit words (floats or integers, little-endian), gathered without copying and written as one
/// text of Base64. What is added must outlive this.
class Words
{
public:
    /// A run of words; its place and length are in words.
    struct Run
    {
        std::uint64_t offset = 0;
        std::uint64_t count = 0;
    };

    /// Values that consist of words and nothing else.
    template <typename Value>
    Run Add(std::span<const Value> values)
    {
        static_assert(std::is_trivially_copyable_v<Value> && sizeof(Value) % kWord == 0);
        return Append({reinterpret_cast<const char*>(values.data()), values.size_bytes()});
    }

    /// The same, but once for equal runs: many tracks have the same times.
    Run AddOnce(std::span<const float> values);

    /// A copy of words that are made for the page.
    Run AddCopy(std::vector<float> words);
    Run AddCopy(std::vector<std::uint32_t> words);

    /// Characters that AppendBase64 appends.
    std::uint64_t Base64Length() const { return (size_ * kWord + 2) / 3 * 4; }

    void AppendBase64(std::string& text) const;

private:
    static constexpr std::size_t kWord = 4;

    Run Append(std::string_view bytes);

    std::vector<std::string_view> pieces_;
    std::uint64_t size_ = 0;
    std::unordered_map<std::string_view, Run> runs_; ///< by their bytes
    std::deque<std::vector<float>> floats_;
    std::deque<std::vector<std::uint32_t>> integers_;
};

} // namespace tev2_viewer
