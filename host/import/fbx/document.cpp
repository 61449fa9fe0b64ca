#include "host/import/fbx/document.h"

#include <algorithm>

namespace mobu_host::fbx
{
namespace
{

constexpr std::string_view kBinarySeparator{"\0\1", 2};

// Groups by one end, in file order within each group.
void SortBy(ObjectIndex Connection::*end, std::size_t objects, std::vector<Connection>& connections,
            std::vector<std::uint32_t>& begins)
{
    begins.assign(objects + 1, 0);
    for (const Connection& connection : connections)
        ++begins[connection.*end + 1];
    for (std::size_t i = 1; i < begins.size(); ++i)
        begins[i] += begins[i - 1];
    std::sort(connections.begin(), connections.end(),
              [end](const Connection& a, const Connection& b)
              { return a.*end != b.*end ? a.*end < b.*end : a.rank < b.rank; });
}

std::size_t ChildCount(const Record& record)
{
    std::size_t count = 0;
    for ([[maybe_unused]] const Record& child : record.Children())
        ++count;
    return count;
}

} // namespace

std::string_view NameOf(std::string_view full_name)
{
    if (const std::size_t at = full_name.find(kBinarySeparator); at != std::string_view::npos)
        return full_name.substr(0, at);
    if (const std::size_t at = full_name.find("::"); at != std::string_view::npos)
        return full_name.substr(at + 2);
    return full_name;
}

Document::Document(const RecordTree& tree) : tree_(tree)
{
    ReadObjects();
    ReadTemplates();
    ReadConnections();
    if (const Record settings = tree.Root().Child("GlobalSettings"))
        global_settings_ = PropertyRows(settings);
}

void Document::ReadObjects()
{
    for (const Record& section : tree_.Root().Children())
    {
        if (section.Name() != "Objects")
            continue;
        objects_.reserve(objects_.size() + ChildCount(section));
        for (const Record& record : section.Children())
        {
            Object object;
            object.record = record;
            object.kind = record.Name();
            const Value first = record.ValueAt(0);
            const auto index = static_cast<ObjectIndex>(objects_.size());
            const std::size_t name_at = IsNamed() ? 0 : 1;
            const std::string_view full_name = record.TextAt(name_at);
            object.name = NameOf(full_name);
            object.type = record.TextAt(name_at + 1);
            if (IsNamed())
            {
                by_name_.emplace(full_name, index);
                if (object.kind == "GlobalSettings")
                    global_settings_ = PropertyRows(record);
            }
            else if (const auto id = first.Whole(); !id || !by_id_.emplace(*id, index).second)
            {
                continue; // nothing can be connected to it
            }
            objects_.push_back(object);
        }
    }
}

void Document::ReadTemplates()
{
    for (const Record& type : tree_.Root().Child("Definitions").Children())
        for (const Record& record : type.Children())
            if (record.Name() == "PropertyTemplate")
                templates_.try_emplace(record.TextAt(0), record);
}

bool Document::Find(const Value& end, ObjectIndex& object) const
{
    if (IsNamed())
    {
        const auto name = end.Text();
        if (!name)
            return false;
        object = 0;
        if (NameOf(*name) == "Scene" && !by_name_.contains(*name))
            return true;
        object = Named(*name);
        return object != 0;
    }
    const auto id = end.Whole();
    if (!id)
        return false;
    object = 0;
    if (*id == 0)
        return true;
    const auto found = by_id_.find(*id);
    if (found == by_id_.end())
        return false;
    object = found->second;
    return true;
}

void Document::ReadConnections()
{
    for (const Record& section : tree_.Root().Children())
    {
        if (section.Name() != "Connections")
            continue;
        for (const Record& record : section.Children())
        {
            const std::string_view form = record.TextAt(0);
            if (form != "OO" && form != "OP")
                continue;
            Connection connection{};
            if (!Find(record.ValueAt(1), connection.source) || !Find(record.ValueAt(2), connection.target) ||
                connection.source == connection.target)
                continue;
            if (form == "OP")
                connection.property = record.TextAt(3);
            connection.rank = static_cast<std::uint32_t>(by_target_.size());
            by_target_.push_back(connection);
        }
    }
    by_source_ = by_target_;
    SortBy(&Connection::target, objects_.size(), by_target_, target_begins_);
    SortBy(&Connection::source, objects_.size(), by_source_, source_begins_);
}

std::span<const Connection> Document::Into(ObjectIndex target) const
{
    return std::span(by_target_)
        .subspan(target_begins_[target], target_begins_[target + 1] - target_begins_[target]);
}

std::span<const Connection> Document::From(ObjectIndex source) const
{
    return std::span(by_source_)
        .subspan(source_begins_[source], source_begins_[source + 1] - source_begins_[source]);
}

ObjectIndex Document::Named(std::string_view full_name) const
{
    const auto found = by_name_.find(full_name);
    return found == by_name_.end() ? 0 : found->second;
}

const PropertyRows* Document::Template(std::string_view class_name) const
{
    const auto found = templates_.find(class_name);
    return found == templates_.end() ? nullptr : &found->second;
}

} // namespace mobu_host::fbx
