#pragma once

/// The second layer: objects, what connects them, and the classes' defaults.

#include "host/import/fbx/property_rows.h"
#include "host/import/fbx/record_tree.h"

#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace mobu_host::fbx
{

struct Object
{
    Record record;         // none for the scene's root
    std::string_view kind; // "Model", "NodeAttribute", "AnimationCurve" ...
    std::string_view name; // with its namespaces: "ns:Hips"
    std::string_view type; // "LimbNode", "Camera" ...
};

using ObjectIndex = std::uint32_t; // in file order, from 1; 0 is the scene's root

/// `source` belongs to `target`: a child to its parent, a curve to its curve node. With a property's name, it belongs
/// to that property.
struct Connection
{
    ObjectIndex source;
    ObjectIndex target;
    std::string_view property;
    std::uint32_t rank; // place in the file
};

class Document
{
public:
    /// `tree` must outlive the document. Objects of 7.x without an id or with a duplicate one are ignored, and so are
    /// connections to or from what is not in the file.
    explicit Document(const RecordTree& tree);

    const RecordTree& Tree() const { return tree_; }
    unsigned Version() const { return tree_.Version(); }
    bool IsNamed() const { return tree_.Version() < 7000; } // 6.x: objects go by name

    std::size_t Count() const { return objects_.size(); } // the root counted
    const Object& At(ObjectIndex index) const { return objects_[index]; }

    /// In file order.
    std::span<const Connection> Into(ObjectIndex target) const;
    std::span<const Connection> From(ObjectIndex source) const;

    /// The object of 6.x that goes by `full_name` ("ns:Hips\0\1Model", "Model::ns:Hips"); 0 for none and the root.
    ObjectIndex Named(std::string_view full_name) const;

    const PropertyRows& GlobalSettings() const { return global_settings_; }
    /// Rows of a class, which count where an object has none of its own: "FbxNode", "FbxCamera".
    const PropertyRows* Template(std::string_view class_name) const;

private:
    void ReadObjects();
    void ReadTemplates();
    void ReadConnections();
    bool Find(const Value& end, ObjectIndex& object) const;

    const RecordTree& tree_;
    std::vector<Object> objects_{1};
    std::unordered_map<std::int64_t, ObjectIndex> by_id_;
    std::unordered_map<std::string_view, ObjectIndex> by_name_;
    std::vector<Connection> by_target_;
    std::vector<Connection> by_source_;
    std::vector<std::uint32_t> target_begins_;
    std::vector<std::uint32_t> source_begins_;
    std::unordered_map<std::string_view, PropertyRows> templates_;
    PropertyRows global_settings_;
};

/// "Hips" of "Hips\0\1Model" and of "Model::Hips".
std::string_view NameOf(std::string_view full_name);

} // namespace mobu_host::fbx
