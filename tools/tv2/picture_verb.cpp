// tv2 picture: a file at several instants in one SVG drawing: skeletons as stick figures, cameras with their field of
// view, other models as points with their axes.

#include "tev2_loader/io/whole_file.h"
#include "tools/tv2/drawing.h"
#include "tools/tv2/figures.h"
#include "tools/tv2/json_answer.h"
#include "tools/tv2/loaded_file.h"
#include "tools/tv2/system.h"
#include "tools/tv2/text.h"
#include "tools/tv2/verb.h"

#include <algorithm>

namespace tv2
{

using TEV2_LOADER::Status;

namespace
{

class PictureVerb : public Verb
{
public:
    std::vector<OptionRow> Options() override
    {
        return {
            {.name = "FILE",
             .value = &file_,
             .help = "The .tv2 file; - is standard input",
             .required = true,
             .files = ".tv2"},
            {.name = "OUTPUT.svg",
             .value = &output_,
             .help = "The drawing, ending in .svg; - is standard output",
             .required = true,
             .files = ".svg"},
            {.name = "--figures",
             .value = &figures_,
             .help = "How many instants, spread over the time range (one where nothing moves)",
             .show_default = true,
             .range = {{1, 50}}},
            {.name = "--view",
             .value = &view_,
             .help = "From where to look",
             .show_default = true,
             .one_of = {"front", "side", "top"}},
        };
    }

    void Run(VerbContext& context) override
    {
        SurviveClosedPipes();
        LoadedFile file;
        if (const std::string why = WhyNotStarted(context.json); !why.empty())
            return context.Fail(file_, why, kExitCouldNotRun);
        if (const Status read = ReadFile(file_, file); !read)
            return context.Fail(file_, read.Reason(), kExitCouldNotRun);
        if (!file.loaded)
            return context.Fail(file_, WhyNotLoaded(file), kExitFindings);
        const std::vector<Figure> figures = PoseFigures(*file.scene, view_, figures_);
        if (std::all_of(figures.begin(), figures.end(), [](const Figure& figure) { return figure.Empty(); }))
        {
            return context.Fail(file_, file.title + ": nothing to draw: no nodes below the root",
                                kExitFindings);
        }
        const Drawing drawing = DrawFigures(figures);
        if (output_ == kStandardOutput)
        {
            context.out << drawing.svg;
            return;
        }
        if (const Status written = TEV2_LOADER::WriteWholeFile(output_, drawing.svg); !written)
        {
            return context.Fail(file_, output_ + ": cannot be written: " + written.Reason(),
                                kExitCouldNotRun);
        }
        if (context.json)
        {
            context.out << JsonAnswer({{"file", file_}, {"output", output_}, {"figures", figures.size()}});
            return;
        }
        context.out << Printable(output_) << ": " << CountOf(figures.size(), "figure", "figures") << " of "
                    << Printable(file.title) << '\n';
        if (drawing.left_out > 0)
        {
            context.out << "note: " << CountOf(drawing.left_out, "camera or prop is", "cameras and props are")
                        << " too far from the skeleton to be in the picture\n";
        }
    }

private:
    static constexpr const char* kStandardOutput = "-";

    /// The error in the options; empty when there is none.
    std::string WhyNotStarted(bool json) const
    {
        if (output_ == kStandardOutput)
            return json ? "the drawing and JSON cannot both go to standard output" : "";
        if (!output_.ends_with(".svg"))
            return output_ + ": a drawing's name ends in .svg";
        return IsSameFile(file_, output_) ? output_ + ": the drawing would replace the file that it shows"
                                          : "";
    }

    std::string file_;
    std::string output_;
    std::size_t figures_ = 7;
    std::string view_ = "front";
};

const VerbRegistration kPictureVerb({
    .name = "picture",
    .place = 70,
    .help = "Skeletons, cameras and other models at several instants, as an SVG drawing",
    .examples = "tv2 picture walk.tv2 walk.svg\n"
                "tv2 picture --view side --figures 12 walk.tv2 walk.svg",
    .json_help = "Print JSON: the file, the drawing and its number of figures",
    .writes_files = true,
    .make = Make<PictureVerb>,
});

} // namespace

} // namespace tv2
