#pragma once

// glTF without the converter's reader and writer: documents made by hand, and numbers read from bytes.

#include <nlohmann/json.hpp>

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace tv2_tests
{

using Json = nlohmann::json;

/// A document in the making; its one buffer is the binary chunk.
struct RawGltf
{
    Json root = {{"asset", {{"version", "2.0"}}}};
    std::string binary;

    RawGltf() = default;
    explicit RawGltf(std::string_view glb)
    {
        std::uint32_t json_size = 0;
        std::memcpy(&json_size, glb.data() + 12, 4);
        root = Json::parse(glb.substr(20, json_size));
        if (glb.size() > 28u + json_size)
            binary = glb.substr(28u + json_size);
    }

    std::string Glb()
    {
        if (!binary.empty())
            root["buffers"] = {{{"byteLength", binary.size()}}};
        std::string json = root.dump();
        json.append((4 - json.size() % 4) % 4, ' ');
        std::string chunk = binary;
        chunk.append((4 - chunk.size() % 4) % 4, '\0');
        std::string glb;
        const auto add = [&glb](std::size_t number)
        {
            const auto word = static_cast<std::uint32_t>(number);
            glb.append(reinterpret_cast<const char*>(&word), 4);
        };
        add(0x46546C67);
        add(2);
        add(12 + 8 + json.size() + (chunk.empty() ? 0 : 8 + chunk.size()));
        add(json.size());
        add(0x4E4F534A);
        glb += json;
        if (!chunk.empty())
        {
            add(chunk.size());
            add(0x4E4942);
            glb += chunk;
        }
        return glb;
    }

    template <typename Number>
    std::size_t View(const std::vector<Number>& numbers)
    {
        binary.append((4 - binary.size() % 4) % 4, '\0');
        root["bufferViews"].push_back(
            {{"buffer", 0}, {"byteOffset", binary.size()}, {"byteLength", numbers.size() * sizeof(Number)}});
        binary.append(reinterpret_cast<const char*>(numbers.data()), numbers.size() * sizeof(Number));
        return root["bufferViews"].size() - 1;
    }

    template <typename Number>
    std::size_t Add(const std::vector<Number>& numbers, const char* type, bool normalised = false)
    {
        const int component = std::is_same_v<Number, float>           ? 5126
                              : std::is_same_v<Number, std::uint32_t> ? 5125
                              : std::is_same_v<Number, std::uint16_t> ? 5123
                              : std::is_same_v<Number, std::int16_t>  ? 5122
                                                                      : 5121;
        root["accessors"].push_back({{"bufferView", View(numbers)},
                                     {"componentType", component},
                                     {"type", type},
                                     {"count", numbers.size() / WidthOf(type)}});
        if (normalised)
            root["accessors"].back()["normalized"] = true;
        return root["accessors"].size() - 1;
    }

    static std::size_t WidthOf(std::string_view type)
    {
        return type == "SCALAR" ? 1 : type == "MAT4" ? 16 : static_cast<std::size_t>(type[3] - '0');
    }

    std::size_t Width(std::size_t accessor) const
    {
        return WidthOf(root["accessors"][accessor]["type"].get<std::string>());
    }

    /// The numbers of an accessor, end to end.
    std::vector<float> Read(std::size_t accessor) const
    {
        const Json& json = root["accessors"][accessor];
        const std::size_t width = Width(accessor);
        std::vector<float> numbers(json["count"].get<std::size_t>() * width);
        const int type = json["componentType"];
        const bool normalised = json.value("normalized", false);
        if (json.contains("bufferView"))
        {
            const Json& view = root["bufferViews"][json["bufferView"].get<std::size_t>()];
            const std::size_t stride = view.value("byteStride", width * SizeOf(type));
            const std::size_t offset =
                view.value("byteOffset", std::size_t{0}) + json.value("byteOffset", std::size_t{0});
            for (std::size_t i = 0; i < numbers.size(); ++i)
                numbers[i] =
                    Component(offset + i / width * stride + i % width * SizeOf(type), type, normalised);
        }
        if (!json.contains("sparse"))
            return numbers;
        const Json& sparse = json["sparse"];
        const auto part = [&](const Json& where)
        {
            return root["bufferViews"][where["bufferView"].get<std::size_t>()].value("byteOffset",
                                                                                     std::size_t{0}) +
                   where.value("byteOffset", std::size_t{0});
        };
        const int index_type = sparse["indices"]["componentType"];
        for (std::size_t i = 0; i < sparse["count"].get<std::size_t>(); ++i)
        {
            const auto element = static_cast<std::size_t>(
                Component(part(sparse["indices"]) + i * SizeOf(index_type), index_type, false));
            for (std::size_t k = 0; k < width; ++k)
                numbers[element * width + k] =
                    Component(part(sparse["values"]) + (i * width + k) * SizeOf(type), type, normalised);
        }
        return numbers;
    }

private:
    static std::size_t SizeOf(int type) { return type >= 5125 ? 4 : type >= 5122 ? 2 : 1; }

    float Component(std::size_t at, int type, bool normalised) const
    {
        std::uint32_t raw = 0;
        std::memcpy(&raw, binary.data() + at, SizeOf(type));
        if (type == 5126)
            return std::bit_cast<float>(raw);
        if (type == 5122)
            return normalised ? static_cast<float>(std::max(static_cast<std::int16_t>(raw) / 32767.0, -1.0))
                              : static_cast<float>(static_cast<std::int16_t>(raw));
        const double most = type == 5121 ? 255.0 : type == 5123 ? 65535.0 : 1.0;
        return static_cast<float>(normalised ? raw / most : raw);
    }
};

} // namespace tv2_tests
