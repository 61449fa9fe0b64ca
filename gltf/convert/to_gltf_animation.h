#pragma once

/// One animation of the document.

#include "gltf/convert/to_gltf_nodes.h"
#include "gltf/convert/to_gltf_tracks.h"

#include <optional>
#include <string>
#include <vector>

namespace tev2_gltf
{

class GltfAnimation
{
public:
    /// Of a scene whose keys are `shift` seconds later in the document.
    GltfAnimation(ToGltfContext& context, std::size_t source, double shift);

    std::size_t Source() const { return source_; }
    double Shift() const { return shift_; }

    /// `values` are those of the keys one after another, `width` for each.
    void AddChannel(std::size_t node, const char* path, std::vector<float> times, std::vector<float> values,
                    const char* interpolation = "LINEAR");

    /// The weights of a mesh's targets on the times of all of them, unless they stay at `rest`.
    void AddWeights(std::size_t node, const std::vector<Keys<float>>& targets,
                    const std::vector<float>& rest);

    /// The channels of the scene's nodes: of what moves, and of what differs from the node's own transform.
    void AddNodes(const GltfNodes& nodes);

    /// Writes the animation if it has channels, lasts, or is one of several.
    void Write(const GltfNodes& nodes);

private:
    struct Channel
    {
        std::size_t node;
        const char* path;
        std::vector<float> times;
        std::vector<float> values;
        const char* interpolation;
    };

    void AddNode(const GltfNodes& nodes, std::size_t node);
    void AddRest(const GltfNodes& nodes);
    void DropFarKeys(std::size_t node, std::vector<float>& times, std::vector<float>& values) const;
    void WriteChannel(const Channel& channel);
    void CoverTimeRange(Channel& channel) const;

    ToGltfContext& context_;
    std::size_t source_;
    double shift_;
    std::optional<Channel> first_; // held back until the times of all others are known
    float earliest_;
    float latest_;
    Json channels_ = Json::array();
    Json samplers_ = Json::array();
};

/// Seconds by which the keys of a scene become later, so that none is before 0.
double TimeShiftOf(const TEV2& scene);

} // namespace tev2_gltf
