// tv2 picture: the skeleton of a file as stick figures, one for each of several instants, in one SVG drawing.

#include "tools/tv2/json.h"
#include "tools/tv2/loaded_file.h"
#include "tools/tv2/text.h"
#include "tools/tv2/verb.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <limits>
#include <sstream>

using namespace TEV2_LOADER;

namespace
{

constexpr double kFigureHeight = 260.0; // pixels
constexpr double kMargin = 16.0;
constexpr double kCaptionHeight = 22.0;

/// Where and how high figures may stand to get lines of half a metre.
constexpr double kFarthestLine = 1.0e6; // metres
constexpr double kTallestLined = 50.0;

struct Point
{
    double x = 0.0;
    double y = 0.0;
};

/// Where each node stands on the paper at one instant, in metres, y up.
struct Figure
{
    float time = 0.0f;
    std::vector<Point> nodes;
};

struct Box
{
    Point least{std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity()};
    Point most{-std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};

    void Add(const Point& point)
    {
        least = {std::min(least.x, point.x), std::min(least.y, point.y)};
        most = {std::max(most.x, point.x), std::max(most.y, point.y)};
    }
    double Width() const { return most.x - least.x; }
    double Height() const { return most.y - least.y; }
};

/// The axes of the paper. Relative to node 0 a whole scene has Z up and Y to the front, a selection has Y up and Z to
/// the back: node 0 is then the root that the exporter inserted.
struct Paper
{
    int right;
    int up;
    double right_sign;
    double up_sign;
};

Paper PaperFor(const TEV2_MATRIX_HIERARCHY& hierarchy, const std::string& view)
{
    const bool selection = hierarchy.nodes[0].name.Text() == u"Exporter Inserted Root";
    const int up = selection ? 1 : 2;
    const int depth = selection ? 2 : 1;
    if (view == "top")
        return {0, depth, 1.0, selection ? 1.0 : -1.0};
    return view == "side" ? Paper{depth, up, selection ? -1.0 : 1.0, 1.0} : Paper{0, up, 1.0, 1.0};
}

/// Bones and joints: every node with a parent other than node 0, and that parent.
std::vector<std::pair<std::size_t, std::size_t>> Bones(const TEV2_MATRIX_HIERARCHY& hierarchy)
{
    std::vector<std::pair<std::size_t, std::size_t>> bones;
    for (std::size_t i = 0; i < hierarchy.nodes.size(); ++i)
    {
        const std::int32_t parent = hierarchy.nodes[i].parentIndex;
        if (parent > 0 && static_cast<std::size_t>(parent) < hierarchy.nodes.size())
            bones.emplace_back(static_cast<std::size_t>(parent), i);
    }
    return bones;
}

std::vector<Figure> PoseFigures(TEV2& scene, const PictureOptions& options)
{
    const Paper paper = PaperFor(scene.matrixHierarchy, options.view);
    const float start = scene.environment.timeRange.minimum;
    const float end = scene.environment.timeRange.maximum;
    std::vector<Figure> figures(start == end ? 1 : options.figures); // one instant is one figure
    for (std::size_t i = 0; i < figures.size(); ++i)
    {
        Figure& figure = figures[i];
        const float part =
            figures.size() > 1 ? static_cast<float>(i) / static_cast<float>(figures.size() - 1) : 0.0f;
        figure.time = start + (end - start) * part;
        scene.matrixHierarchy.SetTime(figure.time);
        const TEV2_MATRIX_3X4 upright = Inverse(scene.matrixHierarchy.nodes[0].worldMatrix);
        for (const TEV2_MATRIX_NODE& node : scene.matrixHierarchy.nodes)
        {
            const TEV2_MATRIX_3X4 place = Product(upright, node.worldMatrix);
            figure.nodes.push_back({paper.right_sign * static_cast<double>(place.m[paper.right][3]),
                                    paper.up_sign * static_cast<double>(place.m[paper.up][3])});
        }
    }
    return figures;
}

bool Drawable(const Point& a, const Point& b)
{
    return std::isfinite(a.x) && std::isfinite(a.y) && std::isfinite(b.x) && std::isfinite(b.y);
}

/// The whole drawing. Figures stand side by side, all in one scale, over lines of half a metre.
std::string Draw(const TEV2& scene, const std::vector<Figure>& figures)
{
    const auto bones = Bones(scene.matrixHierarchy);
    Box box;
    for (const Figure& figure : figures)
        for (const auto& [parent, child] : bones)
            if (Drawable(figure.nodes[parent], figure.nodes[child]))
            {
                box.Add(figure.nodes[parent]);
                box.Add(figure.nodes[child]);
            }
    if (bones.empty() || !std::isfinite(box.Width()))
        box = {{0.0, 0.0}, {1.0, 1.0}};

    const double scale = kFigureHeight / std::max({box.Height(), box.Width() * 0.5, 1e-6});
    const double cell_width = std::max(box.Width() * scale, 60.0) + 2.0 * kMargin;
    const double height = kFigureHeight + 2.0 * kMargin + kCaptionHeight;
    const double width = cell_width * static_cast<double>(figures.size());

    std::ostringstream svg;
    svg << std::fixed << std::setprecision(1);
    svg << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " << width << ' ' << height
        << "\" width=\"" << width << "\" height=\"" << height << "\">\n"
        << "<rect width=\"100%\" height=\"100%\" fill=\"#fbfbf8\"/>\n";
    const double ground = kMargin + kFigureHeight;
    const bool lined = box.Height() < kTallestLined && std::abs(box.least.y) < kFarthestLine;
    const int first_line = lined ? static_cast<int>(std::ceil(box.least.y * 2.0)) : 0;
    const int last_line = lined ? static_cast<int>(std::floor(box.most.y * 2.0)) : -1;
    for (int line = first_line; line <= last_line; ++line)
    {
        const double metres = line * 0.5;
        const double y = ground - (metres - box.least.y) * scale;
        svg << "<line x1=\"0\" y1=\"" << y << "\" x2=\"" << width << "\" y2=\"" << y
            << "\" stroke=\"#dddcd4\"/><text x=\"3\" y=\"" << y - 3.0
            << "\" font-family=\"sans-serif\" font-size=\"9\" fill=\"#a09f96\">" << metres << " m</text>\n";
    }
    for (std::size_t i = 0; i < figures.size(); ++i)
    {
        const double left = cell_width * static_cast<double>(i) + kMargin;
        const auto place = [&](const Point& point)
        {
            std::ostringstream text;
            text << std::fixed << std::setprecision(1) << left + (point.x - box.least.x) * scale << ','
                 << ground - (point.y - box.least.y) * scale;
            return text.str();
        };
        svg << "<path fill=\"none\" stroke=\"#2b5d8a\" stroke-width=\"2\" stroke-linecap=\"round\" d=\"";
        for (const auto& [parent, child] : bones)
            if (Drawable(figures[i].nodes[parent], figures[i].nodes[child]))
                svg << 'M' << place(figures[i].nodes[parent]) << 'L' << place(figures[i].nodes[child]);
        svg << "\"/>\n<text x=\"" << left << "\" y=\"" << height - 8.0
            << "\" font-family=\"sans-serif\" font-size=\"12\" fill=\"#55544d\">" << std::setprecision(2)
            << static_cast<double>(figures[i].time) << " s</text>\n"
            << std::setprecision(1);
    }
    svg << "</svg>\n";
    return svg.str();
}

void Refuse(const PictureOptions& options, const std::string& why, ExitCode code, VerbContext& context)
{
    context.err << "tv2 picture: " << why << '\n';
    context.Report(code);
    if (options.json)
        context.out << JsonText(JsonFailure(options.file, why)) << '\n';
}

bool IsSameFile(const std::string& a, const std::string& b)
{
    std::error_code ignored; // a file that is not there is no other's
    return a == b || std::filesystem::equivalent(a, b, ignored);
}

} // namespace

