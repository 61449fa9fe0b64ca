#include "tools/tv2/drawing.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <set>
#include <sstream>

namespace tv2
{

namespace
{

// Pixels.
constexpr double kFigureHeight = 260.0;
constexpr double kWidestFigure = 420.0;
constexpr double kNarrowestFigure = 60.0;
constexpr double kWidestRow = 2400.0;
constexpr double kMargin = 16.0;
constexpr double kCaptionHeight = 22.0;
constexpr double kLabelWidth = 40.0;
constexpr double kBetweenLines = 28.0; // at least
constexpr double kCameraDepth = 22.0;
constexpr double kAxisLength = 8.0;

/// Largest distance of cameras and props from the skeletons, in sizes of the skeletons' box.
constexpr double kReach = 0.75;

/// Scale of a single figure.
constexpr double kSingleFigure = 2.0;

/// Farthest line at which neighbouring lines still differ in single precision.
constexpr double kFarthestLine = 1.0e6; // steps

constexpr const char* kAxisColours[] = {"#c0392b", "#3f8f3f", "#3a66b7"};

/// 1, 2 or 5 times a power of ten, and at least `least`.
double RoundStep(double least)
{
    const double power = std::pow(10.0, std::floor(std::log10(least)));
    for (const double factor : {1.0, 2.0, 5.0})
        if (factor * power >= least)
            return factor * power;
    return 10.0 * power;
}

bool Within(const PaperBox& box, const PaperPoint& point)
{
    return point.x >= box.least.x && point.x <= box.most.x && point.y >= box.least.y && point.y <= box.most.y;
}

/// What the picture shows, in metres.
struct Frame
{
    PaperBox box;
    std::set<std::size_t> left_out; ///< nodes of cameras and props
};

/// Calls `visit(mark)` for every prop and camera of every figure.
template <class Visit>
void VisitMarks(const std::vector<Figure>& figures, Visit visit)
{
    for (const Figure& figure : figures)
    {
        std::for_each(figure.props.begin(), figure.props.end(), visit);
        std::for_each(figure.cameras.begin(), figure.cameras.end(), visit);
    }
}

/// All skeletons and everything that stays near them; everything when there is no skeleton.
Frame FrameOf(const std::vector<Figure>& figures)
{
    Frame frame;
    for (const Figure& figure : figures)
    {
        for (const auto& [from, to] : figure.bones)
        {
            frame.box.Add(from);
            frame.box.Add(to);
        }
    }
    if (!frame.box.Empty())
    {
        const double reach = kReach * std::max(frame.box.Width(), frame.box.Height());
        const PaperBox near{{frame.box.least.x - reach, frame.box.least.y - reach},
                            {frame.box.most.x + reach, frame.box.most.y + reach}};
        VisitMarks(figures,
                   [&](const auto& mark)
                   {
                       if (!Within(near, mark.origin))
                       {
                           frame.left_out.insert(mark.node);
                       }
                   });
    }
    VisitMarks(figures,
               [&](const auto& mark)
               {
                   if (!frame.left_out.contains(mark.node))
                       frame.box.Add(mark.origin);
               });
    return frame;
}

/// Largest horizontal or vertical extent of props and cameras from their origins, in pixels. It grows with a camera's
/// angle.
double ReachOfMarks(const std::vector<Figure>& figures, const Frame& frame, double camera_depth)
{
    double reach = 0.0;
    for (const Figure& figure : figures)
    {
        if (!figure.props.empty())
            reach = std::max(reach, kAxisLength);
        for (const PaperCamera& camera : figure.cameras)
        {
            std::array<PaperPoint, 5> ends{camera.above};
            std::copy(camera.corners.begin(), camera.corners.end(), ends.begin() + 1);
            for (const PaperPoint& end : ends)
            {
                const double along = std::max(std::abs(end.x), std::abs(end.y)) * camera_depth;
                reach = std::max(reach, frame.left_out.contains(camera.node) ? 0.0 : along);
            }
        }
    }
    return reach;
}

std::size_t RoundedUp(std::size_t count, std::size_t divisor)
{
    return (count + divisor - 1) / divisor;
}

class Sheet
{
public:
    Sheet(const std::vector<Figure>& figures, const Frame& frame)
        : figures_(figures), frame_(frame), box_(frame.box)
    {
        // A single place has no size: show a metre around it.
        const double largest = std::max(
            {std::abs(box_.least.x), std::abs(box_.most.x), std::abs(box_.least.y), std::abs(box_.most.y)});
        if (std::max(box_.Width(), box_.Height()) <= largest * 1e-6)
        {
            const double room = std::max(0.5, largest * 1e-6);
            box_ = {{box_.least.x - room, box_.least.y - room}, {box_.most.x + room, box_.most.y + room}};
        }
        const double larger = figures.size() == 1 ? kSingleFigure : 1.0;
        camera_depth_ = kCameraDepth * larger;
        scale_ = larger * std::min(kFigureHeight / box_.Height(), kWidestFigure / box_.Width());
        margin_ = kMargin + ReachOfMarks(figures, frame, camera_depth_);
        cell_width_ = std::max(box_.Width() * scale_, kNarrowestFigure) + 2.0 * margin_;
        cell_height_ = box_.Height() * scale_ + 2.0 * margin_ + kCaptionHeight;
        const auto most = static_cast<std::size_t>((kWidestRow - kLabelWidth) / cell_width_);
        rows_ = RoundedUp(figures.size(), std::clamp<std::size_t>(most, 1, figures.size()));
        columns_ = RoundedUp(figures.size(), rows_);
    }

