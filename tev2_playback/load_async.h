#pragma once

// Clips from files, without waiting for them: read and built on another thread.
//
//     #include "tev2_playback/load_async.h"
//
//     TEV2_PLAYBACK::PendingClip pending = TEV2_PLAYBACK::LoadAsync("walk.tv2");
//     while (!pending.Done()) // once a frame
//     {
//         const TEV2_PLAYBACK::LoadProgress progress = pending.Progress();
//         std::printf("%llu of %llu bytes\n", static_cast<unsigned long long>(progress.bytesRead),
//                     static_cast<unsigned long long>(progress.bytesTotal));
//     }
//     TEV2_PLAYBACK::Clip clip;
//     if (const TEV2_LOADER::Status loaded = pending.Take(clip); !loaded)
//         std::fprintf(stderr, "%s\n", loaded.Reason().c_str()); // walk.tv2: No such file or directory
//
// A program that loads many files makes a ClipLoader and lets it read them one after another.
//
// The library of this header is tev2_playback_async (tev2::playback_async); it needs the system's threads.

#include "tev2_loader/status.h"
#include "tev2_playback/clip_file.h"

#include <cstdint>
#include <memory>
#include <string>

namespace TEV2_PLAYBACK
{

enum class LoadStage : std::uint8_t
{
    Waiting,  ///< for the files asked for before it
    Reading,  ///< the file into memory
    Building, ///< the clip from it
    Done,     ///< with a clip or an error
};

struct LoadProgress
{
    LoadStage stage = LoadStage::Done;
    std::uint64_t bytesRead = 0;

    /// When it was opened; a file that other programs write to can have more or fewer in the end. 0: not known, as of a
    /// pipe.
    std::uint64_t bytesTotal = 0;
};

class ClipLoader;
class ClipRequest;

/// A clip that is being loaded. Belongs to one thread at a time; Progress, Done and Cancel may be called from others as
/// well.
class PendingClip
{
public:
    /// Of no file: Done, with an error.
    PendingClip();

    PendingClip(PendingClip&& other) noexcept;

    /// Cancels and waits, as the destructor does, for what it had.
    PendingClip& operator=(PendingClip&& other) noexcept;

    /// Cancels, and waits until the thread does not use options and memory of this load any more: milliseconds while
    /// it reads (on Windows a pipe has to send something first), at most the time that the build takes when it has
    /// begun.
    ~PendingClip();

    LoadProgress Progress() const;
    bool Done() const { return Progress().stage == LoadStage::Done; }

    /// Blocks until it is done.
    void Wait() const;

    /// Gives the load up; does nothing to one that is done. Returns at once; Take then fails with "cancelled".
    void Cancel();

    /// Waits, and moves the clip out, or says which file could not be loaded and why; the clip is then as it was. The
    /// result can be taken once: a second call fails.
    TEV2_LOADER::Status Take(Clip& clip);

private:
    friend class ClipLoader;
    friend PendingClip LoadAsync(std::string path, const LoadClipOptions& options);

    std::shared_ptr<ClipRequest> request_;
    std::unique_ptr<ClipLoader> own_; ///< that of LoadAsync
};

/// A thread that loads clips, in the order in which they were asked for.
class ClipLoader
{
public:
    /// Starts the thread. Where the system has none to give, every load fails with that reason.
    ClipLoader();

    /// Cancels what is not done and waits for the thread, as ~PendingClip does.
    ~ClipLoader();
    ClipLoader(const ClipLoader&) = delete;
    ClipLoader& operator=(const ClipLoader&) = delete;

    /// Asks for the clip of a file, as LoadClip; memory and report of the options are used on the thread and must live
    /// until the load is done. May be called from any thread. Memory that runs out on the thread is an error of the
    /// load; std::bad_alloc is thrown when there is none to ask with.
    PendingClip Load(std::string path, const LoadClipOptions& options = {});

private:
    std::unique_ptr<class BackgroundReader> reader_;
};

/// Loads one file on a thread of its own, which ends with the PendingClip.
PendingClip LoadAsync(std::string path, const LoadClipOptions& options = {});

} // namespace TEV2_PLAYBACK
