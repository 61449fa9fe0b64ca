#include "gltf/convert/to_gltf_geometry.h"

#include "gltf/convert/tangents.h"
#include "gltf/convert/to_gltf_tracks.h"
#include "gltf/convert/weights.h"

#include <algorithm>
#include <cmath>

namespace tev2_gltf
{

using namespace TEV2_LOADER;
using gltf::AccessorUse;

namespace
{

double LengthOf(const TEV2_VECTOR_3& v)
{
    return std::hypot(static_cast<double>(v.x), static_cast<double>(v.y), static_cast<double>(v.z));
}

double Dot(const TEV2_VECTOR_3& a, const TEV2_VECTOR_3& b)
{
    return static_cast<double>(a.x) * static_cast<double>(b.x) +
           static_cast<double>(a.y) * static_cast<double>(b.y) +
           static_cast<double>(a.z) * static_cast<double>(b.z);
}

TEV2_VECTOR_3 Cross(const TEV2_VECTOR_3& a, const TEV2_VECTOR_3& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

TEV2_VECTOR_3 Divided(const TEV2_VECTOR_3& v, double length)
{
    const auto divided = [length](float value)
    { return static_cast<float>(static_cast<double>(value) / length); };
    return {divided(v.x), divided(v.y), divided(v.z)};
}

/// Directions may be this far from length 1 and stay as they are: files hold them in few bits.
constexpr double kDirectionTolerance = 0.003;

class GeometryWriter
{
public:
    GeometryWriter(ToGltfContext& context, const TEV2_RIGID_VERTICES& vertices, Exchange own,
                   const std::string& where)
        : context_(context), vertices_(vertices), own_(own), where_(where)
    {
        geometry_.count = vertices.Count();
    }

    GltfGeometry Write(std::span<const TEV2_MORPH_TARGET> targets)
    {
        WritePositions();
        WriteNormals();
        WriteTangents();
        WriteColumns("TEXCOORD_", vertices_.uvs, 2);
        WriteColumns("COLOR_", vertices_.colours, 4);
        for (const TEV2_MORPH_TARGET& target : targets)
            WriteTarget(target);
        Report();
        return std::move(geometry_);
    }

private:
    /// Whether a column has a value for each vertex; one of another length is not used.
    template <typename Value>
    bool IsThere(const std::vector<Value>& column, const std::string& name)
    {
        if (column.empty() || column.size() == geometry_.count)
            return !column.empty();
        context_.report.Add(Code::AttributeLost, where_ + ", " + name,
                            "it does not have one value for each vertex");
        return false;
    }

    float Finite(float value)
    {
        if (std::isfinite(value))
            return value;
        ++not_finite_;
        return 0.0f;
    }

    void Append(std::vector<float>& numbers, const TEV2_VECTOR_3& vector)
    {
        for (const float value : {vector.x, vector.y, vector.z})
            numbers.push_back(Finite(value));
    }

    std::vector<float> Room(std::size_t width)
    {
        context_.out.CheckRoom(geometry_.count * width * sizeof(float));
        std::vector<float> numbers;
        numbers.reserve(geometry_.count * width);
        return numbers;
    }

    void WritePositions()
    {
        std::vector<float> numbers = Room(3);
        for (const TEV2_VECTOR_3& position : vertices_.positions)
            Append(numbers, Exchanged(position, own_));
        geometry_.attributes["POSITION"] = context_.out.AddFloats(numbers, 3, AccessorUse::Position);
    }

    /// Of length 1; `otherwise` where it has no length.
    TEV2_VECTOR_3 Direction(const TEV2_VECTOR_3& from, const TEV2_VECTOR_3& otherwise)
    {
        const double length = LengthOf(from);
        if (std::abs(length - 1.0) <= kDirectionTolerance)
            return from;
        ++directions_;
        return length > 0.0 && std::isfinite(length) ? Divided(from, length) : otherwise;
    }

    void WriteNormals()
    {
        if (!IsThere(vertices_.normals, "normals"))
            return;
        std::vector<float> numbers = Room(3);
        normals_.reserve(geometry_.count);
        for (const TEV2_VECTOR_3& normal : vertices_.normals)
        {
            normals_.push_back(Direction(Exchanged(normal, own_), {0.0f, 1.0f, 0.0f}));
            Append(numbers, normals_.back());
        }
        geometry_.attributes["NORMAL"] = context_.out.AddFloats(numbers, 3, AccessorUse::Vertex);
    }

    void WriteTangents()
    {
        if (!IsThere(vertices_.frames, "frames"))
            return;
        if (normals_.empty())
        {
            context_.report.Add(Code::AttributeLost, where_ + ", frames",
                                "glTF has no tangents without normals");
            return;
        }
        constexpr double kRightAngles = 0.999; // cosine between a binormal and the one that glTF forms
        std::vector<float> numbers = Room(4);
        for (std::size_t i = 0; i < geometry_.count; ++i)
        {
            const TEV2_VECTOR_3 tangent =
                Direction(Exchanged(vertices_.frames[i].tangent, own_), AnyTangent(normals_[i]));
            const TEV2_VECTOR_3 binormal = Exchanged(vertices_.frames[i].binormal, own_);
            const double along = Dot(Cross(normals_[i], tangent), binormal);
            if (!(std::abs(along) >= kRightAngles * LengthOf(binormal)) ||
                std::abs(LengthOf(binormal) - 1.0) > kDirectionTolerance)
                ++directions_;
            Append(numbers, tangent);
            numbers.push_back(along < 0.0 ? -1.0f : 1.0f);
        }
        geometry_.attributes["TANGENT"] = context_.out.AddFloats(numbers, 4, AccessorUse::Vertex);
    }

    template <typename Value>
    void WriteColumns(const std::string& name, const std::vector<std::vector<Value>>& columns,
                      std::size_t width)
    {
        const bool is_colour = width == 4;
        std::size_t set = 0;
        for (const std::vector<Value>& column : columns)
        {
            if (!IsThere(column, name))
                continue;
            std::vector<float> numbers = Room(width);
            for (const Value& value : column)
                std::apply([&](const auto&... component)
                           { (numbers.push_back(is_colour ? Fraction(component) : Finite(component)), ...); },
                           value.Components());
            geometry_.attributes[name + std::to_string(set++)] =
                context_.out.AddFloats(numbers, width, AccessorUse::Vertex);
        }
        if (!is_colour)
            geometry_.uv_sets = set;
    }

    float Fraction(float value)
    {
        const float finite = Finite(value);
        const float clamped = std::clamp(finite, 0.0f, 1.0f);
        clamped_ += clamped != finite ? 1 : 0;
        return clamped;
    }

    void WriteTarget(const TEV2_MORPH_TARGET& target)
    {
        const TEV2_TARGET_VERTICES& offsets = target.offsets;
        std::vector<std::uint32_t> used; // places in the target's columns
        for (std::uint32_t i = 0; i < offsets.vertices.size() && i < offsets.positions.size(); ++i)
        {
            const bool ascends = used.empty() || offsets.vertices[i] > offsets.vertices[used.back()];
            if (ascends && offsets.vertices[i] < geometry_.count)
                used.push_back(i);
        }
        Json json = {{"POSITION", Sparse(offsets.vertices, offsets.positions, used, AccessorUse::Position)}};
        const auto add = [&](const char* name, const std::vector<TEV2_VECTOR_3>& column)
        {
            if (column.empty())
                return;
            if (column.size() != offsets.vertices.size() || !geometry_.attributes.contains(name))
                context_.report.Add(Code::AttributeLost,
                                    where_ + ", target \"" + Name(target) + "\", " + name,
                                    "the mesh itself has none");
            else
                json[name] = Sparse(offsets.vertices, column, used, AccessorUse::Vertex);
        };
        add("NORMAL", offsets.normals);
        add("TANGENT", offsets.tangents);
        geometry_.targets.push_back(std::move(json));
    }

    /// At least one element: readers take a sparse accessor without one amiss.
    std::size_t Sparse(const std::vector<std::uint32_t>& vertices, const std::vector<TEV2_VECTOR_3>& offsets,
                       const std::vector<std::uint32_t>& used, AccessorUse use)
    {
        std::vector<std::uint32_t> places;
        std::vector<float> values;
        for (const std::uint32_t entry : used)
        {
            places.push_back(vertices[entry]);
            Append(values, Exchanged(offsets[entry], own_));
        }
        if (places.empty())
        {
            places = {0};
            values = {0.0f, 0.0f, 0.0f};
        }
        return context_.out.AddSparse(geometry_.count, places, values, use);
    }

    void Report()
    {
        if (not_finite_ > 0)
            context_.report.Add(Code::ValueDropped, where_,
                                "a number of a vertex that is not finite became 0", not_finite_);
        if (directions_ > 0)
            context_.report.Add(Code::DirectionsChanged, where_,
                                "a normal, tangent or binormal was not of length 1 or not at right angles",
                                directions_);
        if (clamped_ > 0)
            context_.report.Add(Code::ValueClamped, where_, "a colour is not between 0 and 1", clamped_);
    }

    ToGltfContext& context_;
    const TEV2_RIGID_VERTICES& vertices_;
    Exchange own_;
    const std::string& where_;
    GltfGeometry geometry_;
    std::vector<TEV2_VECTOR_3> normals_;
    std::size_t not_finite_ = 0;
    std::size_t directions_ = 0;
    std::size_t clamped_ = 0;
};

/// Makes the entries of one vertex those of a glTF vertex: a joint once, and 0 without weight. Whether weights that
/// count are others afterwards.
bool MakeEntries(std::span<std::uint16_t> joints, std::span<float> weights)
{
    for (std::size_t i = 1; i < weights.size(); ++i)
    {
        for (std::size_t earlier = 0; earlier < i && weights[i] > 0.0f; ++earlier)
        {
            if (joints[earlier] != joints[i] || !(weights[earlier] > 0.0f))
                continue;
            weights[earlier] += weights[i];
            weights[i] = 0.0f;
        }
    }
    const bool changed = NormaliseWeights(weights);
    for (std::size_t i = 0; i < weights.size(); ++i)
        if (!(weights[i] > 0.0f))
            joints[i] = 0;
    return changed;
}

} // namespace

GltfGeometry WriteGeometry(ToGltfContext& context, const TEV2_RIGID_VERTICES& vertices,
                           std::span<const TEV2_MORPH_TARGET> targets, Exchange own, const std::string& where)
{
    return GeometryWriter(context, vertices, own, where).Write(targets);
}

void WriteWeights(ToGltfContext& context, const TEV2_SKIN& skin, GltfGeometry& geometry,
                  const std::string& where)
{
    constexpr std::size_t kSet = 4;
    const std::size_t influences = skin.influences;
    const std::size_t sets = std::max<std::size_t>(1, (influences + kSet - 1) / kSet);
    context.out.CheckRoom(geometry.count * sets * kSet * (sizeof(float) + sizeof(std::uint16_t)));
    std::vector<std::vector<std::uint16_t>> joints(sets, std::vector<std::uint16_t>(geometry.count * kSet));
    std::vector<std::vector<float>> weights(sets, std::vector<float>(geometry.count * kSet));
    std::vector<std::uint16_t> own_joints(sets * kSet);
    std::vector<float> own_weights(sets * kSet);
    std::size_t changed = 0;
    for (std::size_t vertex = 0; vertex < geometry.count; ++vertex)
    {
        std::fill(own_joints.begin(), own_joints.end(), std::uint16_t{0});
        std::fill(own_weights.begin(), own_weights.end(), 0.0f);
        for (std::size_t i = 0; i < influences; ++i)
        {
            const std::size_t entry = vertex * influences + i;
            if (entry >= skin.weights.size() || entry >= skin.boneIndices.size() ||
                skin.boneIndices[entry] >= skin.bones.size())
                continue;
            own_joints[i] = static_cast<std::uint16_t>(skin.boneIndices[entry]);
            own_weights[i] = skin.weights[entry];
        }
        changed += MakeEntries(own_joints, own_weights) ? 1 : 0;
        for (std::size_t i = 0; i < sets * kSet; ++i)
        {
            joints[i / kSet][vertex * kSet + i % kSet] = own_joints[i];
            weights[i / kSet][vertex * kSet + i % kSet] = own_weights[i];
        }
    }
    for (std::size_t set = 0; set < sets; ++set)
    {
        geometry.attributes["JOINTS_" + std::to_string(set)] = context.out.AddJoints(joints[set]);
        geometry.attributes["WEIGHTS_" + std::to_string(set)] =
            context.out.AddFloats(weights[set], kSet, AccessorUse::Vertex);
    }
    if (changed > 0)
        context.report.Add(
            Code::WeightsNormalised, where,
            "the weights of a vertex are negative or do not sum to 1 and were divided by their sum", changed);
}

} // namespace tev2_gltf
