#include "tev2_loader/walk.h"

#include "tev2_loader/records/archives.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <type_traits>
#include <utility>
#include <vector>

namespace TEV2_LOADER
{

namespace
{

std::string Indexed(const char* label, std::size_t index)
{
    return std::string(label) + "[" + std::to_string(index) + "]";
}

/// Visits the fields of records and counts the bytes that they take.
class WalkArchive
{
public:
    WalkArchive(TEV2_FIELD& field, float version, TEV2_FIELD_VISITOR& visitor)
        : field_(field), version_(version), visitor_(visitor)
    {
    }

    bool Since(float version) const { return version_ >= version; }
    bool UpTo(float version) const { return version_ <= version; }

    void Text(const char* label, const TEV2_WIDE_STRING& text)
    {
        At(label);
        visitor_.Text(field_, text);
        field_.offset += DiskSize(text);
    }

    void Texts(const char* label, const std::vector<TEV2_WIDE_STRING>& texts, Counts = Counts::kBoth)
    {
        field_.offset += kCount;
        for (std::size_t item = 0; item < texts.size(); ++item)
        {
            At(label, item);
            visitor_.Text(field_, texts[item]);
            field_.offset += DiskSize(texts[item]);
        }
    }

    template <typename Number>
    void Value(const char* label, const Number& value, Counts = Counts::kBoth)
    {
        VisitNumbers(label, TEV2_FIELD::kNoIndex, value);
    }

    template <typename Number>
    void Constant(const char* label, const Number& value, Number /*always*/, Counts counts = Counts::kBoth)
    {
        Value(label, value, counts);
    }

    void Bool(const char* label, bool flag, Counts = Counts::kBoth)
    {
        VisitNumbers(label, TEV2_FIELD::kNoIndex, std::uint32_t{flag});
    }

    template <ChoiceEnum Enum>
    void Choice(const char* label, Enum choice, Counts = Counts::kBoth)
    {
        VisitNumbers(label, TEV2_FIELD::kNoIndex, static_cast<std::uint32_t>(choice));
    }

    void Layout() { field_.offset += kCount; }

    void Bytes(const char* label, std::span<const std::uint8_t> bytes, Counts = Counts::kBoth)
    {
        Block(label, bytes);
    }

    template <typename Element>
    void Values(const char* label, const std::vector<Element>& values, Counts = Counts::kBoth)
    {
        field_.offset += kCount;
        for (std::size_t item = 0; item < values.size(); ++item)
            VisitNumbers(label, item, values[item]);
    }

    template <typename Object>
    void Record(const char* label, const Object& record, Counts = Counts::kBoth)
    {
        const Scope scope(field_, "." + std::string(label));
        Object::Fields(record, *this);
    }

    template <typename Object, typename... Examine>
    void Records(const char* label, const std::vector<Object>& records, Counts = Counts::kBoth,
                 const Examine&...)
    {
        field_.offset += kCount;
        for (std::size_t index = 0; index < records.size(); ++index)
        {
            const Scope scope(field_, "." + Indexed(label, index), index);
            Object::Fields(records[index], *this);
        }
    }

    template <typename Object>
    void Track(const char* label, const std::unique_ptr<Object>& track, Counts = Counts::kBoth)
    {
        if constexpr (std::is_base_of_v<TEV2_ANIMATABLE, Object>)
        {
            At(label);
            visitor_.Track(field_, track.get());
            field_.offset += track ? TrackSize(*track) : kCount;
        }
        else
        {
            field_.offset += kCount;
            if (track)
                Typed(label, track);
        }
    }

    template <typename Object>
    void Optional(const char* label, const std::unique_ptr<Object>& record, Counts counts = Counts::kBoth)
    {
        field_.offset += kCount;
        if (record)
            Record(label, *record, counts);
    }

    template <typename Number>
    void OptionalValue(const char* label, const std::optional<Number>& value)
    {
        field_.offset += kCount;
        if (value)
            Value(label, *value);
    }

    template <typename Object, typename... More>
    void Boxed(const char* label, const TEV2_BOXED<Object>& box, const More&... more)
    {
        const Scope scope(field_, "." + std::string(label));
        Object::Fields(*box, *this, more...);
    }

    template <typename Object>
    void Typed(const char* label, const std::unique_ptr<Object>& object, Counts = Counts::kBoth)
    {
        const Scope scope(field_, "." + std::string(label));
        VisitTyped(object.get());
    }

