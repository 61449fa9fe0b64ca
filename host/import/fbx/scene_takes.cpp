#include "host/import/fbx/scene_takes.h"

#include "host/import/base/exportable_number.h"
#include "host/import/base/parse_error.h"
#include "host/import/base/scene_description.h"
#include "host/import/base/unique_names.h"
#include "host/import/fbx/curve_reader.h"
#include "host/import/fbx/take_motion.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

namespace mobu_host::fbx
{
namespace
{

struct Span
{
    std::int64_t start = 0;
    std::int64_t stop = 0;
};

// Ticks of the host for ticks of the file.
std::int64_t HostTicks(std::int64_t ticks, const Record& take)
{
    const double seconds = static_cast<double>(ticks) / take.Tree().TicksPerSecond();
    if (!(std::abs(seconds) <= kLongestTime))
        throw ParseError(take.Offset(),
                         "a take is outside the supported time range (a million seconds around 0)");
    return take.Tree().TicksPerSecond() == kTicksPerSecond ? ticks : std::llround(seconds * kTicksPerSecond);
}

// Of the record of that name below Takes; those of 7.x repeat there what the stacks say.
std::optional<Span> SpanOf(const Record& take)
{
    for (const char* const name : {"LocalTime", "ReferenceTime"})
    {
        const Record time = take.Child(name);
        const auto start = time.ValueAt(0).Whole();
        const auto stop = time.ValueAt(1).Whole();
        if (start && stop)
            return Span{HostTicks(*start, take), HostTicks(*stop, take)};
    }
    return std::nullopt;
}

// Around all keys that were seen.
class KeySpan
{
public:
    void Enclose(const Curve& curve)
    {
        if (curve.Empty())
            return;
        first_ = std::min(first_, curve.FirstTime());
        last_ = std::max(last_, curve.LastTime());
    }
    Span Get() const
    {
        if (last_ < first_)
            return {};
        return {std::llround(first_ * kTicksPerSecond), std::llround(last_ * kTicksPerSecond)};
    }

private:
    double first_ = std::numeric_limits<double>::infinity();
    double last_ = -std::numeric_limits<double>::infinity();
};

std::size_t ComponentOf(std::string_view channel)
{
    switch (channel.empty() ? ' ' : channel.back())
    {
    case 'Y':
        return 1;
    case 'Z':
        return 2;
    case 'W':
        return 3;
    default:
        return 0;
    }
}

// "d|X" and its like; the only channel of a scalar goes by the property's name.
std::size_t ComponentOfChannel(std::string_view channel)
{
    return channel.size() == 3 && channel.starts_with("d|") ? ComponentOf(channel) : 0;
}

class TakeReader
{
public:
    TakeReader(const Document& document, const ModelList& models, SceneData& data, ImportNotes& notes)
        : document_(document),
          scene_(data.scene),
          transforms_(*data.transforms),
          notes_(notes),
          motion_(document, models, data, notes)
    {
    }

    void Read()
    {
        if (document_.IsNamed())
            ReadTakeRecords();
        else
            ReadStacks();
        ChooseCurrent();
    }

private:
    void AddTake(std::string_view name, const Span& span)
    {
        TakeDescription& take = scene_.takes.emplace_back();
        take.name = TakeName(PlainText(name, document_.Tree()), notes_);
        take.start = static_cast<double>(span.start) / kTicksPerSecond;
        take.stop = static_cast<double>(span.stop) / kTicksPerSecond;
        transforms_.takes.emplace_back();
        raw_names_.push_back(name);
    }

    // The first of that name.
    Record TakeRecord(std::string_view name)
    {
        if (take_records_.empty())
            for (const Record& take : document_.Tree().Root().Child("Takes").Children())
                if (take.Name() == "Take")
                    take_records_.emplace(take.TextAt(0), take);
        const auto found = take_records_.find(name);
        return found == take_records_.end() ? Record() : found->second;
    }

    // The take that was open when the file was saved.
    void ChooseCurrent()
    {
        const std::string_view name = document_.Tree().Root().Child("Takes").Child("Current").TextAt(0);
        for (std::size_t i = 0; i < raw_names_.size(); ++i)
            if (raw_names_[i] == name)
            {
                scene_.current_take = i;
                return;
            }
    }

    // ---- 7.x: stacks, layers and curve nodes, all of them objects

    void ReadStacks()
    {
        for (ObjectIndex i = 1; i < document_.Count(); ++i)
            if (document_.At(i).kind == "AnimationStack")
                ReadStack(i);
    }

