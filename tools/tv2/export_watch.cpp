#include "tools/tv2/export_watch.h"

#include <mobu_host/scene.h>

#include <algorithm>

namespace tv2
{

namespace
{

double SecondsBetween(ExportWatch::Clock::time_point from, ExportWatch::Clock::time_point to)
{
    return std::chrono::duration<double>(to - from).count();
}

} // namespace

ExportWatch::ExportWatch(const std::vector<tev2_exporter::FilePlan>& files, std::ostream* terminal,
                         std::size_t columns)
    : files_(files), line_(terminal, columns), seconds_(files.size()), begun_(files.size())
{
    for (std::size_t i = 0; i < files.size(); ++i)
    {
        samples_of_.push_back(tev2_exporter::SampledInstants(files[i].range).size());
        total_ += samples_of_.back();
        file_of_.emplace(mobu_host::Scene().Takes[static_cast<int>(files[i].take)], i);
    }
    mobu_host::ObserverCalls calls;
    calls.on_goto = [this](FBTime time, FBTake* take) { OnGoto(time.GetSecondDouble(), take); };
    observer_ = std::make_unique<mobu_host::SceneObserver>(std::move(calls));
}

ExportWatch::~ExportWatch()
{
    Finish();
}

void ExportWatch::Finish()
{
    observer_.reset();
    EndFile();
    line_.Erase();
}

void ExportWatch::OnGoto(double seconds, FBTake* take)
{
    const auto found = file_of_.find(take);
    if (found == file_of_.end())
        return;
    if (found->second != file_)
    {
        // After the last file the player goes back to where it was: a finished take does not start again.
        if (begun_[found->second])
            return;
        EndFile();
        file_ = found->second;
        begun_[file_] = true;
        samples_ = 0;
        file_start_ = Clock::now();
    }
    ++samples_;
    if (samples_ >= samples_of_[file_])
        line_.Erase(); // the exporter may have a question before the next file
    else if (line_.IsDue())
        Draw(seconds);
}

void ExportWatch::Draw(double seconds)
{
    const tev2_exporter::FilePlan& file = files_[file_];
    const double part = static_cast<double>(samples_) / static_cast<double>(samples_of_[file_]);
    const double whole = static_cast<double>(done_ + samples_) / static_cast<double>(total_);
    ProgressText text;
    text.name = file.take_name;
    text.file = files_.size() > 1 ? file_ + 1 : 0;
    text.files = files_.size();
    text.part = part;
    text.seconds = seconds;
    text.end = static_cast<double>(file.range.end);
    text.seconds_left = SecondsLeft(SecondsBetween(start_, Clock::now()), whole);
    line_.Draw(text);
}

void ExportWatch::EndFile()
{
    if (file_ == kNoFile)
        return;
    seconds_[file_] = SecondsBetween(file_start_, Clock::now());
    done_ += samples_of_[file_];
    file_ = kNoFile;
}

} // namespace tv2
