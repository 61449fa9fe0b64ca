#include "tev2_loader/records/extended_properties.h"

#include "tev2_loader/io/arrays.h"

namespace TEV2_LOADER
{

namespace
{

constexpr std::size_t kLeastString = 2;
constexpr std::size_t kLeastEntry = kLeastString + 4; ///< an empty name and a count or flag of zero

} // namespace

bool TEV2_NAMED_STRING_ARRAY::Load(TEV2_MEMORY_CURSOR& cursor, float version)
{
    TEV2_ENTITY::Load(cursor, version);
    strings.clear();
    const std::uint32_t count = cursor.ReadCount(kLeastString);
    for (std::uint32_t index = 0; index < count && !cursor.Failed(); ++index)
    {
        const RecordScope scope(cursor, "strings", index);
        if (!cursor.TakeMemory(sizeof(TEV2_WIDE_STRING)))
            return false;
        ReadWideString(cursor, strings.emplace_back());
    }
    return !cursor.Failed();
}

bool TEV2_NAMED_STRING_ARRAY::Save(TEV2_FILE_WRITER& writer) const
{
    TEV2_ENTITY::Save(writer);
    const bool saved = SaveCount(writer, strings);
    for (const TEV2_WIDE_STRING& string : strings)
        WriteWideString(*writer.stream, string);
    return saved;
}

bool TEV2_EXTENDED_PROPERTIES::Load(TEV2_MEMORY_CURSOR& cursor, float version)
{
    const RecordScope scope(cursor, "properties");
    bool loaded = LoadRecords(cursor, version, "stringArrays", stringArrays, kLeastEntry);
    loaded &= LoadRecords(cursor, version, "intValues", intValues, kLeastEntry);
    loaded &= LoadRecords(cursor, version, "floatValues", floatValues, kLeastEntry);
    loaded &= LoadRecords(cursor, version, "vector3Values", vector3Values, kLeastEntry);
    loaded &= LoadRecords(cursor, version, "vector4Values", vector4Values, kLeastEntry);
    return loaded;
}

bool TEV2_EXTENDED_PROPERTIES::Save(TEV2_FILE_WRITER& writer) const
{
    bool saved = SaveRecords(writer, stringArrays);
    saved &= SaveRecords(writer, intValues);
    saved &= SaveRecords(writer, floatValues);
    saved &= SaveRecords(writer, vector3Values);
    saved &= SaveRecords(writer, vector4Values);
    return saved;
}

void TEV2_EXTENDED_PROPERTIES::SetTime(float time)
{
    const auto move = [time](auto& values)
    {
        for (auto& value : values)
            value.SetTime(time);
    };
    move(intValues);
    move(floatValues);
    move(vector3Values);
    move(vector4Values);
}

} // namespace TEV2_LOADER