    std::string Draw()
    {
        const double width = kLabelWidth + cell_width_ * static_cast<double>(columns_);
        const double height = cell_height_ * static_cast<double>(rows_);
        svg_ << std::fixed << std::setprecision(1)
             << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " << width << ' ' << height
             << "\" width=\"" << width << "\" height=\"" << height << "\">\n"
             << "<rect width=\"100%\" height=\"100%\" fill=\"#fbfbf8\"/>\n";
        for (std::size_t row = 0; row < rows_; ++row)
            DrawLines(cell_height_ * static_cast<double>(row), width);
        for (std::size_t column = 1; column < columns_; ++column)
        {
            const double x = kLabelWidth + cell_width_ * static_cast<double>(column);
            svg_ << "<path class=\"cell\" stroke=\"#ecebe4\" d=\"M" << x << ",0V" << height << "\"/>\n";
        }
        for (std::size_t i = 0; i < figures_.size(); ++i)
        {
            const std::size_t row = i / columns_;
            left_ = kLabelWidth + cell_width_ * static_cast<double>(i % columns_) + margin_;
            ground_ = cell_height_ * static_cast<double>(row + 1) - margin_ - kCaptionHeight;
            DrawFigure(figures_[i]);
        }
        svg_ << "</svg>\n";
        return svg_.str();
    }

private:
    void DrawLines(double top, double width)
    {
        const double step = RoundStep(kBetweenLines / scale_);
        const double first = std::ceil(box_.least.y / step);
        const double last = std::floor(box_.most.y / step);
        if (!(std::max(std::abs(first), std::abs(last)) < kFarthestLine))
            return;
        const int digits = std::max(0, static_cast<int>(-std::floor(std::log10(step) + 1e-9)));
        for (double line = first; line <= last; line += 1.0)
        {
            const double y =
                top + cell_height_ - margin_ - kCaptionHeight - (line * step - box_.least.y) * scale_;
            svg_ << "<line x1=\"0\" y1=\"" << y << "\" x2=\"" << width << "\" y2=\"" << y
                 << "\" stroke=\"#dddcd4\"/><text x=\"3\" y=\"" << y - 3.0
                 << "\" font-family=\"sans-serif\" font-size=\"9\" fill=\"#a09f96\">"
                 << std::setprecision(digits) << line * step + 0.0 << std::setprecision(1) << " m</text>\n";
        }
    }