    template <typename Object>
    void TypedObjects(const char* label, const std::vector<std::unique_ptr<Object>>& objects,
                      Counts = Counts::kBoth)
    {
        field_.offset += kCount;
        for (std::size_t index = 0; index < objects.size(); ++index)
        {
            const Scope scope(field_, "." + Indexed(label, index), index);
            VisitTyped(objects[index].get());
        }
    }

    template <typename Object, typename Kept>
    void Effects(const char* label, const std::vector<std::unique_ptr<Object>>& effects, const Kept& kept,
                 Counts = Counts::kBoth)
    {
        field_.offset += kCount;
        for (std::size_t index = 0; index < effects.size(); ++index)
        {
            field_.offset += kCount;
            if (!effects[index])
                continue;
            const Scope scope(field_, "." + Indexed(label, index), index);
            VisitTyped(effects[index].get());
        }
        Bytes("keptEffects", kept.bytes);
    }

    template <typename Object>
    void Map(const char* label, const std::unique_ptr<Object>& map, Counts = Counts::kBoth)
    {
        if (!map || map->IsTyped())
            return Track(label, map);
        field_.offset += 2 * kCount;
        Bytes(label, map->Bytes());
    }

    void VertexCount(const char*, std::uint32_t, std::size_t /*least*/) { field_.offset += kCount; }

    template <typename Element>
    void Column(const char* label, const std::vector<Element>& values, std::size_t /*count*/)
    {
        for (std::size_t item = 0; item < values.size(); ++item)
            VisitNumbers(label, item, values[item]);
    }

    template <typename Element>
    void OptionalColumn(const char* label, const std::vector<Element>& values, std::size_t count)
    {
        field_.offset += kCount;
        Column(label, values, count);
    }

    void ColumnCount(const char* label, std::uint32_t number) { Value(label, number); }

    template <typename Element>
    void ColumnGroup(const char* label, const std::vector<std::vector<Element>>& columns, std::size_t count)
    {
        field_.offset += kCount;
        for (std::size_t index = 0; index < columns.size(); ++index)
        {
            const Scope scope(field_, "." + Indexed(label, index), index);
            Column("values", columns[index], count);
        }
    }

    template <typename Object>
    void Run(const char* label, const std::vector<Object>& records, std::size_t /*count*/)
    {
        for (std::size_t index = 0; index < records.size(); ++index)
        {
            const Scope scope(field_, "." + Indexed(label, index), index);
            Object::Fields(records[index], *this);
        }
    }

    template <typename Matrix>
    void LegacyMatrix(const char*, const Matrix&)
    {
        field_.offset += 16 * sizeof(float);
    }

private:
    static constexpr std::size_t kCount = sizeof(std::uint32_t); ///< a count, flag or type

    /// Lengthens the path of the record while it lives.
    class Scope
    {
    public:
        Scope(TEV2_FIELD& field, const std::string& step) : Scope(field, step, field.index) {}
        Scope(TEV2_FIELD& field, const std::string& step, std::size_t index)
            : field_(field), length_(field.record.size()), index_(std::exchange(field.index, index))
        {
            field_.record += step;
        }
        ~Scope()
        {
            field_.record.resize(length_);
            field_.index = index_;
        }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        TEV2_FIELD& field_;
        std::size_t length_;
        std::size_t index_;
    };

    void At(const char* label, std::size_t item = TEV2_FIELD::kNoIndex)
    {
        field_.label = label;
        field_.item = item;
        field_.component = 0;
    }

    /// The type and the record of an object.
    template <typename Object>
    void VisitTyped(const Object* object)
    {
        field_.offset += kCount;
        if (object != nullptr)
            decltype(ClassesOf(*object))::VisitAs(*object, [this](const auto& concrete)
                                                  { concrete.Fields(concrete, *this); });
    }

    template <typename Number>
    void VisitNumbers(const char* label, std::size_t item, const Number& value)
    {
        At(label, item);
        if constexpr (std::is_arithmetic_v<Number>)
            VisitNumber(static_cast<double>(value));
        else if constexpr (requires { value.m; })
            for (const auto& row : value.m)
                for (const float number : row)
                    VisitNumber(static_cast<double>(number));
        else if constexpr (requires { value.begin(); })
            for (const auto number : value)
                VisitNumber(static_cast<double>(number));
        else
            std::apply([&](const auto&... component) { (VisitNumber(static_cast<double>(component)), ...); },
                       value.Components());
    }

