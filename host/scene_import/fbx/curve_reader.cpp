#include "host/scene_import/fbx/curve_reader.h"

#include "host/scene_import/fbx/damage.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace mobu_host::fbx
{
namespace
{

constexpr double kLongestTime = 1.0e6; // seconds either side of 0; far below where ticks run out

// What the flags of a key mean.
constexpr std::uint32_t kConstant = 0x2;
constexpr std::uint32_t kLinear = 0x4;
constexpr std::uint32_t kCubic = 0x8;
constexpr std::uint32_t kConstantNext = 0x100;
constexpr std::uint32_t kAutomatic = 0x100; // of a cubic key
constexpr std::uint32_t kTcb = 0x200;
constexpr std::uint32_t kClamp = 0x1000;
constexpr std::uint32_t kClampProgressive = 0x4000;
constexpr std::uint32_t kRightWeighted = 0x01000000;
constexpr std::uint32_t kNextLeftWeighted = 0x02000000;
constexpr double kBiasUnit = 100.0;
constexpr int kWeightUnit = 10000;

// One block of key data: slope to the right, slope of the next key to its left, two weights in one float's bits.
struct Attribute
{
    std::uint32_t flags = kCubic | kAutomatic;
    float data[4] = {};

    float Weight(bool next_left) const
    {
        if (!(flags & (next_left ? kNextLeftWeighted : kRightWeighted)))
            return 0.0F;
        const auto bits = std::bit_cast<std::uint32_t>(data[2]);
        const int weight = static_cast<std::int16_t>(next_left ? bits >> 16 : bits & 0xFFFF);
        return static_cast<float>(std::clamp(weight, 1, kWeightUnit)) / static_cast<float>(kWeightUnit);
    }
};

Tangent TangentOf(const Attribute& own, const Attribute& before)
{
    Tangent tangent;
    tangent.right_slope = own.data[0];
    tangent.left_slope = before.data[1];
    tangent.right_weight = own.Weight(false);
    tangent.left_weight = before.Weight(true);
    tangent.flat_at_equals = (own.flags & kClamp) != 0;
    tangent.no_overshoot = (own.flags & kClampProgressive) != 0;
    if (own.flags & kTcb)
    {
        tangent.rule = TangentRule::Tcb;
        tangent.left_slope = own.data[1];
        tangent.tcb_bias = own.data[2];
        tangent.right_weight = tangent.left_weight = 0.0F;
    }
    else if (own.flags & kAutomatic)
    {
        tangent.rule = TangentRule::Automatic;
        tangent.right_slope = own.data[0] / static_cast<float>(kBiasUnit);
        tangent.left_slope = -before.data[1] / static_cast<float>(kBiasUnit);
    }
    return tangent;
}

Interpolation InterpolationOf(std::uint32_t flags)
{
    if (flags & kCubic)
        return Interpolation::Cubic;
    if (flags & kLinear)
        return Interpolation::Straight;
    return flags & kConstantNext ? Interpolation::HoldNext : Interpolation::Hold;
}

void CheckKey(const Key& key, std::size_t offset)
{
    const Tangent& tangent = key.tangent;
    const bool finite = std::isfinite(key.value) && std::isfinite(tangent.right_slope) &&
                        std::isfinite(tangent.left_slope) && std::isfinite(tangent.tcb_bias);
    if (!finite || !(std::abs(key.seconds) <= kLongestTime))
        throw Damage(offset, "a key is not a number or lies out of all time");
}

double SecondsOf(std::int64_t ticks)
{
    return static_cast<double>(ticks) / kTicksPerSecond;
}

} // namespace

Curve CurveReader::ReadArrays(const Record& record)
{
    arrays_.Read(record.Child("KeyTime"), times_);
    arrays_.Read(record.Child("KeyValueFloat"), values_);
    arrays_.Read(record.Child("KeyAttrFlags"), flags_);
    arrays_.Read(record.Child("KeyAttrDataFloat"), data_);
    arrays_.Read(record.Child("KeyAttrRefCount"), counts_);
    if (values_.size() != times_.size())
        throw Damage(record.Offset(), "a curve has " + std::to_string(times_.size()) + " times and " +
                                          std::to_string(values_.size()) + " values");
    if (counts_.size() != flags_.size() || data_.size() < flags_.size() * 4)
        throw Damage(record.Offset(), "the attributes of a curve's keys do not fit together");

    Curve curve;
    curve.Reserve(times_.size());
    Attribute before, own;
    before.flags = 0;
    std::size_t block = 0;
    std::int64_t left = 0;
    for (std::size_t i = 0; i < times_.size(); ++i)
    {
        for (; left <= 0 && block < flags_.size(); ++block)
        {
            left = counts_[block];
            own.flags = static_cast<std::uint32_t>(flags_[block]);
            std::copy_n(data_.begin() + static_cast<std::ptrdiff_t>(block * 4), 4, own.data);
        }
        --left;
        Key key;
        key.seconds = SecondsOf(times_[i]);
        key.value = values_[i];
        key.interpolation = InterpolationOf(own.flags);
        if (key.interpolation == Interpolation::Cubic)
            key.tangent = TangentOf(own, i == 0 ? Attribute{0, {}} : before);
        else
            key.tangent = TangentOf(Attribute{0, {}}, i == 0 ? Attribute{0, {}} : before);
        CheckKey(key, record.Offset());
        curve.Append(key);
        before = own;
    }
    curve.Close();
    return curve;
}

namespace
{

// Goes through the values of a Key record.
class KeyListCursor
{
public:
    explicit KeyListCursor(const Record& list) : cursor_(list) { Advance(); }

    bool AtEnd() const { return !value_; }
    std::size_t Offset() const { return cursor_.Offset(); }

    double Number()
    {
        const auto number = value_.Number();
        if (!number || value_.Letter() != 0)
            throw Damage(Offset(), "a list of keys lacks a number");
        Advance();
        return *number;
    }
    std::int64_t Ticks()
    {
        const auto ticks = value_.Whole();
        if (!ticks || value_.Letter() != 0)
            throw Damage(Offset(), "a list of keys lacks a time");
        Advance();
        return *ticks;
    }
    char Letter() // 0 where there is none; stays there
    {
        const char letter = value_.Letter();
        if (letter != 0)
            Advance();
        return letter;
    }

private:
    void Advance()
    {
        if (!cursor_.Next(value_))
            value_ = Value();
    }

    ValueCursor cursor_;
    Value value_;
};

// What follows the letter of a cubic key: how its slopes are found, then letters for weights and, later, velocities.
void ReadCubic(KeyListCursor& list, Attribute& own)
{
    const char mode = list.Letter();
    own.flags = kCubic;
    switch (mode)
    {
    case 's': // user's, one slope through the key
    case 'b': // user's, broken at the key
        own.data[0] = static_cast<float>(list.Number());
        own.data[1] = static_cast<float>(list.Number());
        break;
    case 'a':
    case 'd':
        own.flags |= kAutomatic;
        break;
    case 't':
        own.flags |= kTcb;
        for (int i = 0; i < 3; ++i)
            own.data[i] = static_cast<float>(list.Number());
        break;
    default:
        throw Damage(list.Offset(), "a cubic key has a tangent of an unknown kind");
    }
    bool weights = true;
    for (char letter = list.Letter(); letter != 0; letter = list.Letter(), weights = false)
    {
        if (letter == 'c')
            own.flags |= kClamp;
        int count = letter == 'a' ? 2 : letter == 'r' || letter == 'l' ? 1 : 0;
        bool next_left = letter == 'l';
        for (; count > 0; --count, next_left = true)
        {
            const double weight = std::clamp(list.Number(), 0.0, 1.0);
            if (!weights)
                continue;
            own.flags |= next_left ? kNextLeftWeighted : kRightWeighted;
            const auto stored = static_cast<std::uint32_t>(weight * kWeightUnit + 0.5);
            const auto bits = std::bit_cast<std::uint32_t>(own.data[2]);
            if (!(own.flags & kTcb))
                own.data[2] = std::bit_cast<float>(next_left ? (bits & 0xFFFFU) | stored << 16
                                                             : (bits & 0xFFFF0000U) | stored);
        }
    }
}

} // namespace

Curve CurveReader::ReadKeyList(const Record& channel)
{
    Curve curve;
    const Record record = channel.Child("Key");
    if (!record || record.ValueCount() == 0)
        return curve;
    KeyListCursor list(record);
    Attribute before;
    before.flags = 0;
    while (!list.AtEnd())
    {
        Key key;
        Attribute own;
        key.seconds = SecondsOf(list.Ticks());
        key.value = list.Number();
        const char letter = list.Letter();
        switch (letter)
        {
        case 'C':
            own.flags = kConstant | (list.Letter() == 'n' ? kConstantNext : 0);
            break;
        case 'L':
            own.flags = kLinear;
            break;
        case 'U':
            ReadCubic(list, own);
            break;
        default:
            throw Damage(list.Offset(), "a key has an interpolation of an unknown kind");
        }
        key.interpolation = InterpolationOf(own.flags);
        key.tangent = TangentOf(own.flags & kCubic ? own : Attribute{0, {}}, before);
        CheckKey(key, record.Offset());
        curve.Append(key);
        before = own;
    }
    curve.Close();
    return curve;
}

} // namespace mobu_host::fbx