void RunPicture(const PictureOptions& options, VerbContext& context)
{
    if (!options.output.ends_with(".svg"))
        return Refuse(options, options.output + ": a drawing's name ends in .svg", kExitCouldNotRun, context);
    if (IsSameFile(options.file, options.output))
        return Refuse(options, options.output + ": the drawing would replace the file that it shows",
                      kExitCouldNotRun, context);
    LoadedFile file;
    std::string error;
    if (!ReadFile(options.file, file, error))
        return Refuse(options, error, kExitCouldNotRun, context);
    if (!file.loaded)
        return Refuse(options, WhyNotLoaded(file), kExitFindings, context);
    if (file.scene->matrixHierarchy.nodes.empty())
        return Refuse(options, options.file + ": no nodes to draw", kExitFindings, context);

    const std::vector<Figure> figures = PoseFigures(*file.scene, options);
    const std::string drawing = Draw(*file.scene, figures);
    std::ofstream output(options.output, std::ios::binary);
    output << drawing << std::flush;
    if (!output)
        return Refuse(options, options.output + ": cannot be written", kExitCouldNotRun, context);
    if (options.json)
    {
        const Json json = {{"file", options.file}, {"output", options.output}, {"figures", figures.size()}};
        context.out << JsonText(json) << '\n';
        return;
    }
    context.out << options.output << ": " << CountOf(figures.size(), "figure", "figures") << " of "
                << options.file << '\n';
}
