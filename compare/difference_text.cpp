#include "compare/difference_text.h"

#include "text/message_text.h"
#include "text/printable.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace tev2_compare
{

namespace
{

/// With three digits that count, and no more than three places.
std::string AmountText(double amount)
{
    std::array<char, 40> text{};
    const int places = amount >= 100.0 ? 0 : amount >= 10.0 ? 1 : amount >= 1.0 ? 2 : 3;
    if (amount < 0.001 || amount >= 1e9)
        std::snprintf(text.data(), text.size(), "%.2g", amount);
    else
        std::snprintf(text.data(), text.size(), "%.*f", places, amount);
    std::string shorter = text.data();
    if (shorter.find('.') != std::string::npos && shorter.find('e') == std::string::npos)
    {
        shorter.erase(shorter.find_last_not_of('0') + 1);
        if (shorter.ends_with('.'))
            shorter.pop_back();
    }
    return shorter;
}

std::string UnitText(Unit unit)
{
    return unit == Unit::Percent ? " %" : ' ' + std::string(NameOf(unit));
}

class DifferenceWords
{
public:
    DifferenceWords(const Difference& difference, const SceneMatch& match)
        : difference_(difference), match_(match)
    {
    }

    std::string Text() const
    {
        if (difference_.topic == Topic::Motion)
            return MotionText();
        if (difference_.topic != Topic::Rig || difference_.aspect == Aspect::Field)
            return ValueText();
        if (difference_.aspect == Aspect::Property)
            return PropertyText();
        return difference_.object == "node" ? NodesText() : ObjectText();
    }

private:
    bool Several() const { return difference_.left_nodes.size() > 1 || difference_.right_nodes.size() > 1; }

    /// The nodes that it is about; where their parent is given, too, their names are enough.
    std::string Nodes() const
    {
        const bool below = difference_.change == Change::Missing || difference_.change == Change::Added;
        const bool names_only = below && difference_.aspect == Aspect::Object;
        const bool left = !difference_.left_nodes.empty();
        const NodeTree& tree = left ? match_.left_tree : match_.right_tree;
        std::vector<std::string> names;
        for (const std::uint32_t node : left ? difference_.left_nodes : difference_.right_nodes)
            names.push_back(names_only ? tree.Name(node) : tree.Label(node));
        return Listed(names);
    }

    /// Where they are, if not at top level.
    static std::string Below(const std::string& parent)
    {
        return parent.empty() ? " at top level" : " below " + Quoted(parent);
    }

    std::string AndBelow() const
    {
        if (difference_.below == 0)
            return "";
        return ", and " + CountOf(difference_.below, "node", "nodes") + " below " +
               (Several() ? "them" : "it");
    }

    std::string NodesText() const
    {
        const std::string are = Several() ? " are" : " is";
        const std::string have = Several() ? " have" : " has";
        switch (difference_.change)
        {
        case Change::Missing:
            return Nodes() + Below(difference_.left) + are + " missing" + AndBelow();
        case Change::Added:
            return Nodes() + Below(difference_.right) + are + " new" + AndBelow();
        case Change::Moved:
            return Nodes() + have + " moved" + AndBelow() + ", to" + Place(difference_.right) + " from" +
                   Place(difference_.left);
        case Change::Renamed:
            return difference_.aspect == Aspect::Namespace
                       ? NamespaceText()
                       : NodeName() + " is called " + Quoted(difference_.right);
        default:
            return Nodes() + are + " elsewhere in the file: the order of nodes is another";
        }
    }

    static std::string Place(const std::string& parent)
    {
        return parent.empty() ? " top level" : " below " + Quoted(parent);
    }

    std::string NamespaceText() const
    {
        const auto named = [](const std::string& space)
        { return space.empty() ? std::string("no namespace") : "the namespace " + Quoted(space); };
        return Nodes() + (Several() ? " have " : " has ") + named(difference_.right) + " instead of " +
               named(difference_.left);
    }

    bool SeveralObjects() const { return !difference_.more_names.empty(); }

    /// `cameras "Left", "Right"`
    std::string Objects() const
    {
        if (!SeveralObjects())
            return Owner();
        std::vector<std::string> names = {difference_.name};
        names.insert(names.end(), difference_.more_names.begin(), difference_.more_names.end());
        const bool hiss = difference_.object.ends_with("sh");
        return difference_.object + (hiss ? "es " : "s ") + Listed(names);
    }

    /// `camera "Left"`, `"Hips"` of a node
    std::string Owner() const
    {
        if (difference_.object == "node")
            return NodeName();
        return difference_.object + (difference_.name.empty() ? "" : ' ' + Quoted(difference_.name));
    }

    /// With its path where its name does not say which it is.
    std::string NodeName() const
    {
        if (difference_.left_nodes.empty())
            return Quoted(difference_.name);
        return Quoted(match_.left_tree.Label(difference_.left_nodes.front()));
    }

    std::string ObjectText() const
    {
        const bool bone = difference_.aspect == Aspect::Bone;
        switch (difference_.change)
        {
        case Change::Missing:
            return bone ? Owner() + " does not follow " + Quoted(difference_.part)
                        : Objects() + (SeveralObjects() ? " are missing" : " is missing");
        case Change::Added:
            return bone ? Owner() + " follows " + Quoted(difference_.part) + ", too"
                        : Objects() + (SeveralObjects() ? " are new" : " is new");
        case Change::Moved:
            return Owner() + " is at " + Quoted(difference_.right) + " instead of " +
                   Quoted(difference_.left);
        default:
            return Owner() + " is of " + difference_.right + " instead of " + difference_.left;
        }
    }

    std::string PropertyText() const
    {
        const std::string property =
            "user property " + Quoted(difference_.part) + " of " + (Several() ? Nodes() : Owner());
        switch (difference_.change)
        {
        case Change::Missing:
            return property + " is missing (" + difference_.left + ')';
        case Change::Added:
            return property + " is new (" + difference_.right + ')';
        default:
            return property + ": " + difference_.right + " instead of " + difference_.left;
        }
    }

    std::string Deviations() const
    {
        std::string text;
        for (const Deviation& deviation : difference_.deviations)
            text += (text.empty() ? "" : "; ") +
                    (difference_.topic == Topic::Motion && deviation.unit == Unit::Percent ? "scale "
                                                                                           : std::string()) +
                    DeviationText(deviation);
        return text;
    }

    std::string MotionText() const
    {
        std::string text = NodeName() + ": " + Deviations();
        if (difference_.aspect != Aspect::WorldPose)
            return text;
        const bool same_parent = match_.nodes.SameParent(match_.left_tree, difference_.left_nodes.front(),
                                                         match_.right_tree, difference_.right_nodes.front());
        return text + (same_parent ? ", in the world: smaller deviations above it add up"
                                   : ", in the world: it has another parent");
    }

    std::string ValueText() const
    {
        std::string text = Owner();
        if (difference_.aspect == Aspect::Property)
            text = "user property " + Quoted(difference_.part) + " of " + Owner();
        else if (difference_.object == "scene")
            text = difference_.part;
        else if (!difference_.part.empty())
            text += ", " + OneLine(difference_.part);
        if (difference_.change == Change::Missing)
            return text + " is missing";
        if (difference_.change == Change::Added)
            return text + " is new";
        const std::string amounts = Deviations();
        text += ": ";
        if (difference_.elements > 0)
            return text + CountText(difference_.differing) + " of " + CountText(difference_.elements) +
                   " differ" + (amounts.empty() ? "" : ", by up to " + amounts);
        text += OneLine(difference_.right) + " instead of " + OneLine(difference_.left);
        if (amounts.empty())
            return text;
        return text + (difference_.deviations.front().unit == Unit::Value ? " " : ", ") + amounts;
    }

    const Difference& difference_;
    const SceneMatch& match_;
};

} // namespace

std::string TimeText(float time)
{
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.3f", static_cast<double>(time));
    std::string shorter = text.data();
    shorter.erase(shorter.find_last_not_of('0') + 1);
    if (shorter.ends_with('.'))
        shorter.pop_back();
    return shorter + " s";
}

std::string DeviationText(const Deviation& deviation)
{
    if (!std::isfinite(deviation.worst))
        return "not a number in one of them at " + TimeText(deviation.first_time);
    std::string text =
        deviation.unit == Unit::Value ? "" : AmountText(deviation.worst) + UnitText(deviation.unit);
    if (!deviation.over_time)
        return text;
    text += (text.empty() ? "at " : " at ") + TimeText(deviation.worst_time);
    if (deviation.first_time != deviation.worst_time)
        text += ", first at " + TimeText(deviation.first_time);
    return text;
}

std::string DifferenceText(const Difference& difference, const SceneMatch& match)
{
    return DifferenceWords(difference, match).Text();
}

} // namespace tev2_compare
