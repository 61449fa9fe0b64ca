#include "tools/tv2/scene_walk.h"

#include "tools/tv2/track_view.h"

#include <memory>
#include <vector>

namespace tv2
{

using namespace TEV2_LOADER;

namespace
{

class Walker
{
public:
    Walker(const TEV2_LOAD_REPORT& report, SceneVisitor& visitor) : report_(report), visitor_(visitor) {}

    void Walk(const TEV2& scene)
    {
        std::size_t camera = 0;
        Frame information;
        Frame environment;
        Frame switcher;
        Frame hierarchy;
        float version = 0.0F; // as the load had it: 0 before the information record
        for (const TEV2_CHUNK_SPAN& chunk : report_.chunks)
        {
            const Frame frame{&chunk, version};
            switch (chunk.id)
            {
            case kInformationChunk:
                information = frame;
                version = report_.version;
                break;
            case kEnvironmentChunk:
                environment = frame;
                break;
            case kCameraChunk:
                if (Enter(frame, "cameras[" + std::to_string(camera) + "]"))
                {
                    WalkCamera(*scene.cameras[camera], camera);
                    ++camera;
                }
                break;
            case kMatrixHierarchyChunk:
                hierarchy = frame;
                break;
            case kCameraManChunk:
                switcher = frame;
                break;
            default:
                break;
            }
        }
        // of these the last one is what the scene holds
        if (Enter(information, "information"))
        {
            place_.offset += 4; // version
            Text("creatorText", scene.information.creatorText);
            Text("infoText", scene.information.infoText);
        }
        if (Enter(environment, "environment"))
        {
            place_.offset += 8; // timeRange
            Track("environmentColour", scene.environment.environmentColour);
        }
        if (Enter(switcher, "cameraMan"))
        {
            Track("cameraIndex", scene.cameraMan.cameraIndex);
        }
        if (Enter(hierarchy, "matrixHierarchy"))
        {
            place_.offset += 4; // count
            for (std::size_t i = 0; i < scene.matrixHierarchy.nodes.size(); ++i)
            {
                const Scope scope(place_.path, "nodes", i);
                WalkNode(scene.matrixHierarchy.nodes[i], i);
            }
        }
    }

private:
    struct Frame
    {
        const TEV2_CHUNK_SPAN* chunk = nullptr;
        float version = 0.0F;
    };

    /// Lengthens the path while it lives.
    class Scope
    {
    public:
        Scope(std::string& path, const char* label) : path_(path), length_(path.size())
        {
            path_ += '.';
            path_ += label;
        }
        Scope(std::string& path, const char* label, std::size_t index) : Scope(path, label)
        {
            path_ += '[' + std::to_string(index) + ']';
        }
        ~Scope() { path_.resize(length_); }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        std::string& path_;
        std::size_t length_;
    };

    /// Goes to the body of a chunk; false when there is none.
    bool Enter(const Frame& frame, std::string path)
    {
        if (frame.chunk == nullptr)
        {
            return false;
        }
        version_ = frame.version;
        place_.path = std::move(path);
        place_.chunk_id = frame.chunk->id;
        place_.chunk_offset = frame.chunk->offset;
        place_.offset = frame.chunk->offset + 8;
        return true;
    }

    void WalkNode(const TEV2_MATRIX_NODE& node, std::size_t index)
    {
        visitor_.VisitNode(place_, index);
        Text("name", node.name);
        place_.offset += 4; // parentIndex
        Track("translation", node.translation);
        Track("rotation", node.rotation);
        if (version_ >= kSinceScale)
        {
            Track("scale", node.scale);
        }
        if (version_ <= kUntilLegacyMatrix)
        {
            place_.offset += 64;
        }
        Text("userText", node.userText);
        WalkProperties(node.properties);
    }

    void WalkCamera(const TEV2_CAMERA& camera, std::size_t index)
    {
        const RecordPlace begin = place_;
        Text("name", camera.name);
        Text("secondText", camera.secondText);
        Text("thirdText", camera.thirdText);
        place_.offset += 4; // value
        WalkProperties(camera.properties);
        if (version_ >= kSinceBounds)
        {
            Track("bounds", camera.bounds);
        }
        visitor_.VisitCamera(begin, index, place_.offset);
        place_.offset += 4; // inverseAspect
        Track("distance", camera.distance);
        Track("fieldOfView", camera.fieldOfView);
        Track("secondaryRange", camera.secondaryRange);
        Track("clipRange", camera.clipRange);
        place_.offset += 4; // count
        for (std::size_t i = 0; i < camera.effects.size(); ++i)
        {
            const Scope scope(place_.path, "effects", i);
            WalkEffect(camera.effects[i].get());
        }
    }

    void WalkEffect(const TEV2_CAMERA_EFFECT* effect)
    {
        place_.offset += effect != nullptr ? 8 : 4;
        if (const auto* blur = dynamic_cast<const TEV2_CAMERA_MOTION_BLUR_EFFECT*>(effect))
        {
            Track("shutterTime", blur->shutterTime);
        }
        else if (const auto* depth = dynamic_cast<const TEV2_CAMERA_DEPTH_OF_FIELD_EFFECT*>(effect))
        {
            Track("focusDistance", depth->focusDistance);
            Track("fNumber", depth->fNumber);
        }
    }

    void WalkProperties(const TEV2_EXTENDED_PROPERTIES& properties)
    {
        if (version_ < kSinceProperties)
        {
            return;
        }
        const Scope scope(place_.path, "properties");
        place_.offset += 4;
        for (std::size_t i = 0; i < properties.stringArrays.size(); ++i)
        {
            const TEV2_NAMED_STRING_ARRAY& array = properties.stringArrays[i];
            const Scope array_scope(place_.path, "stringArrays", i);
            Text("name", array.name);
            place_.offset += 4; // count
            for (std::size_t string = 0; string < array.strings.size(); ++string)
            {
                const Scope string_scope(place_.path, "strings", string);
                Text(array.strings[string]);
            }
        }
        WalkValues("intValues", properties.intValues);
        WalkValues("floatValues", properties.floatValues);
        WalkValues("vector3Values", properties.vector3Values);
        WalkValues("vector4Values", properties.vector4Values);
    }

    template <class Family>
    void WalkValues(const char* label, const std::vector<TEV2_NAMED_ANIMATABLE<Family>>& values)
    {
        place_.offset += 4;
        for (std::size_t i = 0; i < values.size(); ++i)
        {
            const Scope scope(place_.path, label, i);
            Text("name", values[i].name);
            Track("track", values[i].track);
        }
    }

    void Text(const char* label, const TEV2_WIDE_STRING& text)
    {
        const Scope scope(place_.path, label);
        Text(text);
    }

    void Text(const TEV2_WIDE_STRING& text)
    {
        visitor_.VisitText(place_, text);
        place_.offset += DiskSize(text);
    }

    template <class Family>
    void Track(const char* label, const std::unique_ptr<Family>& track)
    {
        if (track == nullptr)
        {
            place_.offset += 4;
            return;
        }
        const Scope scope(place_.path, label);
        visitor_.VisitTrack(place_, *track);
        place_.offset += TrackView(*track).FileSize();
    }

    const TEV2_LOAD_REPORT& report_;
    SceneVisitor& visitor_;
    float version_ = 0.0F;
    RecordPlace place_;
};

} // namespace

void WalkScene(const TEV2& scene, const TEV2_LOAD_REPORT& report, SceneVisitor& visitor)
{
    Walker(report, visitor).Walk(scene);
}

} // namespace tv2
