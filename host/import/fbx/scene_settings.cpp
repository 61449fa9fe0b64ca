#include "host/import/fbx/scene_settings.h"

#include <charconv>
#include <cmath>

namespace mobu_host::fbx
{
namespace
{

constexpr double kNtsc = 1000.0 / 1001.0;
// By number of TimeMode; 0 is the default, 14 a rate of the file's own.
constexpr double kRates[] = {30.0,         120.0,        100.0,        60.0, 50.0,   48.0,         30.0, 30.0,
                             30.0 * kNtsc, 30.0 * kNtsc, 25.0,         24.0, 1000.0, 24.0 * kNtsc, 0.0,  96.0,
                             72.0,         60.0 * kNtsc, 120.0 * kNtsc};
constexpr int kOwnRate = 14;
constexpr double kFastestRate = 1.0e6;

bool IsRate(double rate)
{
    return rate > 0.0 && rate <= kFastestRate;
}

// "100" of Version5 / Settings / FrameRate, a text.
double RateOfText(const Document& document)
{
    const Record setting = document.Tree().Root().Child("Version5").Child("Settings").Child("FrameRate");
    const std::string_view text = setting.TextAt(0);
    double rate = 0.0;
    std::from_chars(text.data(), text.data() + text.size(), rate);
    return rate;
}

} // namespace

double TransportRate(const Document& document)
{
    if (document.IsNamed() && IsRate(RateOfText(document)))
        return RateOfText(document);
    const PropertyView settings{&document.GlobalSettings()};
    const int mode = settings.Choice("TimeMode", 0);
    const double own = settings.Number("CustomFrameRate", -1.0);
    if (mode == kOwnRate && IsRate(own))
        return own;
    const bool known = mode > 0 && mode < static_cast<int>(std::size(kRates)) && mode != kOwnRate;
    return kRates[known ? mode : 0];
}

double UnitOfLength(const Document& document)
{
    const double factor = PropertyView{&document.GlobalSettings()}.Number("UnitScaleFactor", 1.0);
    return factor > 0.0 ? factor : 1.0;
}

Matrix3 AxesToHost(const Document& document, ImportNotes& notes)
{
    const PropertyView settings{&document.GlobalSettings()};
    const int axes[3] = {settings.Choice("CoordAxis", 0), settings.Choice("UpAxis", 1),
                         settings.Choice("FrontAxis", 2)};
    const int signs[3] = {settings.Choice("CoordAxisSign", 1), settings.Choice("UpAxisSign", 1),
                          settings.Choice("FrontAxisSign", 1)};
    Matrix3 turn;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            turn.at[row][column] = column == axes[row] ? (signs[row] < 0 ? -1.0 : 1.0) : 0.0;
    if (Determinant(turn) == 0.0)
    {
        notes.Tell("the file's axes do not make up a space; Y was taken as up");
        return {};
    }
    if (Determinant(turn) < 0.0)
        notes.Tell("the file's axes are left-handed; the scene is mirrored");
    return turn;
}

} // namespace mobu_host::fbx
