#pragma once

#include "gltf/accessor.h"
#include "gltf/document.h"
#include "gltf/error.h"
#include "tev2_loader/tev2.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <set>
#include <string>
#include <vector>

namespace tv2_tests
{

/// Rows of three axes and a place.
struct PoseMatrix : std::array<std::array<double, 4>, 3>
{
};

inline PoseMatrix operator*(const PoseMatrix& a, const PoseMatrix& b)
{
    PoseMatrix product{};
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 4; ++column)
        {
            product[row][column] = column == 3 ? a[row][3] : 0.0;
            for (std::size_t i = 0; i < 3; ++i)
                product[row][column] += a[row][i] * b[i][column];
        }
    return product;
}

inline PoseMatrix AxesMatrix(const std::array<std::array<double, 3>, 3>& rows)
{
    PoseMatrix matrix{};
    for (std::size_t row = 0; row < 3; ++row)
        std::copy_n(rows[row].begin(), 3, matrix[row].begin());
    return matrix;
}

// The exchanges of docs/converting.md, as matrices.
inline const PoseMatrix kNegatedX = AxesMatrix({{{-1, 0, 0}, {0, 1, 0}, {0, 0, 1}}});
inline const PoseMatrix kSwappedYZ = AxesMatrix({{{1, 0, 0}, {0, 0, 1}, {0, 1, 0}}});
inline const PoseMatrix kNegatedZ = AxesMatrix({{{1, 0, 0}, {0, 1, 0}, {0, 0, -1}}});
inline const PoseMatrix kHalfTurnAboutY = AxesMatrix({{{-1, 0, 0}, {0, 1, 0}, {0, 0, -1}}});

/// World matrices of a GLB by the rules of glTF alone, in double precision.
class DocumentPoses
{
public:
    explicit DocumentPoses(const std::string& bytes, std::size_t animation = 0)
        : document_(bytes, files_), accessors_(document_)
    {
        const std::size_t count = document_.Count("nodes");
        parents_.resize(count, count);
        for (std::size_t node = 0; node < count; ++node)
        {
            const gltf::JsonValue children = document_.NodeAt(node).json["children"];
            for (std::size_t i = 0; i < children.Size(); ++i)
                parents_[static_cast<std::size_t>(*children[i].Whole())] = node;
        }
        if (animation >= document_.Count("animations"))
            return;
        const gltf::Animation moves = document_.AnimationAt(animation);
        for (std::size_t i = 0; i < moves.channels.Size(); ++i)
        {
            const gltf::Channel channel = document_.ChannelAt(moves, i);
            const gltf::Sampler sampler = document_.SamplerAt(moves, channel.sampler);
            channels_.push_back({*channel.node, channel.target, sampler.interpolation,
                                 accessors_.Read(sampler.input), accessors_.Read(sampler.output)});
        }
    }

    const gltf::Document& Document() const { return document_; }
    gltf::Numbers Read(std::size_t accessor) { return accessors_.Read(accessor); }

    PoseMatrix WorldAt(std::size_t node, double time) const
    {
        PoseMatrix world = LocalAt(node, time);
        for (std::size_t at = parents_[node]; at < parents_.size(); at = parents_[at])
            world = LocalAt(at, time) * world;
        return world;
    }

    /// The exchange of a node, which follows from what is on it.
    const PoseMatrix& ExchangeOf(std::size_t node) const
    {
        const gltf::JsonValue json = document_.NodeAt(node).json;
        return json["camera"]                              ? kNegatedZ
               : json["extensions"]["KHR_lights_punctual"] ? kNegatedX
                                                           : kSwappedYZ;
    }

private:
    struct Track
    {
        std::size_t node;
        gltf::Target target;
        gltf::Interpolation interpolation;
        gltf::Numbers times, values;
    };

    template <std::size_t kWidth>
    static std::array<double, kWidth> ValueAt(const Track& track, double time)
    {
        const auto& times = *track.times;
        const auto key = [&](std::size_t index)
        {
            std::array<double, kWidth> value{};
            std::copy_n(track.values->begin() + static_cast<std::ptrdiff_t>(index * kWidth), kWidth,
                        value.begin());
            return value;
        };
        const auto after =
            static_cast<std::size_t>(std::upper_bound(times.begin(), times.end(), time) - times.begin());
        if (after == 0 || after == times.size())
            return key(after == 0 ? 0 : after - 1);
        const std::array<double, kWidth> from = key(after - 1);
        std::array<double, kWidth> to = key(after);
        if (track.interpolation == gltf::Interpolation::Step)
            return from;
        const double fraction = (time - times[after - 1]) / (times[after] - times[after - 1]);
        double a = 1.0 - fraction;
        double b = fraction;
        if (kWidth == 4)
        {
            double dot = 0.0;
            for (std::size_t i = 0; i < kWidth; ++i)
                dot += from[i] * to[i];
            for (double& component : to)
                component = dot < 0.0 ? -component : component;
            const double angle = std::acos(std::min(1.0, std::abs(dot)));
            if (angle > 1e-9)
            {
                a = std::sin(a * angle) / std::sin(angle);
                b = std::sin(b * angle) / std::sin(angle);
            }
        }
        std::array<double, kWidth> value{};
        for (std::size_t i = 0; i < kWidth; ++i)
            value[i] = from[i] * a + to[i] * b;
        return value;
    }

