#include "host/import/fbx/curve_reader.h"

#include "host/import/base/exportable_number.h"
#include "host/import/base/parse_error.h"
#include "host/import/base/scene_description.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace mobu_host::fbx
{
namespace
{

// What the flags of a key mean.
constexpr std::uint32_t kConstant = 0x2;
constexpr std::uint32_t kLinear = 0x4;
constexpr std::uint32_t kCubic = 0x8;
constexpr std::uint32_t kConstantNext = 0x100;
constexpr std::uint32_t kAutomatic = 0x100; // of a cubic key
constexpr std::uint32_t kTcb = 0x200;
constexpr std::uint32_t kBroken = 0x800; // each side for itself
constexpr std::uint32_t kClamp = 0x1000;
constexpr std::uint32_t kTimeIndependent = 0x2000;
constexpr std::uint32_t kClampProgressive = 0x4000;
constexpr std::uint32_t kRightWeighted = 0x01000000;
constexpr std::uint32_t kNextLeftWeighted = 0x02000000;
constexpr double kBiasUnit = 100.0;
constexpr int kWeightUnit = 10000;

// From 7.2 on text files write the floats of key data, of which some are packed numbers, as their bits. Before they
// wrote the packed ones as decimals, too.
constexpr unsigned kFirstVersionOfBits = 7200;

// Times of keys rise, and rising numbers deflate badly: even the plainest steps take more than a byte each. A
// file that states more of them is made to fill memory. Few are taken whatever they are.
constexpr std::uint64_t kMostTimesPerByte = 2;
constexpr std::uint64_t kFew = 256;

std::uint64_t MostTimes(const Record& times)
{
    const Value stored = times ? times.ValueAt(0) : Value();
    return stored.IsArray() ? std::max<std::uint64_t>(kMostTimesPerByte * stored.Bytes().size(), kFew)
                            : ArrayReader::kAny;
}

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
    const bool after_tcb = (before.flags & kTcb) != 0; // whose numbers are no slope and no weight
    tangent.right_slope = own.data[0];
    tangent.left_slope = after_tcb ? 0.0F : before.data[1];
    tangent.right_weight = own.Weight(false);
    tangent.left_weight = after_tcb ? 0.0F : before.Weight(true);
    tangent.through_neighbours = (own.flags & kTimeIndependent) != 0;
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
        tangent.left_slope =
            own.flags & kBroken ? -tangent.left_slope / static_cast<float>(kBiasUnit) : tangent.right_slope;
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
    const bool finite = IsExportable(key.value) && std::isfinite(tangent.right_slope) &&
                        std::isfinite(tangent.left_slope) && std::isfinite(tangent.tcb_bias);
    if (!finite)
        throw ParseError(offset, "a key at " + std::to_string(key.seconds) + " s is not a finite number");
    if (!(std::abs(key.seconds) <= kLongestTime))
        throw ParseError(offset, "a key's time is outside the supported range");
}

double SecondsOf(std::int64_t ticks, const Record& record)
{
    return static_cast<double>(ticks) / record.Tree().TicksPerSecond();
}

Extrapolation ExtrapolationOf(const Record& record)
{
    Extrapolation extrapolation;
    switch (record.Child("Type").ValueAt(0).Letter())
    {
    case 'R':
        extrapolation.kind = Extrapolation::Kind::Repeat;
        break;
    case 'M':
        extrapolation.kind = Extrapolation::Kind::Mirror;
        break;
    case 'A':
        extrapolation.kind = Extrapolation::Kind::RepeatOnward;
        break;
    case 'K':
        extrapolation.kind = Extrapolation::Kind::Slope;
        break;
    default:
        break;
    }
    const auto repetitions = record.Child("Repetition").ValueAt(0).Whole();
    if (repetitions && *repetitions >= 0)
        extrapolation.repetitions = static_cast<double>(*repetitions);
    return extrapolation;
}

void ReadExtrapolation(const Record& record, Curve& curve)
{
    curve.Extrapolate(ExtrapolationOf(record.Child("Pre-Extrapolation")),
                      ExtrapolationOf(record.Child("Post-Extrapolation")));
}

} // namespace

Curve CurveReader::ReadArrays(const Record& record)
{
    const Record times = record.Child("KeyTime");
    arrays_.Read(times, times_, MostTimes(times));
    const std::uint64_t most = std::max<std::uint64_t>(times_.size(), kFew);
    arrays_.Read(record.Child("KeyValueFloat"), values_, most);
    arrays_.Read(record.Child("KeyAttrFlags"), flags_, most);
    const bool bits = record.Tree().Version() >= kFirstVersionOfBits;
    arrays_.Read(record.Child("KeyAttrDataFloat"), data_, most * 4,
                 bits ? TextFloats::WholeNumbersAreBits : TextFloats::Decimal);
    arrays_.Read(record.Child("KeyAttrRefCount"), counts_, most);
    if (values_.size() != times_.size())
        throw ParseError(record.Offset(), "a curve has " + std::to_string(times_.size()) + " times and " +
                                              std::to_string(values_.size()) + " values");
    if (counts_.size() != flags_.size() || data_.size() < flags_.size() * 4)
        throw ParseError(record.Offset(), "the attributes of a curve's keys do not fit together");

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
            std::copy_n(data_.begin() + static_cast<std::ptrdiff_t>(4 * block), 4, own.data);
        }
        --left;
        Key key;
        key.seconds = SecondsOf(times_[i], record);
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
    ReadExtrapolation(record, curve);
    return curve;
}

