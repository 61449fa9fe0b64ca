#include "tools/tv2/scene_walk.h"

#include "tools/tv2/track_view.h"

#include <memory>
#include <vector>

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
        Frame environment;
        Frame switcher;
        Frame hierarchy;
        float version = 0.0F; // as the load had it: 0 before the information record
        for (const TEV2_CHUNK_SPAN& chunk : report_.chunks)
        {
            const Frame frame{&chunk, version};
            switch (chunk.id)
            {
            case 0:
                version = report_.version;
                break;
            case 2:
                environment = frame;
                break;
            case 6:
                if (Enter(frame, "cameras[" + std::to_string(camera) + "]"))
                {
                    WalkCamera(*scene.cameras[camera], camera);
                    ++camera;
                }
                break;
            case 12:
                hierarchy = frame;
                break;
            case 22:
                switcher = frame;
                break;
            default:
                break;
            }
        }
        // of these three the last one is what the scene holds
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
        place_.offset += FileSize(node.name) + 4;
        Track("translation", node.translation);
        Track("rotation", node.rotation);
        if (version_ >= 1.15F)
        {
            Track("scale", node.scale);
        }
        if (version_ <= 1.05F)
        {
            place_.offset += 64;
        }
        place_.offset += FileSize(node.userText);
        WalkProperties(node.properties);
    }

    void WalkCamera(const TEV2_CAMERA& camera, std::size_t index)
    {
        visitor_.VisitCamera(place_, index);
        place_.offset += FileSize(camera.name) + FileSize(camera.secondText) + FileSize(camera.thirdText) + 4;
        WalkProperties(camera.properties);
        if (version_ >= 1.13F)
        {
            Track("bounds", camera.bounds);
        }
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
        if (version_ < 1.04F)
        {
            return;
        }
        const Scope scope(place_.path, "properties");
        place_.offset += 4;
        for (const TEV2_NAMED_STRING_ARRAY& array : properties.stringArrays)
        {
            place_.offset += FileSize(array.name) + 4;
            for (const TEV2_WIDE_STRING& string : array.strings)
            {
                place_.offset += FileSize(string);
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
            place_.offset += FileSize(values[i].name);
            Track("track", values[i].track);
        }
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

std::uint64_t FileSize(const TEV2_WIDE_STRING& string)
{
    return 2 + 2 * std::uint64_t{string.Text().size()};
}
