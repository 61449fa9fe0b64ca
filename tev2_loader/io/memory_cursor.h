#pragma once

#include "tev2_loader/io/load_report.h"
#include "tev2_loader/requirements.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace TEV2_LOADER
{

class RecordScope;

/// Units or values where they are in the image, maybe not aligned. The image must outlive it.
template <typename Element>
struct TEV2_VIEW
{
    using value_type = Element;

    const std::uint8_t* begin = nullptr;
    std::uint32_t count = 0;
};

/// What every record's Load reads from: the whole file in memory. It accepts any bytes safely: no read leaves
/// the image. A number read past the end is 0 and fails the cursor. A failed cursor moves to the end and stays
/// there, and the load of the scene fails with it. The image is not copied and must outlive the cursor.
class TEV2_MEMORY_CURSOR
{
public:
    /// Starts at the first of `size` bytes. The report, if given, is not owned and receives the findings. The
    /// limits apply to this load.
    TEV2_MEMORY_CURSOR(const void* image, std::size_t size, TEV2_LOAD_REPORT* report = nullptr,
                       const TEV2_LOAD_LIMITS& limits = {});

    const std::uint8_t* current;
    const std::uint8_t* begin;
    const std::uint8_t* end;

    /// One past the last byte of the current chunk, within [begin, end]: the end of a body that is kept as bytes.
    /// Records that know their own length do not use it.
    const std::uint8_t* chunkEnd;

    std::size_t Offset() const { return static_cast<std::size_t>(current - begin); }
    std::size_t Remaining() const { return static_cast<std::size_t>(end - current); }

    std::uint16_t ReadU16() { return ReadNumber<std::uint16_t>(); }
    std::uint32_t ReadU32() { return ReadNumber<std::uint32_t>(); }
    std::int32_t ReadI32() { return ReadNumber<std::int32_t>(); }
    std::uint64_t ReadU64() { return ReadNumber<std::uint64_t>(); }
    float ReadF32() { return ReadNumber<float>(); }

    /// Copies at most the remaining bytes and returns how many. Never fails.
    std::uint32_t ReadBytes(void* destination, std::uint32_t size);

    /// Reads the u32 count of an array whose elements take at least leastSize (> 0) bytes each. A count that
    /// the remaining bytes cannot hold fails the cursor and gives 0.
    std::uint32_t ReadCount(std::size_t leastSize)
    {
        const std::uint32_t count = ReadU32();
        if (std::uint64_t{count} * leastSize > Remaining()) [[unlikely]]
            return RefuseCount(count, Remaining() / leastSize);
        return count;
    }

    /// Call before allocating for file contents. Fails the cursor when the limits are exceeded.
    bool TakeMemory(std::size_t bytes)
    {
        if (bytes > allowance_)
            return FailForMemory();
        allowance_ -= bytes;
        return true;
    }

    /// Bytes that TakeMemory still allows.
    std::size_t Allowance() const { return allowance_; }

    /// Copies exactly `size` bytes; when fewer remain, copies nothing and fails the cursor.
    bool ReadBlock(void* destination, std::size_t size)
    {
        if (size > Remaining()) [[unlikely]]
            return FailForBytes(size);
        if (size != 0)
            std::memcpy(destination, current, size);
        current += size;
        return true;
    }

    /// Fails the cursor as a read of more bytes does than remain. Returns false.
    bool FailForBytes(std::size_t size);

    /// Moves the bytes up to the end of the chunk, but for the last `but`, into an array; none where fewer are left.
    /// False when the limits are exceeded.
    bool TakeRest(std::vector<std::uint8_t>& bytes, std::size_t but = 0);

    /// Fails the cursor permanently and moves it to the end. Records the first failure, `back` bytes before the
    /// current position. Returns false.
    bool Fail(TEV2_LOAD_CODE code, std::string expected, std::string found, std::size_t back = 0);

    /// Adds a warning to the report, up to kMostWarnings.
    void Warn(TEV2_LOAD_CODE code, std::string expected, std::string found, std::size_t back = 0);

    /// The same for a finding of an attempt, with its place, path, expectation and find.
    void Warn(TEV2_LOAD_CODE code, TEV2_LOAD_FINDING cause);

    /// A copy with a report of its own (may be null) for a body that may be of another layout: it ends with the chunk
    /// and accepts nothing that Save would not write, such as a flag other than 0 and 1.
    TEV2_MEMORY_CURSOR Attempt(TEV2_LOAD_REPORT* report) const;

    /// Continues after what an attempt has read. False, and nothing changed, when it failed; but an attempt that
    /// exceeded the limits fails this cursor, too.
    bool Accept(const TEV2_MEMORY_CURSOR& attempt);

    /// Whether this is an attempt.
    bool Strict() const { return strict_; }

    bool Failed() const { return failed_; }
    TEV2_LOAD_REPORT* Report() const { return report_; }
    const TEV2_LOAD_LIMITS& Limits() const { return limits_; }

    /// Sets the current chunk, which must be inside the image, and adds it to the report. False when that exceeds the
    /// limits.
    bool EnterChunk(const TEV2_CHUNK_SPAN& chunk);
    void LeaveChunk();

private:
    friend class RecordScope;

    template <typename Number>
    Number ReadNumber()
    {
        Number number{};
        ReadBlock(&number, sizeof number);
        return number;
    }
    std::uint32_t RefuseCount(std::uint32_t count, std::size_t most);
    void AddFinding(TEV2_LOAD_CODE code, TEV2_LOAD_SEVERITY severity, std::string expected, std::string found,
                    std::size_t back);
    std::string Path() const;
    bool FailForMemory();

    TEV2_LOAD_REPORT* report_;
    TEV2_LOAD_LIMITS limits_;
    std::size_t allowance_;
    std::size_t warnings_ = 0;
    TEV2_CHUNK_SPAN chunk_;
    const RecordScope* scope_ = nullptr;
    bool failed_ = false;
    bool strict_ = false;
    bool exceeded_ = false; ///< failed because of the limits
};

/// Names the record being read during its lifetime, for the paths in the report. Scopes nest and must be destroyed
/// in reverse order. Costs two pointer writes; text is made only for a finding.
class RecordScope
{
public:
    static constexpr std::size_t kNoIndex = ~std::size_t{0};

    /// The label is not copied (use a literal); with an index the path shows "label[index]".
    RecordScope(TEV2_MEMORY_CURSOR& cursor, const char* label, std::size_t index = kNoIndex)
        : cursor_(cursor), outer_(cursor.scope_), label_(label), index_(index)
    {
        cursor_.scope_ = this;
    }
    ~RecordScope() { cursor_.scope_ = outer_; }
    RecordScope(const RecordScope&) = delete;
    RecordScope& operator=(const RecordScope&) = delete;

private:
    friend class TEV2_MEMORY_CURSOR;

    TEV2_MEMORY_CURSOR& cursor_;
    const RecordScope* outer_;
    const char* label_;
    std::size_t index_;
};

} // namespace TEV2_LOADER
