#pragma once

#include "tev2_loader/status.h"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace TEV2_PLAYBACK
{

/// A file to be read whole.
class FileRequest
{
public:
    FileRequest(std::string file, std::size_t most_bytes) : path(std::move(file)), mostBytes(most_bytes) {}
    virtual ~FileRequest() = default;

    /// From the reader's thread, before it opens the file. False: it is not to be read any more.
    virtual bool Begin() = 0;

    /// From the reader's thread, as a ReadWatch.
    virtual bool Continue(std::uint64_t read, std::uint64_t total) = 0;

    /// From the reader's thread, once for each Begin that was true: the bytes, or why there are none.
    virtual void Finish(TEV2_LOADER::Status read, std::vector<std::uint8_t> image) = 0;

    /// From any thread at any time: nobody waits for the bytes.
    virtual void Cancel() = 0;

    const std::string path;
    const std::size_t mostBytes; ///< as of ReadFileImage
};

/// Reads whole files on a thread of its own, in the order in which they were asked for.
class BackgroundReader
{
public:
    BackgroundReader();

    /// Cancels all requests and waits for the thread.
    ~BackgroundReader();
    BackgroundReader(const BackgroundReader&) = delete;
    BackgroundReader& operator=(const BackgroundReader&) = delete;

    /// Why there is no thread, where the system gives none; nothing can be added then.
    const TEV2_LOADER::Status& Started() const { return started_; }

    void Add(std::shared_ptr<FileRequest> request);

private:
    void Run();
    std::shared_ptr<FileRequest> Next();
    static void Serve(FileRequest& request);

    TEV2_LOADER::Status started_;
    std::mutex mutex_; ///< of what follows
    std::condition_variable added_;
    std::deque<std::shared_ptr<FileRequest>> waiting_;
    std::shared_ptr<FileRequest> current_;
    bool stopping_ = false;
    std::thread thread_; ///< uses all of this, so it begins last
};

} // namespace TEV2_PLAYBACK
