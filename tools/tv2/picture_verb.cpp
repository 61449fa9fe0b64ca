// tv2 picture: what a file shows at several instants, in one SVG drawing: skeletons as stick figures, cameras with what
// they see, other models as points with their axes.

#include "tev2_loader/io/whole_file.h"
#include "tools/tv2/drawing.h"
#include "tools/tv2/figures.h"
#include "tools/tv2/json_answer.h"
#include "tools/tv2/loaded_file.h"
#include "tools/tv2/system.h"
#include "tools/tv2/text.h"
#include "tools/tv2/verb.h"

#include <algorithm>
#include <cstring>
#include <filesystem>

namespace tv2
{

namespace
{

struct PictureOptions
{
    std::string file;
    std::string output;
    std::size_t figures = 7;
    std::string view = "front";
};

bool IsSameFile(const std::string& a, const std::string& b)
{
    std::error_code ignored; // a file that is not there is no other's
    return a == b || std::filesystem::equivalent(a, b, ignored);
}

} // namespace

void RunPicture(const PictureOptions& options, VerbContext& context)
{
    SurviveClosedPipes();
    const bool to_output = options.output == "-";
    if (to_output && context.json)
        return context.Fail(options.file, "the drawing and JSON cannot both go to standard output",
                            kExitCouldNotRun);
    if (!to_output && !options.output.ends_with(".svg"))
        return context.Fail(options.file, options.output + ": a drawing's name ends in .svg",
                            kExitCouldNotRun);
    if (!to_output && IsSameFile(options.file, options.output))
        return context.Fail(options.file,
                            options.output + ": the drawing would replace the file that it shows",
                            kExitCouldNotRun);
    LoadedFile file;
    if (const TEV2_LOADER::Status read = ReadFile(options.file, file); !read)
        return context.Fail(options.file, read.Reason(), kExitCouldNotRun);
    if (!file.loaded)
        return context.Fail(options.file, WhyNotLoaded(file), kExitFindings);
    const std::vector<Figure> figures = PoseFigures(*file.scene, options.view, options.figures);
    const bool empty =
        std::all_of(figures.begin(), figures.end(), [](const Figure& figure) { return figure.Empty(); });
    if (empty)
        return context.Fail(options.file, file.title + ": nothing to draw: no nodes below the root",
                            kExitFindings);

    const Drawing drawing = DrawFigures(figures);
    if (to_output)
    {
        context.out << drawing.svg;
        return;
    }
    if (const auto written = TEV2_LOADER::WriteWholeFile(options.output, drawing.svg); !written)
        return context.Fail(options.file, options.output + ": cannot be written: " + written.Reason(),
                            kExitCouldNotRun);
    if (context.json)
    {
        const Json json = {{"file", options.file}, {"output", options.output}, {"figures", figures.size()}};
        context.out << JsonAnswer(json);
        return;
    }
    context.out << Printable(options.output) << ": " << CountOf(figures.size(), "figure", "figures") << " of "
                << Printable(file.title) << '\n';
    if (drawing.left_out > 0)
    {
        context.out << "note: " << CountOf(drawing.left_out, "camera or prop is", "cameras and props are")
                    << " too far from the skeleton to be in the picture\n";
    }
}

namespace
{

class PictureVerb : public Verb
{
public:
    std::vector<OptionRow> Options() override
    {
        return {
            {.name = "FILE",
             .value = &options_.file,
             .help = "The .tv2 file; - is standard input",
             .required = true},
            {.name = "OUTPUT.svg",
             .value = &options_.output,
             .help = "The drawing, ending in .svg; - is standard output",
             .required = true},
            {.name = "--figures",
             .value = &options_.figures,
             .help = "How many instants, spread over the time range (one where nothing moves)",
             .show_default = true,
             .range = {{1, 50}}},
            {.name = "--view",
             .value = &options_.view,
             .help = "From where to look",
             .show_default = true,
             .one_of = {"front", "side", "top"}},
        };
    }

    void Run(VerbContext& context) override { RunPicture(options_, context); }

private:
    PictureOptions options_;
};

const VerbRegistration kPictureVerb({
    .name = "picture",
    .place = 7,
    .help = "Skeletons, cameras and other models at several instants, as an SVG drawing",
    .examples = "tv2 picture walk.tv2 walk.svg\n"
                "tv2 picture --view side --figures 12 walk.tv2 walk.svg",
    .json_help = "Print JSON: the file, the drawing and its number of figures",
    .writes_files = true,
    .make = Make<PictureVerb>,
});

} // namespace

} // namespace tv2