namespace
{

// A key list of 6.x: time, value, then a capital that says how the curve goes on, then what that needs. The two numbers
// before a capital are the next key's, so what is between need not be understood.
class KeyListCursor
{
public:
    explicit KeyListCursor(const Record& list) : list_(list), cursor_(list)
    {
        Value value;
        for (; begin_.size() < 2 && cursor_.Next(value);)
            begin_.push_back(value);
        at_end_ = begin_.empty();
        if (!at_end_ && !cursor_.Next(capital_))
            Fail();
    }

    bool AtEnd() const { return at_end_; }

    // The next key; what follows its capital, for a cubic one, is left in Details.
    Key Take(char& capital)
    {
        const auto ticks = begin_.size() == 2 ? begin_[0].Whole() : std::nullopt;
        const auto value = begin_.size() == 2 ? begin_[1].Number() : std::nullopt;
        capital = capital_.Letter();
        if (!ticks || !value || begin_[0].Letter() != 0 || begin_[1].Letter() != 0 || !IsCapital(capital))
            Fail();
        Key key;
        key.seconds = SecondsOf(*ticks, list_);
        key.value = *value;
        ReadDetails();
        return key;
    }

    const std::vector<Value>& Details() const { return details_; }
    [[noreturn]] void Fail() const
    {
        throw ParseError(list_.Offset(), "a list of keys cannot be taken apart");
    }

private:
    static constexpr std::size_t kMostDetails = 16;

    static bool IsCapital(char letter) { return letter == 'C' || letter == 'L' || letter == 'U'; }

    void ReadDetails()
    {
        details_.clear();
        begin_.clear();
        at_end_ = true;
        for (Value value; cursor_.Next(value);)
        {
            if (IsCapital(value.Letter()))
            {
                if (details_.size() < 2)
                    Fail();
                capital_ = value;
                begin_.assign(details_.end() - 2, details_.end());
                details_.resize(details_.size() - 2);
                at_end_ = false;
                return;
            }
            details_.push_back(value);
            if (details_.size() > kMostDetails)
                Fail();
        }
    }

    Record list_;
    ValueCursor cursor_;
    std::vector<Value> begin_; // time and value of the next key
    Value capital_;            // and its letter
    std::vector<Value> details_;
    bool at_end_ = false;
};

// A letter and the numbers after it.
struct LetterGroup
{
    char letter = 0;
    std::vector<double> numbers;
};

std::vector<LetterGroup> GroupsOf(const KeyListCursor& list)
{
    std::vector<LetterGroup> groups;
    for (const Value& value : list.Details())
    {
        if (const char letter = value.Letter())
        {
            groups.push_back({letter, {}});
            continue;
        }
        const auto number = value.Number();
        if (!number || groups.empty())
            list.Fail();
        groups.back().numbers.push_back(*number);
    }
    return groups;
}

void SetWeight(Attribute& own, bool next_left, double weight)
{
    own.flags |= next_left ? kNextLeftWeighted : kRightWeighted;
    const auto stored = static_cast<std::uint32_t>(std::lround(std::clamp(weight, 0.0, 1.0) * kWeightUnit));
    const auto bits = std::bit_cast<std::uint32_t>(own.data[2]);
    own.data[2] =
        std::bit_cast<float>(next_left ? (bits & 0xFFFFU) | stored << 16 : (bits & 0xFFFF0000U) | stored);
}

// How the slopes of a cubic key are found, then weights, then velocities, which do not count.
void ReadCubic(const KeyListCursor& list, Attribute& own)
{
    const std::vector<LetterGroup> groups = GroupsOf(list);
    own.flags = kCubic;
    const std::vector<double> none;
    const std::vector<double>& slopes = groups.empty() ? none : groups[0].numbers;
    if (!groups.empty() && (groups[0].letter == 's' || groups[0].letter == 'b') && slopes.size() < 2)
        list.Fail();
    const bool tcb = !groups.empty() && groups[0].letter == 't' && slopes.size() == 3;
    const bool automatic = groups.empty() || groups[0].letter == 'a' || slopes.size() < 2;
    own.flags |= tcb ? kTcb : automatic ? kAutomatic : 0;
    for (std::size_t i = 0; i < slopes.size() && i < 3 && !automatic; ++i)
        own.data[i] = static_cast<float>(slopes[i]);
    if (!tcb)
        own.data[2] = 0.0F;
    for (const LetterGroup& group : groups)
        if (group.letter == 'c')
            own.flags |= kClamp;
    if (groups.size() < 2 || tcb)
        return;
    const LetterGroup& weights = groups[1];
    if (weights.letter == 'a' && weights.numbers.size() == 2)
    {
        SetWeight(own, false, weights.numbers[0]);
        SetWeight(own, true, weights.numbers[1]);
    }
    else if ((weights.letter == 'r' || weights.letter == 'l') && weights.numbers.size() == 1)
    {
        SetWeight(own, weights.letter == 'l', weights.numbers[0]);
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
        char capital = 0;
        Key key = list.Take(capital);
        Attribute own;
        if (capital == 'U')
            ReadCubic(list, own);
        else if (capital == 'L')
            own.flags = kLinear;
        else
            own.flags = kConstant |
                        (!list.Details().empty() && list.Details()[0].Letter() == 'n' ? kConstantNext : 0);
        key.interpolation = InterpolationOf(own.flags);
        key.tangent = TangentOf(own.flags & kCubic ? own : Attribute{0, {}}, before);
        CheckKey(key, record.Offset());
        curve.Append(key);
        before = own;
    }
    curve.Close();
    ReadExtrapolation(channel, curve);
    return curve;
}

} // namespace mobu_host::fbx