    void ReadStack(ObjectIndex index)
    {
        const Object& stack = document_.At(index);
        KeySpan keys;
        ReadLayers(index, keys);
        const PropertyRows rows(stack.record);
        const auto time = [&](const char* name) -> std::optional<std::int64_t>
        {
            const PropertyRow* const row = rows.Find(name);
            const auto ticks = row ? row->ValueAt(0).Whole() : std::nullopt;
            return ticks ? std::optional(HostTicks(*ticks, stack.record)) : std::nullopt;
        };
        std::optional<Span> span;
        const auto start = time("LocalStart");
        const auto stop = time("LocalStop");
        if (start || stop)
            span = Span{start.value_or(0), stop.value_or(0)};
        else
            span = SpanOf(TakeRecord(stack.name));
        AddTake(stack.name, span ? *span : keys.Get());
        motion_.Finish(scene_.takes.size() - 1);
    }

    struct FoundLayer
    {
        ObjectIndex object;
        std::shared_ptr<Layer> layer;
        bool muted, solo;
    };

    FoundLayer ReadLayer(ObjectIndex index, bool base)
    {
        const PropertyRows own(document_.At(index).record);
        const PropertyView view{&own, document_.Template("FbxAnimLayer")};
        FoundLayer found{index, std::make_shared<Layer>(), view.Truth("Mute", false),
                         view.Truth("Solo", false)};
        found.layer->base = base;
        const int mode = view.Choice("BlendMode", 0);
        found.layer->mode = mode == 1   ? Layer::Mode::Covers
                            : mode == 2 ? Layer::Mode::Mixes
                                        : Layer::Mode::Adds;
        found.layer->turns_by_axis = view.Choice("RotationAccumulationMode", 0) == 1;
        found.layer->scales_add = view.Choice("ScaleAccumulationMode", 0) == 1;
        found.layer->weight = std::clamp(view.Number("Weight", 100.0) / 100.0, 0.0, 1.0);
        return found;
    }

    void ReadLayers(ObjectIndex stack, KeySpan& keys)
    {
        std::vector<FoundLayer> layers;
        for (const Connection& connection : document_.Into(stack))
            if (document_.At(connection.source).kind == "AnimationLayer")
                layers.push_back(ReadLayer(connection.source, layers.empty()));
        const bool solo =
            std::any_of(layers.begin(), layers.end(), [](const FoundLayer& found) { return found.solo; });
        for (const FoundLayer& found : layers)
        {
            if (found.muted || (solo && !found.solo))
            {
                notes_.Add({"muted animation layer is left out", "muted animation layers are left out"},
                           PlainText(document_.At(found.object).name, document_.Tree()));
                continue;
            }
            ReadLayerWeight(found);
            for (const Connection& connection : document_.Into(found.object))
                if (connection.property.empty() &&
                    document_.At(connection.source).kind == "AnimationCurveNode")
                    ReadCurveNode(connection.source, found, keys);
        }
    }

    void ReadLayerWeight(const FoundLayer& found)
    {
        for (const Connection& connection : document_.Into(found.object))
            if (connection.property == "Weight")
                for (const Connection& channel : document_.Into(connection.source))
                    if (document_.At(channel.source).kind == "AnimationCurve" && !found.layer->weight_curve)
                        found.layer->weight_curve = CurveOf(channel.source, connection.source);
    }

    // Null for one without keys. Read once, however many nodes it drives.
    CurvePointer CurveOf(ObjectIndex index, ObjectIndex node)
    {
        const auto [place, added] = curves_.try_emplace(index);
        if (!added)
            return place->second;
        try
        {
            Curve curve = reader_.ReadArrays(document_.At(index).record);
            if (!curve.Empty())
                place->second = std::make_shared<const Curve>(std::move(curve));
        }
        catch (const ParseError& error)
        {
            throw ParseError(MovedBy(node) + error.what());
        }
        return place->second;
    }

    // "Hips.Lcl Rotation: ", the first property that a curve node moves; nothing where it moves none.
    std::string MovedBy(ObjectIndex node) const
    {
        for (const Connection& target : document_.From(node))
            if (!target.property.empty())
                return motion_.FullName(target.target, target.property) + ": ";
        return {};
    }

    void ReadCurveNode(ObjectIndex index, const FoundLayer& found, KeySpan& keys)
    {
        if (!read_nodes_.insert(index).second)
        {
            notes_.Add({"curve node on several layers counts for the first",
                        "curve nodes on several layers count for the first"},
                       PlainText(document_.At(index).name, document_.Tree()));
            return;
        }
        LayerPart channels;
        channels.layer = found.layer;
        for (const Connection& channel : document_.Into(index))
        {
            if (document_.At(channel.source).kind != "AnimationCurve")
                continue;
            const CurvePointer curve = CurveOf(channel.source, index);
            channels.curves[ComponentOfChannel(channel.property)] = curve;
            if (curve)
                keys.Enclose(*curve);
        }
        std::array<std::optional<double>, 4> constants;
        const PropertyRows rows(document_.At(index).record);
        for (const PropertyRow& row : rows.All())
            if (row.name.starts_with("d|"))
                constants[ComponentOfChannel(row.name)] = FiniteNumber(row, 0, 0.0);

        for (const Connection& target : document_.From(index))
        {
            if (target.property.empty() || target.target == found.object)
                continue;
            LayerPart part = channels;
            part.constants = found.layer->base ? motion_.RestOf(target.target, target.property)
                                               : Neutral(target.property, *found.layer);
            for (std::size_t i = 0; i < constants.size(); ++i)
                part.constants[i] = constants[i].value_or(part.constants[i]);
            motion_.Add(target.target, target.property, std::move(part));
        }
    }