    void VisitNumber(double number)
    {
        visitor_.Number(field_, number);
        field_.offset += sizeof(float);
        ++field_.component;
    }

    void Block(const char* label, std::span<const std::uint8_t> bytes)
    {
        At(label);
        visitor_.Bytes(field_, bytes);
        field_.offset += bytes.size();
    }

    TEV2_FIELD& field_;
    float version_;
    TEV2_FIELD_VISITOR& visitor_;
};

/// A chunk and the version that its record was read with: 0 before the information record.
struct Frame
{
    const TEV2_CHUNK_SPAN* chunk = nullptr;
    float version = 0.0f;
};

std::vector<Frame> FramesOf(const TEV2_LOAD_REPORT& report)
{
    std::vector<Frame> frames;
    float version = 0.0f;
    for (const TEV2_CHUNK_SPAN& chunk : report.chunks)
    {
        frames.push_back({&chunk, version});
        if (chunk.id == kInformationChunk)
            version = report.version;
    }
    return frames;
}

template <typename Record>
void WalkRecord(const Record& record, const TEV2_LIST& list, std::string path, std::size_t index,
                const Frame& frame, TEV2_FIELD_VISITOR& visitor)
{
    TEV2_FIELD field;
    field.record = std::move(path);
    field.index = index;
    field.chunkId = frame.chunk->id;
    field.chunkOffset = frame.chunk->offset;
    const bool prefixed = list.reading == TEV2_READING::WithType || list.reading == TEV2_READING::WithList;
    field.offset = frame.chunk->offset + kChunkHeader + (prefixed ? sizeof(std::uint32_t) : 0);
    WalkArchive archive(field, frame.version, visitor);
    VisitAsClass(record, [&archive](const auto& concrete) { VisitFields(concrete, archive); });
}

/// Whether a chunk belongs to a list.
template <typename List>
bool IsOf(const List& list, const TEV2_CHUNK_SPAN& chunk, const std::uint8_t* image)
{
    if constexpr (requires { list.index; })
    {
        if (TEV2_INSTANCE::FindKind(chunk.id) == nullptr)
            return false;
        std::uint32_t index = 0;
        std::memcpy(&index, image + chunk.offset + kChunkHeader, sizeof index);
        return index == list.index;
    }
    else
    {
        return chunk.id == list.kind;
    }
}

template <typename Member>
constexpr bool kIsArray = requires(const Member& member)
{
    member.begin();
};

} // namespace

std::string TEV2_FIELD::Path() const
{
    const std::string path = record + "." + label;
    return item == kNoIndex ? path : Indexed(path.c_str(), item);
}

void WalkScene(const TEV2& scene, const std::uint8_t* image, const TEV2_LOAD_REPORT& report,
               TEV2_FIELD_VISITOR& visitor)
{
    const std::vector<Frame> frames = FramesOf(report);
    std::array<std::size_t, std::tuple_size_v<decltype(kSceneLists)>> next{};
    for (const Frame& frame : frames)
    {
        auto index = next.begin();
        VisitLists(scene,
                   [&]<typename Member>(const auto& list, const Member& member)
                   {
                       if constexpr (kIsArray<Member>)
                       {
                           if (*index < member.size() && IsOf(list, *frame.chunk, image))
                           {
                               if (member[*index])
                                   WalkRecord(*member[*index], list, PathOf(list, *index), *index, frame,
                                              visitor);
                               ++*index;
                           }
                       }
                       ++index;
                   });
    }
    VisitLists(scene,
               [&]<typename Member>(const TEV2_LIST& list, const Member& member)
               {
                   const auto last =
                       std::find_if(frames.rbegin(), frames.rend(),
                                    [&](const Frame& frame) { return frame.chunk->id == list.kind; });
                   const auto walk = [&](const auto& record)
                   { WalkRecord(record, list, list.label, TEV2_FIELD::kNoIndex, *last, visitor); };
                   if constexpr (!kIsArray<Member>)
                   {
                       if (last == frames.rend())
                           return;
                       if constexpr (!requires { *member; })
                           walk(member);
                       else if (member)
                           walk(*member);
                   }
               });
}

std::uint64_t TrackSize(const TEV2_ANIMATABLE& track)
{
    SizeArchive archive(kVersion);
    AllTracks::VisitAs(track, [&archive](const auto& concrete) { concrete.Fields(concrete, archive); });
    return 2 * sizeof(std::uint32_t) + archive.Size();
}

} // namespace TEV2_LOADER
