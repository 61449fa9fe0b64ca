#pragma once

#include "tev2_loader/io/interfaces.h"
#include "tev2_loader/records/kept_body.h"

namespace TEV2_LOADER
{

/// Implements the operations of a record by its Fields. records/archives.h defines it; the .cpp of each record
/// instantiates it, so that users need not compile it.
template <typename Record>
struct TEV2_RECORD_CODE
{
    static bool Load(Record& record, TEV2_MEMORY_CURSOR& cursor, float version);
    static bool Save(const Record& record, TEV2_FILE_WRITER& writer);
    static void Update(Record& record, float delta_time);
    static void SetTime(Record& record, float time);
};

// The functions override those of the bases that have them.
// NOLINTBEGIN(modernize-use-override)

/// A record of these bases. Save is true when everything was written.
///
/// With TEV2_CHUNK_OBJECT and TEV2_KEPT_BODY among the bases it is a body of its own: Load is true whatever the bytes
/// are, which it keeps unless they are typed, and false only when the limits are exceeded. Other records are true
/// when everything was there, and what is missing fails the cursor.
template <typename Concrete, typename... Bases>
class TEV2_RECORD_OF : public Bases...
{
public:
    virtual bool Load(TEV2_MEMORY_CURSOR& cursor, float version)
    {
        return TEV2_RECORD_CODE<Concrete>::Load(static_cast<Concrete&>(*this), cursor, version);
    }

    virtual bool Save(TEV2_FILE_WRITER& writer) const
    {
        return TEV2_RECORD_CODE<Concrete>::Save(static_cast<const Concrete&>(*this), writer);
    }

protected:
    using Bases::Bases...;
};

/// A record with tracks. Update and SetTime move every track that Fields names except those of user properties.
template <typename Concrete, typename... Bases>
class TEV2_MOVING_RECORD_OF : public TEV2_RECORD_OF<Concrete, Bases...>
{
public:
    virtual void Update(float delta_time)
    {
        TEV2_RECORD_CODE<Concrete>::Update(static_cast<Concrete&>(*this), delta_time);
    }

    virtual void SetTime(float time)
    {
        TEV2_RECORD_CODE<Concrete>::SetTime(static_cast<Concrete&>(*this), time);
    }

protected:
    using TEV2_RECORD_OF<Concrete, Bases...>::TEV2_RECORD_OF;
};

// NOLINTEND(modernize-use-override)

} // namespace TEV2_LOADER
