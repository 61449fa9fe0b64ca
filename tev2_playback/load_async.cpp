#include "tev2_playback/load_async.h"

#include "tev2_playback/detail/background_reader.h"

#include <condition_variable>
#include <mutex>
#include <new>
#include <utility>

namespace TEV2_PLAYBACK
{

using namespace TEV2_LOADER;

/// What a PendingClip and the thread that loads it share.
class ClipRequest final : public FileRequest
{
public:
    ClipRequest(std::string file, const LoadClipOptions& options)
        : FileRequest(std::move(file), options.mostFileBytes), options_(options)
    {
    }

    bool Begin() override
    {
        const std::lock_guard lock(mutex_);
        if (progress_.stage != LoadStage::Waiting)
            return false;
        progress_.stage = LoadStage::Reading;
        return true;
    }

    bool Continue(std::uint64_t read, std::uint64_t total) override
    {
        const std::lock_guard lock(mutex_);
        progress_.bytesRead = read;
        progress_.bytesTotal = total;
        return !cancelled_;
    }

    void Finish(Status read, std::vector<std::uint8_t> image) override
    {
        if (read && GoOnTo(LoadStage::Building))
            read = Build(image);
        const std::lock_guard lock(mutex_);
        if (cancelled_)
        {
            DropClip();
            read = Status::Failure("cancelled");
        }
        End(std::move(read));
    }

    void Cancel() override
    {
        const std::lock_guard lock(mutex_);
        cancelled_ = true;
        if (progress_.stage == LoadStage::Waiting)
            End(Status::Failure("cancelled"));
    }

    void Refuse(const Status& reason)
    {
        const std::lock_guard lock(mutex_);
        End(reason);
    }

    LoadProgress Progress() const
    {
        const std::lock_guard lock(mutex_);
        return progress_;
    }

    void Wait() const
    {
        std::unique_lock lock(mutex_);
        done_.wait(lock, [this] { return progress_.stage == LoadStage::Done; });
    }

    /// Gives the memory of a clip back that nobody takes: the thread may hold on to the request for a while. From the
    /// thread, or when it is done.
    void DropClip() { const Clip dropped(std::move(clip_)); }

    Status Take(Clip& clip)
    {
        Wait();
        const std::lock_guard lock(mutex_);
        Status taken = std::exchange(result_, Status::Failure("taken already"));
        if (!taken)
            return Status::Failure(path + ": " + taken.Reason());
        clip = std::move(clip_);
        return taken;
    }

private:
    bool GoOnTo(LoadStage stage)
    {
        const std::lock_guard lock(mutex_);
        progress_.stage = stage;
        return !cancelled_;
    }

    Status Build(const std::vector<std::uint8_t>& image)
    {
        try
        {
            return LoadClipMemory(image.data(), image.size(), clip_, options_);
        }
        catch (const std::bad_alloc&)
        {
            return Status::Failure("out of memory");
        }
        catch (...)
        {
            return Status::Failure("the memory resource of the clip failed");
        }
    }

    void End(Status result)
    {
        result_ = std::move(result);
        progress_.stage = LoadStage::Done;
        done_.notify_all();
    }

    const LoadClipOptions options_;
    mutable std::mutex mutex_; ///< of what follows
    mutable std::condition_variable done_;
    LoadProgress progress_ = {LoadStage::Waiting};
    bool cancelled_ = false;
    Status result_;
    Clip clip_; ///< of the thread until it is done
};

PendingClip::PendingClip() = default;

PendingClip::PendingClip(PendingClip&&) noexcept = default;

PendingClip& PendingClip::operator=(PendingClip&& other) noexcept
{
    PendingClip before(std::move(*this));
    request_ = std::move(other.request_);
    own_ = std::move(other.own_);
    return *this;
}

PendingClip::~PendingClip()
{
    if (!request_)
        return;
    request_->Cancel();
    request_->Wait();
    request_->DropClip();
}

LoadProgress PendingClip::Progress() const
{
    return request_ ? request_->Progress() : LoadProgress();
}

void PendingClip::Wait() const
{
    if (request_)
        request_->Wait();
}

void PendingClip::Cancel()
{
    if (request_)
        request_->Cancel();
}

Status PendingClip::Take(Clip& clip)
{
    return request_ ? request_->Take(clip) : Status::Failure("no file was asked for");
}

ClipLoader::ClipLoader() : reader_(std::make_unique<BackgroundReader>()) {}

ClipLoader::~ClipLoader() = default;

PendingClip ClipLoader::Load(std::string path, const LoadClipOptions& options)
{
    PendingClip pending;
    auto request = std::make_shared<ClipRequest>(std::move(path), options);
    if (reader_->Started())
        reader_->Add(request);
    else
        request->Refuse(reader_->Started());
    pending.request_ = std::move(request);
    return pending;
}

PendingClip LoadAsync(std::string path, const LoadClipOptions& options)
{
    auto loader = std::make_unique<ClipLoader>();
    PendingClip pending = loader->Load(std::move(path), options);
    pending.own_ = std::move(loader);
    return pending;
}

} // namespace TEV2_PLAYBACK
