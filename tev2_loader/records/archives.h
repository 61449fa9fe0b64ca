#pragma once

// What the Load and Save of a record need.

#include "tev2_loader/archive/load.h"
#include "tev2_loader/archive/move.h"
#include "tev2_loader/archive/save.h"
#include "tev2_loader/archive/state.h"
#include "tev2_loader/records/record_of.h"
#include "tev2_loader/tracks/visit_keys.h"

#include <concepts>

namespace TEV2_LOADER
{

/// The class for the types of a family that have no class of their own. Its bodies are never typed.
template <typename Record>
concept UntypedRecord = requires
{
    requires std::same_as<Record, typename Record::Untyped>;
};

/// Makes the record as it was constructed.
template <typename Record>
void Reset(Record& record)
{
    if constexpr (UntypedRecord<Record>)
        record = Record(record.GetType());
    else
        record = Record();
}

/// Reads a body field by field, if it is typed. Otherwise false, and the record is as constructed. A record whose
/// fields may disagree has Examine, which fails the cursor then; one that evaluation fills has MakeRoom, which
/// allocates for it.
template <typename Record>
bool LoadTyped(Record& record, TEV2_MEMORY_CURSOR& cursor, float version)
{
    Reset(record);
    BodyAttempt attempt(cursor, version);
    if (!attempt.Allowed())
        return false;
    if constexpr (UntypedRecord<Record>)
        attempt.RefuseType(record.GetType());
    else
    {
        LoadFields(record, attempt.cursor, version);
        if constexpr (requires { record.Examine(attempt.cursor); })
            if (!attempt.cursor.Failed())
                record.Examine(attempt.cursor);
        if constexpr (requires { record.MakeRoom(attempt.cursor); })
            if (!attempt.cursor.Failed() && attempt.cursor.Remaining() == 0)
                record.MakeRoom(attempt.cursor);
    }
    if (attempt.EndsBefore(0))
        return true;
    Reset(record);
    return false;
}

/// Reads the placed object in front of a body that is kept. False, and nothing read, where there is none.
template <typename Record>
bool LoadPlaced(Record& record, TEV2_MEMORY_CURSOR& cursor, float version)
{
    if constexpr (std::derived_from<Record, TEV2_POSITIONAL_OBJECT>)
    {
        TEV2_MEMORY_CURSOR attempt = cursor.Attempt(nullptr);
        LoadArchive archive(attempt, version);
        TEV2_POSITIONAL_OBJECT::Fields(record, archive);
        if (cursor.Accept(attempt))
            return true;
        Reset(record);
    }
    return false;
}

/// Reads a body, typed or kept. False when the limits are exceeded.
template <typename Record>
bool LoadBody(Record& record, TEV2_MEMORY_CURSOR& cursor, float version)
{
    if (LoadTyped(record, cursor, version))
        return true;
    if (cursor.Failed())
        return false;
    const bool placed = LoadPlaced(record, cursor, version);
    std::vector<std::uint8_t> bytes;
    if (cursor.Failed() || !cursor.TakeRest(bytes))
        return false;
    if (placed)
        record.KeepAfterPlaced(std::move(bytes));
    else
        record.Keep(std::move(bytes), version);
    return true;
}

/// What the fields of a record hold, with or without those of its placed object.
template <typename Record>
std::vector<std::uint32_t> StateOf(const Record& record, bool with_placed)
{
    StateArchive all;
    Record::Fields(record, all);
    StateArchive left_out;
    if constexpr (std::derived_from<Record, TEV2_POSITIONAL_OBJECT>)
        if (!with_placed)
            TEV2_POSITIONAL_OBJECT::Fields(record, left_out); // they come first
    return {all.notes.begin() + static_cast<std::ptrdiff_t>(left_out.notes.size()), all.notes.end()};
}

/// Whether a record has values that its Save leaves out, because the body is kept as bytes, and that it did not have as
/// constructed.
template <typename Record>
bool HasUnsavedValues(const Record& record)
{
    if (record.IsTyped())
        return false;
    const auto differs = [&record](const auto& constructed)
    {
        return StateOf(record, !record.HasPlaced()) !=
               StateOf(static_cast<const Record&>(constructed), !record.HasPlaced());
    };
    if constexpr (!UntypedRecord<Record>)
        return differs(Record());
    else if constexpr (requires { Record::MakeKept(0); })
        return differs(*Record::MakeKept(record.GetType()));
    else
        return differs(*Record::Create(record.GetType()));
}

template <typename Record>
bool TEV2_RECORD_CODE<Record>::Load(Record& record, TEV2_MEMORY_CURSOR& cursor, float version)
{
    if constexpr (std::derived_from<Record, TEV2_KEPT_BODY> && std::derived_from<Record, TEV2_CHUNK_OBJECT>)
        return LoadBody(record, cursor, version);
    if constexpr (std::derived_from<Record, TEV2_KEPT_BODY>)
        record.Forget();
    return LoadFields(record, cursor, version);
}

/// Whether the fields of a record agree, so that a load will take them. Otherwise the writer notes which do not.
template <typename Record>
bool FieldsAgree(const Record& record, TEV2_FILE_WRITER& writer)
{
    TEV2_LOAD_REPORT report;
    TEV2_MEMORY_CURSOR cursor(nullptr, 0, &report);
    record.Examine(cursor);
    if (!cursor.Failed())
        return true;
    const TEV2_LOAD_FINDING& finding = report.findings.front();
    return writer.Refuse(finding.path, "expected " + finding.expected + ", found " + finding.found);
}

template <typename Record>
bool TEV2_RECORD_CODE<Record>::Save(const Record& record, TEV2_FILE_WRITER& writer)
{
    SaveArchive archive(writer);
    VisitFields(record, archive);
    bool saved = archive.Result();
    if constexpr (std::derived_from<Record, TEV2_KEPT_BODY>)
        if (!record.CanBeSaved())
            saved = writer.Refuse("body", "kept from a file of another version");
    if constexpr (UntypedRecord<Record>)
        if (record.IsTyped())
            saved = writer.Refuse("type", "without a class, and no bytes are kept");
    if constexpr (requires(TEV2_MEMORY_CURSOR & cursor) { record.Examine(cursor); })
        if (record.IsTyped())
            saved &= FieldsAgree(record, writer);
    return saved;
}

template <typename Record>
void TEV2_RECORD_CODE<Record>::Update(Record& record, float delta_time)
{
    const auto move = [delta_time](TEV2_INTERNAL_ANIM_OBJECT& object) { object.Update(delta_time); };
    MoveArchive archive(move);
    VisitFields(record, archive);
}

template <typename Record>
void TEV2_RECORD_CODE<Record>::SetTime(Record& record, float time)
{
    const auto move = [time](TEV2_INTERNAL_ANIM_OBJECT& object) { object.SetTime(time); };
    MoveArchive archive(move);
    VisitFields(record, archive);
}

} // namespace TEV2_LOADER