    void DrawFigure(const Figure& figure)
    {
        for (const PaperProp& prop : figure.props)
            if (!frame_.left_out.contains(prop.node))
                DrawProp(prop);
        if (!figure.bones.empty())
        {
            svg_ << "<path class=\"bones\" fill=\"none\" stroke=\"#2b5d8a\" stroke-width=\"2\" "
                    "stroke-linecap=\"round\" d=\"";
            for (const auto& [from, to] : figure.bones)
                svg_ << 'M' << Text(OnSheet(from)) << 'L' << Text(OnSheet(to));
            svg_ << "\"/>\n";
        }
        for (const PaperCamera& camera : figure.cameras)
            if (!frame_.left_out.contains(camera.node))
                DrawCamera(camera);
        svg_ << "<text x=\"" << left_ << "\" y=\"" << ground_ + margin_ + kCaptionHeight - 8.0
             << "\" font-family=\"sans-serif\" font-size=\"12\" fill=\"#55544d\">" << std::setprecision(2)
             << static_cast<double>(figure.time) << std::setprecision(1) << " s</text>\n";
    }

    void DrawProp(const PaperProp& prop)
    {
        const PaperPoint origin = OnSheet(prop.origin);
        for (std::size_t axis = 0; axis < prop.axes.size(); ++axis)
        {
            svg_ << "<path class=\"axis\" stroke=\"" << kAxisColours[axis] << "\" stroke-width=\"1.5\" d=\"M"
                 << Text(origin) << 'L' << Text(Beside(origin, prop.axes[axis], kAxisLength)) << "\"/>\n";
        }
        svg_ << "<circle class=\"prop\" cx=\"" << origin.x << "\" cy=\"" << origin.y
             << "\" r=\"2\" fill=\"#2b5d8a\"/>\n";
    }

    void DrawCamera(const PaperCamera& camera)
    {
        const PaperPoint origin = OnSheet(camera.origin);
        std::array<PaperPoint, 4> corners{};
        std::transform(camera.corners.begin(), camera.corners.end(), corners.begin(),
                       [&](const PaperPoint& corner) { return Beside(origin, corner, camera_depth_); });
        svg_ << "<path class=\"camera\" fill=\"#b3541e\" fill-opacity=\"0.12\" stroke=\"#b3541e\" d=\"";
        for (const PaperPoint& corner : corners)
            svg_ << 'M' << Text(origin) << 'L' << Text(corner);
        svg_ << 'M' << Text(corners[0]) << 'L' << Text(corners[1]) << 'L' << Text(corners[2]) << 'L'
             << Text(corners[3]) << "ZM" << Text(corners[0]) << 'L'
             << Text(Beside(origin, camera.above, camera_depth_)) << 'L' << Text(corners[1]) << "\"/>\n";
    }

    PaperPoint OnSheet(const PaperPoint& point) const
    {
        return {left_ + (point.x - box_.least.x) * scale_, ground_ - (point.y - box_.least.y) * scale_};
    }

    static PaperPoint Beside(const PaperPoint& origin, const PaperPoint& direction, double length)
    {
        return {origin.x + direction.x * length, origin.y - direction.y * length};
    }

    static std::string Text(const PaperPoint& point)
    {
        std::ostringstream text;
        text << std::fixed << std::setprecision(1) << point.x << ',' << point.y;
        return text.str();
    }

    const std::vector<Figure>& figures_;
    const Frame& frame_;
    PaperBox box_;
    double scale_ = 1.0; // pixels per metre
    double margin_ = 0.0;
    double camera_depth_ = 0.0; // of the picture in front of a camera
    double cell_width_ = 0.0;
    double cell_height_ = 0.0;
    std::size_t columns_ = 1;
    std::size_t rows_ = 1;
    double left_ = 0.0;   // of the current cell's figure
    double ground_ = 0.0; // its lower edge
    std::ostringstream svg_;
};

} // namespace

Drawing DrawFigures(const std::vector<Figure>& figures)
{
    const Frame frame = FrameOf(figures);
    return {Sheet(figures, frame).Draw(), frame.left_out.size()};
}

} // namespace tv2
