#pragma once

// glTF documents for tests, put together in memory.

#include <nlohmann/json.hpp>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace gltf_writer
{

using Json = nlohmann::ordered_json;

inline std::string Base64(const std::string& bytes)
{
    static constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 3)
    {
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k)
            group = group << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0u);
        for (std::size_t k = 0; k < 4; ++k)
            text.push_back(i + k > bytes.size() ? '=' : kDigits[group >> (18 - 6 * k) & 63]);
    }
    return text;
}

// Puts a glTF document together, its key values in one buffer.
class Document
{
public:
    Json json = {{"asset", {{"version", "2.0"}}},
                 {"scene", 0},
                 {"scenes", {{{"nodes", Json::array()}}}},
                 {"nodes", Json::array()}};

    Document& Node(Json node, bool on_top = true)
    {
        if (on_top)
            json["scenes"][0]["nodes"].push_back(json["nodes"].size());
        json["nodes"].push_back(std::move(node));
        return *this;
    }

    Document& Animation(Json animation)
    {
        animation["channels"] = Json::array();
        animation["samplers"] = Json::array();
        json["animations"].push_back(std::move(animation));
        return *this;
    }

    // A channel of the last animation, with a key every `seconds`.
    Document& Channel(int node, const char* path, const std::vector<float>& values,
                      const char* interpolation = "LINEAR", float seconds = 1.0f)
    {
        const std::size_t width = std::strcmp(path, "rotation") == 0 ? 4 : 3;
        const std::size_t per_key = width * (std::strcmp(interpolation, "CUBICSPLINE") == 0 ? 3 : 1);
        std::vector<float> times(values.size() / per_key);
        for (std::size_t i = 0; i < times.size(); ++i)
            times[i] = static_cast<float>(i) * seconds;
        const int input = Accessor(times, 1);
        const int output = Accessor(values, width);
        Json& animation = json["animations"].back();
        animation["channels"].push_back(
            {{"sampler", animation["samplers"].size()}, {"target", {{"node", node}, {"path", path}}}});
        animation["samplers"].push_back(
            {{"input", input}, {"output", output}, {"interpolation", interpolation}});
        return *this;
    }

    // Makes normalised whole numbers of the values of an accessor.
    Document& Bytes(const Json& accessor, int component_type, const std::vector<int>& values)
    {
        Json& made = json["accessors"][accessor.get<std::size_t>()];
        json["bufferViews"].push_back(
            {{"buffer", 0}, {"byteOffset", buffer_.size()}, {"byteLength", values.size()}});
        for (const int value : values)
            buffer_.push_back(static_cast<char>(value));
        made["bufferView"] = json["bufferViews"].size() - 1;
        made["componentType"] = component_type;
        made["normalized"] = true;
        return *this;
    }

    std::string Text()
    {
        json["buffers"] = {{{"byteLength", buffer_.size()},
                            {"uri", "data:application/octet-stream;base64," + Base64(buffer_)}}};
        return json.dump();
    }

    std::string Binary()
    {
        json["buffers"] = {{{"byteLength", buffer_.size()}}};
        std::string text = json.dump();
        text.resize((text.size() + 3) / 4 * 4, ' ');
        return "glTF" + Word(2) + Word(28 + text.size() + buffer_.size()) + Word(text.size()) + "JSON" +
               text + Word(buffer_.size()) + std::string("BIN\0", 4) + buffer_;
    }

    std::string TextBesideBuffer(const std::string& name)
    {
        json["buffers"] = {{{"byteLength", buffer_.size()}, {"uri", name}}};
        return json.dump();
    }

    const std::string& Buffer() const { return buffer_; }

private:
    static std::string Word(std::size_t value)
    {
        std::string bytes;
        for (int i = 0; i < 4; ++i)
            bytes.push_back(static_cast<char>(static_cast<unsigned char>(value >> (8 * i))));
        return bytes;
    }

    int Accessor(const std::vector<float>& values, std::size_t width)
    {
        const std::size_t offset = buffer_.size();
        const std::size_t size = values.size() * sizeof(float);
        buffer_.resize(offset + size);
        std::memcpy(buffer_.data() + offset, values.data(), size);
        json["bufferViews"].push_back({{"buffer", 0}, {"byteOffset", offset}, {"byteLength", size}});
        json["accessors"].push_back({{"bufferView", json["bufferViews"].size() - 1},
                                     {"componentType", 5126},
                                     {"count", values.size() / width},
                                     {"type", width == 1   ? "SCALAR"
                                              : width == 3 ? "VEC3"
                                                           : "VEC4"}});
        return static_cast<int>(json["accessors"].size()) - 1;
    }

    std::string buffer_;
};

} // namespace gltf_writer
