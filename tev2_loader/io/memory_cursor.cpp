#include "tev2_loader/io/memory_cursor.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace TEV2_LOADER
{

TEV2_MEMORY_CURSOR::TEV2_MEMORY_CURSOR(const void* image, std::size_t size, TEV2_LOAD_REPORT* report,
                                       const TEV2_LOAD_LIMITS& limits)
    : current(static_cast<const std::uint8_t*>(image)),
      begin(current),
      end(size == 0 ? current : current + size),
      chunkEnd(end),
      report_(report),
      limits_(limits),
      allowance_(limits.bytes != 0 ? limits.bytes : std::numeric_limits<std::size_t>::max())
{
}

bool TEV2_MEMORY_CURSOR::FailForBytes(std::size_t size)
{
    return Fail(TEV2_LOAD_CODE::RecordOverrun, std::to_string(size) + " bytes",
                std::to_string(Remaining()) + " bytes");
}

std::uint32_t TEV2_MEMORY_CURSOR::ReadBytes(void* destination, std::uint32_t size)
{
    const std::uint32_t taken = static_cast<std::uint32_t>(std::min<std::size_t>(size, Remaining()));
    ReadBlock(destination, taken);
    return taken;
}

std::uint32_t TEV2_MEMORY_CURSOR::RefuseCount(std::uint32_t count, std::size_t most)
{
    Fail(TEV2_LOAD_CODE::CountExceedsFile, "at most " + std::to_string(most), std::to_string(count),
         sizeof count);
    return 0;
}

bool TEV2_MEMORY_CURSOR::TakeRest(std::vector<std::uint8_t>& bytes, std::size_t but)
{
    const std::size_t present = current < chunkEnd ? static_cast<std::size_t>(chunkEnd - current) : 0;
    const std::size_t size = present < but ? 0 : present - but;
    if (!TakeMemory(size))
        return false;
    bytes.assign(current, current + size);
    current += size;
    return true;
}

bool TEV2_MEMORY_CURSOR::Fail(TEV2_LOAD_CODE code, std::string expected, std::string found, std::size_t back)
{
    if (!failed_)
        AddFinding(code, TEV2_LOAD_SEVERITY::Error, std::move(expected), std::move(found), back);
    failed_ = true;
    current = end;
    return false;
}

void TEV2_MEMORY_CURSOR::Warn(TEV2_LOAD_CODE code, std::string expected, std::string found, std::size_t back)
{
    ++warnings_;
    if (warnings_ <= TEV2_LOAD_REPORT::kMostWarnings)
        AddFinding(code, TEV2_LOAD_SEVERITY::Warning, std::move(expected), std::move(found), back);
    else if (warnings_ == TEV2_LOAD_REPORT::kMostWarnings + 1)
        AddFinding(TEV2_LOAD_CODE::MoreWarnings, TEV2_LOAD_SEVERITY::Warning,
                   "at most " + std::to_string(TEV2_LOAD_REPORT::kMostWarnings) + " warnings", "more", back);
}

void TEV2_MEMORY_CURSOR::Warn(TEV2_LOAD_CODE code, TEV2_LOAD_FINDING cause)
{
    Warn(code, std::move(cause.expected), std::move(cause.found));
    if (report_ == nullptr || warnings_ > TEV2_LOAD_REPORT::kMostWarnings)
        return;
    TEV2_LOAD_FINDING& finding = report_->findings.back();
    finding.offset = cause.offset;
    finding.path = std::move(cause.path);
}

TEV2_MEMORY_CURSOR TEV2_MEMORY_CURSOR::Attempt(TEV2_LOAD_REPORT* report) const
{
    TEV2_MEMORY_CURSOR attempt = *this;
    attempt.end = std::max(current, chunkEnd);
    attempt.report_ = report;
    attempt.strict_ = true;
    return attempt;
}

bool TEV2_MEMORY_CURSOR::Accept(const TEV2_MEMORY_CURSOR& attempt)
{
    if (attempt.exceeded_)
        return FailForMemory();
    if (attempt.failed_)
        return false;
    current = attempt.current;
    allowance_ = attempt.allowance_;
    return true;
}

bool TEV2_MEMORY_CURSOR::FailForMemory()
{
    exceeded_ = true;
    return Fail(TEV2_LOAD_CODE::LimitExceeded,
                "at most " + std::to_string(limits_.bytes) + " bytes in memory", "more");
}

void TEV2_MEMORY_CURSOR::AddFinding(TEV2_LOAD_CODE code, TEV2_LOAD_SEVERITY severity, std::string expected,
                                    std::string found, std::size_t back)
{
    if (report_ != nullptr)
    {
        report_->findings.push_back({code, severity, Offset() - back, chunk_.id, chunk_.offset, Path(),
                                     std::move(expected), std::move(found)});
    }
}

std::string TEV2_MEMORY_CURSOR::Path() const
{
    std::string path;
    for (const RecordScope* scope = scope_; scope != nullptr; scope = scope->outer_)
    {
        std::string step = scope->label_;
        if (step.empty() && scope->index_ == RecordScope::kNoIndex)
            continue;
        if (scope->index_ != RecordScope::kNoIndex)
            step.append("[").append(std::to_string(scope->index_)).append("]");
        if (!path.empty() && path.front() != '[')
            step += ".";
        path = step.append(path);
    }
    return path;
}

bool TEV2_MEMORY_CURSOR::EnterChunk(const TEV2_CHUNK_SPAN& chunk)
{
    chunk_ = chunk;
    chunkEnd = begin + chunk.offset + chunk.size;
    if (report_ == nullptr)
        return true;
    if (!TakeMemory(sizeof chunk))
        return false;
    report_->chunks.push_back(chunk);
    return true;
}

void TEV2_MEMORY_CURSOR::LeaveChunk()
{
    chunk_ = {};
    chunkEnd = end;
}

} // namespace TEV2_LOADER
