#include "viewer/words.h"

#include "text/base64.h"

#include <algorithm>
#include <array>

namespace tev2_viewer
{

Words::Run Words::AddOnce(std::span<const float> values)
{
    const std::string_view bytes(reinterpret_cast<const char*>(values.data()), values.size_bytes());
    const auto [found, is_new] = runs_.try_emplace(bytes);
    if (is_new)
        found->second = Append(bytes);
    return found->second;
}

Words::Run Words::AddCopy(std::vector<float> words)
{
    return Add(std::span<const float>(floats_.emplace_back(std::move(words))));
}

Words::Run Words::AddCopy(std::vector<std::uint32_t> words)
{
    return Add(std::span<const std::uint32_t>(integers_.emplace_back(std::move(words))));
}

Words::Run Words::Append(std::string_view bytes)
{
    const Run run{size_, bytes.size() / kWord};
    if (!bytes.empty())
        pieces_.push_back(bytes);
    size_ += run.count;
    return run;
}

void Words::AppendBase64(std::string& text) const
{
    std::array<std::uint8_t, 3 << 12> block; // whole groups of 3 bytes
    std::size_t filled = 0;
    for (std::string_view piece : pieces_)
    {
        while (!piece.empty())
        {
            const std::size_t taken = std::min(piece.size(), block.size() - filled);
            std::copy_n(piece.begin(), taken, block.begin() + static_cast<std::ptrdiff_t>(filled));
            piece.remove_prefix(taken);
            filled += taken;
            if (filled == block.size())
            {
                text += Base64Of(block);
                filled = 0;
            }
        }
    }
    text += Base64Of(std::span(block).first(filled));
}

} // namespace tev2_viewer