    PoseMatrix LocalAt(std::size_t node, double time) const
    {
        gltf::Trs trs = std::get<gltf::Trs>(document_.NodeAt(node).local);
        for (const Track& track : channels_)
        {
            if (track.node != node)
                continue;
            if (track.target == gltf::Target::Translation)
                trs.translation = ValueAt<3>(track, time);
            if (track.target == gltf::Target::Rotation)
                trs.rotation = ValueAt<4>(track, time);
            if (track.target == gltf::Target::Scale)
                trs.scale = ValueAt<3>(track, time);
        }
        const auto [x, y, z, w] = trs.rotation;
        PoseMatrix local =
            AxesMatrix({{{1 - 2 * (y * y + z * z), 2 * (x * y - z * w), 2 * (x * z + y * w)},
                         {2 * (x * y + z * w), 1 - 2 * (x * x + z * z), 2 * (y * z - x * w)},
                         {2 * (x * z - y * w), 2 * (y * z + x * w), 1 - 2 * (x * x + y * y)}}});
        for (std::size_t row = 0; row < 3; ++row)
        {
            for (std::size_t column = 0; column < 3; ++column)
                local[row][column] *= trs.scale[column];
            local[row][3] = trs.translation[row];
        }
        return local;
    }

    class NoFiles : public gltf::SideFiles
    {
        std::string Read(const std::string&, std::size_t) override
        {
            throw gltf::Error("there are no files");
        }
    };

    NoFiles files_;
    gltf::Document document_;
    gltf::AccessorReader accessors_;
    std::vector<std::size_t> parents_; // the number of nodes: none
    std::vector<Track> channels_;
};

/// How far the nodes of a document are from those of the scene, at worst.
struct PoseDifference
{
    double metres = 0.0;
    double axes = 0.0; // components of axes, whose length in the scene is `length`
    double size = 0.0; // largest coordinate
    double length = 0.0;
    std::size_t poses = 0;
};

/// At every key time of the hierarchy; `world` takes the scene's world to that of glTF.
inline PoseDifference DifferenceAtKeys(const DocumentPoses& poses, TEV2_LOADER::TEV2& scene,
                                       const PoseMatrix& world, double shift = 0.0)
{
    auto& nodes = scene.matrixHierarchy.nodes;
    std::set<float> times{scene.environment.timeRange.minimum};
    for (const TEV2_LOADER::TEV2_MATRIX_NODE& node : nodes)
    {
        for (const TEV2_LOADER::TEV2_ANIMATABLE* track :
             std::initializer_list<const TEV2_LOADER::TEV2_ANIMATABLE*>{
                 node.translation.get(), node.rotation.get(), node.scale.get()})
            if (track != nullptr)
                times.insert(track->m_times.begin(), track->m_times.end());
    }
    PoseDifference worst;
    for (const float time : times)
    {
        scene.SetTime(time);
        for (std::size_t i = 0; i < nodes.size(); ++i)
        {
            PoseMatrix own{};
            for (std::size_t row = 0; row < 3; ++row)
                for (std::size_t column = 0; column < 4; ++column)
                    own[row][column] = static_cast<double>(nodes[i].worldMatrix.m[row][column]);
            const PoseMatrix expected = world * own * poses.ExchangeOf(i);
            const PoseMatrix found = poses.WorldAt(i, static_cast<double>(time) + shift);
            ++worst.poses;
            for (std::size_t row = 0; row < 3; ++row)
                for (std::size_t column = 0; column < 4; ++column)
                {
                    double& most = column == 3 ? worst.metres : worst.axes;
                    double& extent = column == 3 ? worst.size : worst.length;
                    most = std::max(most, std::abs(found[row][column] - expected[row][column]));
                    extent = std::max(extent, std::abs(expected[row][column]));
                }
        }
    }
    return worst;
}

} // namespace tv2_tests
