#include "tev2_playback/detail/background_reader.h"

#include "tev2_loader/io/file_image.h"

#include <new>
#include <system_error>
#include <utility>

namespace TEV2_PLAYBACK
{

using namespace TEV2_LOADER;

BackgroundReader::BackgroundReader()
{
    try
    {
        thread_ = std::thread([this] { Run(); });
    }
    catch (const std::system_error& error)
    {
        started_ = Status::Failure("no thread to read with: " + error.code().message());
    }
}

BackgroundReader::~BackgroundReader()
{
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
        if (current_)
            current_->Cancel();
        for (const std::shared_ptr<FileRequest>& request : waiting_)
            request->Cancel();
    }
    added_.notify_one();
    if (thread_.joinable())
        thread_.join();
}

void BackgroundReader::Add(std::shared_ptr<FileRequest> request)
{
    {
        const std::lock_guard lock(mutex_);
        waiting_.push_back(std::move(request));
    }
    added_.notify_one();
}

std::shared_ptr<FileRequest> BackgroundReader::Next()
{
    std::unique_lock lock(mutex_);
    current_.reset();
    added_.wait(lock, [this] { return stopping_ || !waiting_.empty(); });
    if (!stopping_)
    {
        current_ = std::move(waiting_.front());
        waiting_.pop_front();
    }
    return current_;
}

void BackgroundReader::Run()
{
    while (const std::shared_ptr<FileRequest> request = Next())
        if (request->Begin())
            Serve(*request);
}

void BackgroundReader::Serve(FileRequest& request)
{
    std::vector<std::uint8_t> image;
    Status read;
    try
    {
        read = ReadFileImage(request.path, image, request.mostBytes,
                             [&request](std::uint64_t bytes, std::uint64_t total)
                             { return request.Continue(bytes, total); });
    }
    catch (const std::bad_alloc&)
    {
        image = {};
        read = Status::Failure("out of memory");
    }
    request.Finish(std::move(read), std::move(image));
}

} // namespace TEV2_PLAYBACK
