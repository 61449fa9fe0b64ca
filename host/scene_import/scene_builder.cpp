#include "host/scene_import/scene_builder.h"

#include "host/scene_import/frame_time.h"
#include "host/scene_import/keyed_transform.h"
#include "host/scene_import/unique_names.h"

#include <mobu_host/scene.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <memory>
#include <numbers>
#include <utility>

namespace mobu_host
{
namespace
{

constexpr double kDegreesPerRadian = 180.0 / std::numbers::pi;
constexpr double kLongestTake = 1.0e6; // seconds; far below where ticks run out
constexpr double kTicksWhereUnstated = 25.0;

bool IsFinite(const aiVector3D& v)
{
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

bool IsFinite(const aiQuaternion& q)
{
    return std::isfinite(q.w) && std::isfinite(q.x) && std::isfinite(q.y) && std::isfinite(q.z);
}

Vector3 Widen(const aiVector3D& v)
{
    return static_cast<Vector3>(v);
}

Quaternion Widen(const aiQuaternion& q)
{
    Quaternion wide(static_cast<double>(q.w), static_cast<double>(q.x), static_cast<double>(q.y),
                    static_cast<double>(q.z));
    return wide.Normalize();
}

Matrix Widen(const aiMatrix4x4& m)
{
    return static_cast<Matrix>(m);
}

// The SDK lays matrices out the other way round.
FBMatrix ToSdk(const Matrix& m)
{
    const double rows[16] = {m.a1, m.b1, m.c1, m.d1, m.a2, m.b2, m.c2, m.d2,
                             m.a3, m.b3, m.c3, m.d3, m.a4, m.b4, m.c4, m.d4};
    return FBMatrix(rows);
}

// A camera of the library looks along `look`; turned by this its own +X does, and its own +Y is up.
Matrix CameraTurn(const aiCamera& camera, double centimetres)
{
    const Vector3 look = Widen(camera.mLookAt).NormalizeSafe();
    const Vector3 right = (look ^ Widen(camera.mUp)).NormalizeSafe();
    const Vector3 up = right ^ look;
    const Vector3 at = Widen(camera.mPosition) * centimetres;
    return Matrix(look.x, up.x, right.x, at.x, //
                  look.y, up.y, right.y, at.y, //
                  look.z, up.z, right.z, at.z, //
                  0.0, 0.0, 0.0, 1.0);
}

// Reverses the axis that stands most against its own direction in `matrix`.
Matrix ReverseOneAxis(const Matrix& matrix)
{
    const double along[3] = {matrix.a1 / std::hypot(matrix.a1, matrix.b1, matrix.c1),
                             matrix.b2 / std::hypot(matrix.a2, matrix.b2, matrix.c2),
                             matrix.c3 / std::hypot(matrix.a3, matrix.b3, matrix.c3)};
    Matrix reverse;
    const auto axis = static_cast<unsigned>(std::min_element(along, along + 3) - along);
    reverse[axis][axis] = -1.0;
    return reverse;
}

bool CanBeHeld(const aiNode& node, std::string& cause)
{
    const aiMatrix4x4& m = node.mTransformation;
    for (unsigned row = 0; row < 4; ++row)
    {
        for (unsigned column = 0; column < 4; ++column)
        {
            if (!std::isfinite(m[row][column]))
            {
                cause = std::string("the place of \"") + node.mName.C_Str() + "\" is not a number";
                return false;
            }
        }
    }
    for (unsigned i = 0; i < node.mNumChildren; ++i)
    {
        if (!CanBeHeld(*node.mChildren[i], cause))
            return false;
    }
    return true;
}

template <typename Key>
bool CanBeHeld(const Key* keys, unsigned count, double seconds_per_tick)
{
    return std::all_of(keys, keys + count,
                       [seconds_per_tick](const Key& key)
                       {
                           const double seconds = key.mTime * seconds_per_tick;
                           return std::abs(seconds) <= kLongestTake && IsFinite(key.mValue);
                       });
}

class SceneBuilder
{
public:
    SceneBuilder(const aiScene& scene, const SceneReading& reading, ImportNotes& notes)
        : scene_(scene), reading_(reading), notes_(notes)
    {
    }

    bool Check(std::string& cause) const
    {
        if (!CanBeHeld(*scene_.mRootNode, cause))
            return false;
        for (unsigned a = 0; a < scene_.mNumAnimations; ++a)
        {
            const aiAnimation& animation = *scene_.mAnimations[a];
            const double tick = SecondsPerTick(animation);
            for (unsigned c = 0; c < animation.mNumChannels; ++c)
            {
                const aiNodeAnim& channel = *animation.mChannels[c];
                if (!CanBeHeld(channel.mPositionKeys, channel.mNumPositionKeys, tick) ||
                    !CanBeHeld(channel.mRotationKeys, channel.mNumRotationKeys, tick) ||
                    !CanBeHeld(channel.mScalingKeys, channel.mNumScalingKeys, tick))
                {
                    cause = std::string("a key of \"") + channel.mNodeName.C_Str() +
                            "\" is not a number or lies out of all time";
                    return false;
                }
            }
        }
        return true;
    }

    void Build()
    {
        NewScene();
        SetTransportRate(reading_.frames_per_second);
        for (unsigned i = 0; i < scene_.mNumCameras; ++i)
        {
            if (!cameras_.emplace(scene_.mCameras[i]->mName.C_Str(), scene_.mCameras[i]).second)
                notes_.Add("further cameras on a node that is a camera already are passed over");
        }

        FBModel* root = Scene().RootModel;
        FreeLabel(static_cast<const char*>(root->LongName), "");
        LabelNodes(*scene_.mRootNode, false);
        LabelNodes(*scene_.mRootNode, true);
        AddProperties(*root, reading_.scene_properties);
        if (reading_.root_is_a_node)
        {
            AddNode(*scene_.mRootNode, nullptr, reading_.centimetres, Matrix());
        }
        else
        {
            // The unit goes into the lengths, the up axis in front of what stands on top: the root stays
            // where it is.
            Vector3 scale, place;
            Quaternion turn;
            Widen(scene_.mRootNode->mTransformation).Decompose(scale, turn, place);
            const double unit = scale.x != 0.0 ? std::abs(scale.x) : 1.0;
            const double centimetres = reading_.centimetres * unit;
            const Matrix before(Vector3(scale.x / unit, scale.y / unit, scale.z / unit), turn,
                                place * reading_.centimetres);
            for (unsigned i = 0; i < scene_.mRootNode->mNumChildren; ++i)
                AddNode(*scene_.mRootNode->mChildren[i], nullptr, centimetres, before);
        }
        AddTakes();
        Scene().Evaluate();
    }

private:
    struct Place
    {
        FBModel* model = nullptr;
        double centimetres = 1.0;
        Matrix before;
        Matrix after;
        Vector3 translation, scale; // at rest, centimetres
        Quaternion rotation;
    };

    double SecondsPerTick(const aiAnimation& animation) const
    {
        if (reading_.seconds_per_tick > 0.0)
            return reading_.seconds_per_tick;
        return 1.0 / (animation.mTicksPerSecond > 0.0 ? animation.mTicksPerSecond : kTicksWhereUnstated);
    }

    std::string FreeLabel(std::string label, const char* where_nameless)
    {
        return labels_.Make(std::move(label), where_nameless, notes_);
    }

    // Where a joint and the mesh on it share a name, the joint keeps it.
    void LabelNodes(const aiNode& node, bool those_with_geometry)
    {
        const bool is_model = reading_.root_is_a_node || &node != scene_.mRootNode;
        const SourceNode source = reading_.describe(node);
        if (is_model && source.has_geometry == those_with_geometry)
            node_labels_.emplace(&node, FreeLabel(source.name, "Node"));
        for (unsigned i = 0; i < node.mNumChildren; ++i)
            LabelNodes(*node.mChildren[i], those_with_geometry);
    }

    void AddNode(const aiNode& node, FBModel* parent, double centimetres, const Matrix& before)
    {
        const SourceNode source = reading_.describe(node);
        const std::string& label = node_labels_.at(&node);
        const auto found = cameras_.find(node.mName.C_Str());
        const aiCamera* camera = found == cameras_.end() ? nullptr : found->second;

        Place place;
        place.centimetres = centimetres;
        place.before = before;
        Matrix local = Widen(node.mTransformation);
        local.a4 *= centimetres;
        local.b4 *= centimetres;
        local.c4 *= centimetres;
        local.Decompose(place.scale, place.rotation, place.translation);

        if (source.lens)
        {
            aiCamera straight; // along -Z with +Y up, as the library and the formats have it
            straight.mLookAt = aiVector3D(0.0f, 0.0f, -1.0f);
            place.after = CameraTurn(camera ? *camera : straight, centimetres);
            place.model = AddLens(*AddCamera(label, parent), *source.lens, centimetres);
        }
        else
        {
            place.model = AddModel(label, parent);
        }
        const Matrix placed = place.before * local * place.after;
        if (placed.Determinant() < 0.0)
        {
            // A camera keeps looking where it looks, and its up: the third axis goes.
            Matrix reverse = ReverseOneAxis(placed);
            if (source.lens)
                reverse = Matrix(Vector3(1.0, 1.0, -1.0), Quaternion(), Vector3());
            place.after = place.after * reverse;
            if (before.Determinant() > 0.0)
                notes_.Add(
                    "mirrored nodes: one of their axes is reversed, what hangs on them stays in place");
        }
        Matrix before_children = place.after;
        before_children.Inverse();
        place.model->SetMatrix(ToSdk(place.before * local * place.after), kModelTransformation, false);
        AddProperties(*place.model, source.properties);

        FBModel* const model = place.model;
        places_[node.mName.C_Str()].push_back(place);
        for (unsigned i = 0; i < node.mNumChildren; ++i)
            AddNode(*node.mChildren[i], model, centimetres, before_children);
    }

    FBCamera* AddLens(FBCamera& camera, const SourceLens& lens, double centimetres)
    {
        camera.Type = lens.orthographic ? kFBCameraTypeOrthogonal : kFBCameraTypePerspective;
        camera.ApertureMode = kFBApertureHorizontal;
        if (lens.aspect > 0.0)
            camera.FilmAspectRatio = lens.aspect;
        if (lens.horizontal_angle > 0.0)
            camera.FieldOfView = lens.horizontal_angle * kDegreesPerRadian;
        if (lens.near_plane > 0.0)
            camera.NearPlaneDistance = lens.near_plane * centimetres;
        if (lens.far_plane > 0.0)
            camera.FarPlaneDistance = lens.far_plane * centimetres;
        if (lens.orthographic)
            notes_.Add("cameras without perspective have no angle of view of their own");
        return &camera;
    }

    static void AddProperty(FBModel& model, const std::string& name, FBPropertyType type, void* value)
    {
        if (FBProperty* property = AddUserProperty(model, name, type, true))
            property->SetData(value);
    }

    static void AddProperties(FBModel& model, const std::vector<SourceProperty>& properties)
    {
        for (const SourceProperty& property : properties)
        {
            if (const auto* truth = std::get_if<bool>(&property.value))
            {
                bool value = *truth;
                AddProperty(model, property.name, kFBPT_bool, &value);
            }
            else if (const auto* whole = std::get_if<int>(&property.value))
            {
                int value = *whole;
                AddProperty(model, property.name, kFBPT_int, &value);
            }
            else if (const auto* number = std::get_if<double>(&property.value))
            {
                double value = *number;
                AddProperty(model, property.name, kFBPT_double, &value);
            }
            else if (const auto* text = std::get_if<std::string>(&property.value))
            {
                const char* value = text->c_str();
                AddProperty(model, property.name, kFBPT_charptr, &value);
            }
            else if (const auto* three = std::get_if<std::array<double, 3>>(&property.value))
            {
                FBVector3d value(three->data());
                AddProperty(model, property.name, kFBPT_Vector3D, &value);
            }
            else if (const auto* four = std::get_if<std::array<double, 4>>(&property.value))
            {
                FBColorAndAlpha value(four->data());
                AddProperty(model, property.name, kFBPT_ColorRGBA, &value);
            }
        }
    }

    static FBTime TakeEnd(double seconds)
    {
        FBTime end;
        end.SetSecondDouble(seconds);
        return OnFrame(end, FBPlayerControl::TheOne().GetTransportFpsValue());
    }

    void AddTakes()
    {
        if (scene_.mNumAnimations == 0)
            return; // the fresh scene's "Take 001" of 0 to 0 s
        ClearTakes();
        labels_ = UniqueNames();
        for (unsigned a = 0; a < scene_.mNumAnimations; ++a)
        {
            char nameless[32];
            std::snprintf(nameless, sizeof nameless, "Take %03u", a + 1);
            AddTakeOf(a, FreeLabel(TakeName(reading_.take_name(a), notes_), nameless));
        }
    }

    void AddTakeOf(unsigned index, const std::string& name)
    {
        const aiAnimation& animation = *scene_.mAnimations[index];
        const double tick = SecondsPerTick(animation);
        double last = 0.0;
        for (unsigned c = 0; c < animation.mNumChannels; ++c)
        {
            const aiNodeAnim& channel = *animation.mChannels[c];
            if (channel.mNumPositionKeys > 0)
                last = std::max(last, channel.mPositionKeys[channel.mNumPositionKeys - 1].mTime * tick);
            if (channel.mNumRotationKeys > 0)
                last = std::max(last, channel.mRotationKeys[channel.mNumRotationKeys - 1].mTime * tick);
            if (channel.mNumScalingKeys > 0)
                last = std::max(last, channel.mScalingKeys[channel.mNumScalingKeys - 1].mTime * tick);
        }
        FBTake& take = *AddTake(name, FBTime(0), TakeEnd(last));

        // Channels name their node. Where several nodes share a name, channels come in the order of the
        // nodes.
        std::map<std::string, std::size_t> channels_seen;
        for (unsigned c = 0; c < animation.mNumChannels; ++c)
        {
            const aiNodeAnim& channel = *animation.mChannels[c];
            const std::string node = channel.mNodeName.C_Str();
            const std::size_t turn = channels_seen[node]++;
            const auto found = places_.find(node);
            if (found == places_.end() || turn >= found->second.size())
                notes_.Add("animation channels of nodes that are not in the scene are passed over");
            else
                Animate(found->second[turn], take, channel, tick, reading_.steps(index, node));
        }
    }

    static void Animate(const Place& place, FBTake& take, const aiNodeAnim& channel, double tick,
                        const SceneReading::Steps& steps)
    {
        const auto transform = std::make_shared<KeyedTransform>();
        transform->before = place.before;
        transform->after = place.after;
        transform->translation.Hold(steps.translation);
        transform->rotation.Hold(steps.rotation);
        transform->scale.Hold(steps.scale);
        for (unsigned i = 0; i < channel.mNumPositionKeys; ++i)
            transform->translation.Append(channel.mPositionKeys[i].mTime * tick,
                                          Widen(channel.mPositionKeys[i].mValue) * place.centimetres);
        for (unsigned i = 0; i < channel.mNumRotationKeys; ++i)
            transform->rotation.Append(channel.mRotationKeys[i].mTime * tick,
                                       Widen(channel.mRotationKeys[i].mValue));
        for (unsigned i = 0; i < channel.mNumScalingKeys; ++i)
            transform->scale.Append(channel.mScalingKeys[i].mTime * tick,
                                    Widen(channel.mScalingKeys[i].mValue));

        if (transform->translation.Empty())
            transform->translation.Append(0.0, place.translation);
        if (transform->rotation.Empty())
            transform->rotation.Append(0.0, place.rotation);
        if (transform->scale.Empty())
            transform->scale.Append(0.0, place.scale);
        AnimateLocalMatrix(*place.model, take,
                           [transform](double seconds) { return ToSdk(transform->At(seconds)); });
    }

    const aiScene& scene_;
    const SceneReading& reading_;
    ImportNotes& notes_;
    std::map<std::string, const aiCamera*> cameras_;   // by name of their node
    std::map<std::string, std::vector<Place>> places_; // by name of the node, in the order of the tree
    std::map<const aiNode*, std::string> node_labels_;
    UniqueNames labels_;
};

} // namespace

bool BuildScene(const aiScene& scene, const SceneReading& reading, ImportNotes& notes, std::string& cause)
{
    SceneBuilder builder(scene, reading, notes);
    if (!builder.Check(cause))
        return false;
    builder.Build();
    return true;
}

} // namespace mobu_host
