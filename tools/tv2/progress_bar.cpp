#include "tools/tv2/progress_bar.h"

#include "tools/tv2/text.h"

#include <mobu_host/scene.h>

#include <algorithm>
#include <iomanip>
#include <sstream>

namespace
{

constexpr std::chrono::milliseconds kBetweenDrawings{100};

double SecondsBetween(ExportWatch::Clock::time_point from, ExportWatch::Clock::time_point to)
{
    return std::chrono::duration<double>(to - from).count();
}

} // namespace

ExportWatch::ExportWatch(const ExportPlan& plan, std::ostream* terminal)
    : plan_(plan), terminal_(terminal), seconds_(plan.files.size()), begun_(plan.files.size())
{
    for (const PlannedFile& file : plan.files)
    {
        total_ += file.instants.size();
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
    Erase();
}

void ExportWatch::OnGoto(double seconds, FBTake* take)
{
    if (file_ == kNoFile || plan_.files[file_].take != take)
    {
        // The player goes back to where it was after the last file: a take that has had its turn is left alone.
        for (std::size_t i = 0; i < plan_.files.size(); ++i)
        {
            if (plan_.files[i].take == take && !begun_[i])
            {
                EndFile();
                begun_[i] = true;
                file_ = i;
                samples_ = 0;
                file_start_ = Clock::now();
                break;
            }
        }
    }
    if (file_ == kNoFile || plan_.files[file_].take != take)
    {
        return;
    }
    ++samples_;
    if (samples_ >= plan_.files[file_].instants.size())
    {
        Erase(); // the exporter may have a question before the next file
    }
    else if (terminal_ != nullptr && Clock::now() - last_drawn_ >= kBetweenDrawings)
    {
        Draw(seconds);
    }
}

void ExportWatch::Draw(double seconds)
{
    constexpr std::size_t kWidth = 24;
    const PlannedFile& file = plan_.files[file_];
    const double part = static_cast<double>(samples_) / static_cast<double>(file.instants.size());
    const double whole = static_cast<double>(done_ + samples_) / static_cast<double>(total_);
    const auto filled = std::min(kWidth, static_cast<std::size_t>(part * static_cast<double>(kWidth)));
    last_drawn_ = Clock::now();
    const double elapsed = SecondsBetween(start_, last_drawn_);

    std::ostringstream line;
    line << "\r\x1b[K" << OneLine(file.take_name);
    if (plan_.files.size() > 1)
    {
        line << " (" << file_ + 1 << '/' << plan_.files.size() << ')';
    }
    line << " [" << std::string(filled, '#') << std::string(kWidth - filled, '.') << "] " << std::fixed
         << std::setprecision(0) << std::setw(3) << 100.0 * part << " %  " << std::setprecision(2) << seconds
         << " of " << static_cast<double>(file.range.end) << " s  ETA " << std::setprecision(0)
         << elapsed / whole - elapsed << " s";
    *terminal_ << line.str() << std::flush;
    drawn_ = true;
}

void ExportWatch::Erase()
{
    if (drawn_)
    {
        *terminal_ << "\r\x1b[K" << std::flush;
        drawn_ = false;
    }
}

void ExportWatch::EndFile()
{
    if (file_ == kNoFile)
    {
        return;
    }
    seconds_[file_] = SecondsBetween(file_start_, Clock::now());
    done_ += plan_.files[file_].instants.size();
    file_ = kNoFile;
}
