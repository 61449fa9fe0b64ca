#include "gltf/document_builder.h"

#include "gltf/error.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace gltf
{
namespace
{

// Of components, as the JSON has them.
constexpr int kByteType = 5121;
constexpr int kShortType = 5123;
constexpr int kIntType = 5125;
constexpr int kFloatType = 5126;

constexpr int kNoTarget = 0;
constexpr int kArrayBuffer = 34962;
constexpr int kElementArrayBuffer = 34963;

constexpr std::size_t kNoView = ~std::size_t{0};
constexpr std::size_t kAlignment = 4;

static_assert(std::endian::native == std::endian::little, "buffers are copied from memory");

template <typename Number>
std::span<const std::uint8_t> BytesOf(std::span<const Number> numbers)
{
    return {reinterpret_cast<const std::uint8_t*>(numbers.data()), numbers.size_bytes()};
}

const char* TypeOf(std::size_t width)
{
    switch (width)
    {
    case 1:
        return "SCALAR";
    case 2:
        return "VEC2";
    case 3:
        return "VEC3";
    case 4:
        return "VEC4";
    default:
        return "MAT4";
    }
}

struct Bounds
{
    std::vector<float> least, most;
};

Bounds BoundsOf(std::span<const float> values, std::size_t width)
{
    Bounds bounds{{values.begin(), values.begin() + static_cast<std::ptrdiff_t>(width)}, {}};
    bounds.most = bounds.least;
    for (std::size_t i = width; i < values.size(); ++i)
    {
        bounds.least[i % width] = std::min(bounds.least[i % width], values[i]);
        bounds.most[i % width] = std::max(bounds.most[i % width], values[i]);
    }
    return bounds;
}

void SetBounds(Json& accessor, const Bounds& bounds)
{
    accessor["min"] = FloatNumbers(bounds.least);
    accessor["max"] = FloatNumbers(bounds.most);
}

void AppendU32(std::string& text, std::size_t value)
{
    for (int shift = 0; shift < 32; shift += 8)
        text += static_cast<char>((value >> shift) & 0xFF);
}

void AppendChunk(std::string& text, std::string_view kind, std::string_view bytes, char padding)
{
    const std::size_t padded = (bytes.size() + kAlignment - 1) / kAlignment * kAlignment;
    AppendU32(text, padded);
    text += kind;
    text += bytes;
    text.append(padded - bytes.size(), padding);
}

} // namespace

Json FloatNumber(float value)
{
    std::array<char, 32> text{};
    const auto written = std::to_chars(text.data(), text.data() + text.size(), value);
    double number = 0.0;
    std::from_chars(text.data(), written.ptr, number);
    return static_cast<float>(number) == value ? number : static_cast<double>(value);
}

Json FloatNumbers(std::span<const float> values)
{
    Json numbers = Json::array();
    for (const float value : values)
        numbers.push_back(FloatNumber(value));
    return numbers;
}

DocumentBuilder::DocumentBuilder(std::size_t most_bytes)
    : root_({{"asset", {{"version", "2.0"}}}}), most_bytes_(most_bytes), animation_view_(kNoView)
{
}

std::size_t DocumentBuilder::Append(const char* list, Json element)
{
    Json& elements = root_[list];
    elements.push_back(std::move(element));
    return elements.size() - 1;
}

void DocumentBuilder::UseExtension(std::string_view name)
{
    Json& used = root_["extensionsUsed"];
    if (std::find(used.begin(), used.end(), name) == used.end())
        used.push_back(std::string(name));
}

void DocumentBuilder::CheckRoom(std::size_t bytes) const
{
    if (bytes > most_bytes_ || binary_.size() > most_bytes_ - bytes)
        throw Error("the result would be larger than " + std::to_string(most_bytes_) + " bytes");
}

std::size_t DocumentBuilder::AppendBytes(std::span<const std::uint8_t> bytes)
{
    CheckRoom(bytes.size() + kAlignment);
    binary_.resize((binary_.size() + kAlignment - 1) / kAlignment * kAlignment);
    const std::size_t offset = binary_.size();
    binary_.insert(binary_.end(), bytes.begin(), bytes.end());
    return offset;
}

/// A view of its own for each accessor, which keeps strides out of the matter. Those of animations, which are many,
/// share one; the offset in it is then that of the accessor.
std::size_t DocumentBuilder::AddView(std::span<const std::uint8_t> bytes, AccessorUse use, int target)
{
    const std::size_t offset = AppendBytes(bytes);
    const bool shared = use == AccessorUse::Animation && target == kNoTarget;
    if (shared && animation_view_ != kNoView)
    {
        Json& view = root_["bufferViews"][animation_view_];
        const auto begin = view.value("byteOffset", std::size_t{0});
        view["byteLength"] = offset + bytes.size() - begin;
        return animation_view_;
    }
    Json view = {{"buffer", 0}};
    if (offset != 0)
        view["byteOffset"] = offset;
    view["byteLength"] = bytes.size();
    if (target != kNoTarget)
        view["target"] = target;
    const std::size_t index = Append("bufferViews", std::move(view));
    animation_view_ = shared ? index : kNoView; // any other view ends the shared one
    return index;
}

std::size_t DocumentBuilder::AddFloats(std::span<const float> values, std::size_t width, AccessorUse use)
{
    const bool of_vertices = use == AccessorUse::Position || use == AccessorUse::Vertex;
    const std::size_t view = AddView(BytesOf(values), use, of_vertices ? kArrayBuffer : kNoTarget);
    Json accessor = {{"bufferView", view}};
    const std::size_t begin = binary_.size() - values.size_bytes();
    const auto view_begin = root_["bufferViews"][view].value("byteOffset", std::size_t{0});
    if (begin != view_begin)
        accessor["byteOffset"] = begin - view_begin;
    accessor["componentType"] = kFloatType;
    accessor["count"] = values.size() / width;
    accessor["type"] = TypeOf(width);
    if (use == AccessorUse::Position)
        SetBounds(accessor, BoundsOf(values, width));
    return Append("accessors", std::move(accessor));
}

std::size_t DocumentBuilder::AddTimes(std::span<const float> times)
{
    const auto [found, is_new] = times_.try_emplace({times.begin(), times.end()}, 0);
    if (is_new)
    {
        found->second = AddFloats(times, 1, AccessorUse::Animation);
        SetBounds(root_["accessors"][found->second], {{times.front()}, {times.back()}});
    }
    return found->second;
}

std::size_t DocumentBuilder::AddIndices(std::span<const std::uint32_t> indices)
{
    // The greatest number of each type restarts a strip and is no index.
    const bool is_short =
        *std::max_element(indices.begin(), indices.end()) < std::numeric_limits<std::uint16_t>::max();
    CheckRoom(indices.size_bytes());
    std::vector<std::uint16_t> narrow;
    if (is_short)
    {
        narrow.reserve(indices.size());
        for (const std::uint32_t index : indices)
            narrow.push_back(static_cast<std::uint16_t>(index));
    }
    const auto bytes = is_short ? BytesOf(std::span<const std::uint16_t>(narrow)) : BytesOf(indices);
    const std::size_t view = AddView(bytes, AccessorUse::Vertex, kElementArrayBuffer);
    return Append("accessors", {{"bufferView", view},
                                {"componentType", is_short ? kShortType : kIntType},
                                {"count", indices.size()},
                                {"type", "SCALAR"}});
}

std::size_t DocumentBuilder::AddJoints(std::span<const std::uint16_t> joints)
{
    const bool is_byte =
        *std::max_element(joints.begin(), joints.end()) <= std::numeric_limits<std::uint8_t>::max();
    std::vector<std::uint8_t> narrow;
    if (is_byte)
    {
        narrow.reserve(joints.size());
        for (const std::uint16_t joint : joints)
            narrow.push_back(static_cast<std::uint8_t>(joint));
    }
    const auto bytes = is_byte ? std::span<const std::uint8_t>(narrow) : BytesOf(joints);
    const std::size_t view = AddView(bytes, AccessorUse::Vertex, kArrayBuffer);
    return Append("accessors", {{"bufferView", view},
                                {"componentType", is_byte ? kByteType : kShortType},
                                {"count", joints.size() / 4},
                                {"type", "VEC4"}});
}

std::size_t DocumentBuilder::AddSparse(std::size_t count, std::span<const std::uint32_t> indices,
                                       std::span<const float> values, AccessorUse use)
{
    constexpr std::size_t kWidth = 3;
    const std::size_t index_view = AddView(BytesOf(indices), AccessorUse::Vertex, kNoTarget);
    const std::size_t value_view = AddView(BytesOf(values), AccessorUse::Vertex, kNoTarget);
    Json accessor = {{"componentType", kFloatType}, {"count", count}, {"type", TypeOf(kWidth)}};
    if (use == AccessorUse::Position)
    {
        Bounds bounds = BoundsOf(values, kWidth);
        for (std::size_t i = 0; indices.size() < count && i < kWidth; ++i)
        {
            bounds.least[i] = std::min(bounds.least[i], 0.0f);
            bounds.most[i] = std::max(bounds.most[i], 0.0f);
        }
        SetBounds(accessor, bounds);
    }
    accessor["sparse"] = {{"count", indices.size()},
                          {"indices", {{"bufferView", index_view}, {"componentType", kIntType}}},
                          {"values", {{"bufferView", value_view}}}};
    return Append("accessors", std::move(accessor));
}

void DocumentBuilder::FinishBuffer(std::string_view uri)
{
    if (binary_.empty())
        return;
    Json buffer = Json::object();
    if (!uri.empty())
        buffer["uri"] = std::string(uri);
    buffer["byteLength"] = binary_.size();
    Append("buffers", std::move(buffer));
}

std::string DocumentBuilder::Glb()
{
    constexpr std::size_t kHeader = 12;
    constexpr std::size_t kHeaderOfChunk = 8;
    FinishBuffer({});
    const std::string json = root_.dump(-1, ' ', false, Json::error_handler_t::replace);
    const std::size_t all = kHeader + 2 * (kHeaderOfChunk + kAlignment) + json.size();
    CheckRoom(all);
    if (all > std::numeric_limits<std::uint32_t>::max() - binary_.size())
        throw Error("the result would be larger than 4 GiB");
    std::string text;
    text.reserve(all + binary_.size());
    text = "glTF";
    AppendU32(text, 2);
    AppendU32(text, 0); // the length, below
    AppendChunk(text, "JSON", json, ' ');
    if (!binary_.empty())
    {
        AppendChunk(text, {"BIN\0", 4}, {reinterpret_cast<const char*>(binary_.data()), binary_.size()},
                    '\0');
    }
    std::string length;
    AppendU32(length, text.size());
    return text.replace(8, 4, length);
}

std::string DocumentBuilder::Gltf(std::string_view binary_uri)
{
    FinishBuffer(binary_uri);
    std::string json = root_.dump(1, '\t', false, Json::error_handler_t::replace) + "\n";
    CheckRoom(json.size());
    return json;
}

} // namespace gltf