    static Components Neutral(std::string_view property, const Layer& layer)
    {
        const double neutral = property == "Lcl Scaling" && !layer.scales_add ? 1.0 : 0.0;
        return {neutral, neutral, neutral, neutral};
    }

    // ---- 6.x: one record for each take, with a tree of channels for each model

    void ReadTakeRecords()
    {
        for (const Record& take : document_.Tree().Root().Child("Takes").Children())
        {
            if (take.Name() != "Take")
                continue;
            KeySpan keys;
            const auto layer = std::make_shared<Layer>();
            layer->base = true;
            for (const Record& model : take.Children())
                if (const ObjectIndex object = model.Name() == "Model" ? document_.Named(model.TextAt(0)) : 0)
                    ReadChannels(model, object, layer, keys);
            const auto span = SpanOf(take);
            AddTake(take.TextAt(0), span ? *span : keys.Get());
            motion_.Finish(scene_.takes.size() - 1);
        }
    }

    void ReadChannels(const Record& model, ObjectIndex object, const std::shared_ptr<Layer>& layer,
                      KeySpan& keys)
    {
        for (const Record& channel : model.Children())
        {
            if (channel.Name() != "Channel")
                continue;
            if (channel.TextAt(0) != "Transform")
            {
                ReadChannel(channel, object, channel.TextAt(0), layer, keys);
                continue;
            }
            for (const Record& part : channel.Children())
            {
                if (part.Name() != "Channel")
                    continue;
                const std::string_view name = part.TextAt(0);
                const std::string_view property = name == "T"   ? "Lcl Translation"
                                                  : name == "R" ? "Lcl Rotation"
                                                  : name == "S" ? "Lcl Scaling"
                                                                : std::string_view();
                if (!property.empty())
                    ReadChannel(part, object, property, layer, keys);
            }
        }
    }

    // Has no keys, and the value that the property has without animation, to single precision.
    static bool IsAtRest(const LayerPart& part, const Components& rest)
    {
        for (std::size_t i = 0; i < rest.size(); ++i)
            if (part.curves[i] || static_cast<float>(part.constants[i]) != static_cast<float>(rest[i]))
                return false;
        return true;
    }

    void ReadChannel(const Record& channel, ObjectIndex object, std::string_view property,
                     const std::shared_ptr<Layer>& layer, KeySpan& keys)
    {
        const Components rest = motion_.RestOf(object, property);
        LayerPart part;
        part.layer = layer;
        part.constants = rest;
        try
        {
            ReadComponents(channel, part, keys);
        }
        catch (const ParseError& error)
        {
            throw ParseError(motion_.FullName(object, property) + ": " + error.what());
        }
        for (const Record& component : channel.Children())
            if (component.Name() == "Layer" || component.Name() == "Layers")
                notes_.Add({"property has layers above the base layer of FBX 6, which are left out",
                            "properties have layers above the base layer of FBX 6, which are left out"},
                           motion_.FullName(object, property));
        if (!IsAtRest(part, rest))
            motion_.Add(object, property, std::move(part));
    }

    void ReadComponents(const Record& channel, LayerPart& part, KeySpan& keys)
    {
        ReadComponent(channel, 0, part, keys);
        for (const Record& component : channel.Children())
            if (component.Name() == "Channel")
                ReadComponent(component, ComponentOf(component.TextAt(0)), part, keys);
    }

    void ReadComponent(const Record& channel, std::size_t component, LayerPart& part, KeySpan& keys)
    {
        const double constant = channel.Child("Default").NumberAt(0, part.constants[component]);
        if (!IsExportable(constant))
            throw ParseError(channel.Offset(), "a channel's default is not a finite number");
        part.constants[component] = constant;
        Curve curve = reader_.ReadKeyList(channel);
        if (curve.Empty())
            return;
        keys.Enclose(curve);
        part.curves[component] = std::make_shared<const Curve>(std::move(curve));
    }

    const Document& document_;
    SceneDescription& scene_;
    TransformEvaluator& transforms_;
    ImportNotes& notes_;
    TakeMotion motion_;
    CurveReader reader_;
    std::unordered_map<ObjectIndex, CurvePointer> curves_;
    std::set<ObjectIndex> read_nodes_;
    std::vector<std::string_view> raw_names_;
    std::unordered_map<std::string_view, Record> take_records_;
};

} // namespace

void ReadTakes(const Document& document, const ModelList& models, SceneData& data, ImportNotes& notes)
{
    TakeReader(document, models, data, notes).Read();
}

} // namespace mobu_host::fbx
