#pragma once

#include "tev2_loader/records/matrix_hierarchy.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace tev2_compare
{

/// No node, or, of a parent, the top level.
inline constexpr std::uint32_t kNoNode = TEV2_LOADER::kNone;

/// The nodes of a hierarchy as a tree, whatever their parent indices are: a node whose parent does not exist is at top
/// level, and so is the first node of a circle of parents. Indices are those of the hierarchy, which must outlive it.
class NodeTree
{
public:
    explicit NodeTree(const TEV2_LOADER::TEV2_MATRIX_HIERARCHY& hierarchy);

    std::size_t Count() const { return parents_.size(); }

    /// As UTF-8.
    const std::string& Name(std::uint32_t node) const { return names_[node]; }

    std::uint32_t Parent(std::uint32_t node) const { return parents_[node]; }

    /// Whether it is the first node of a circle of parents.
    bool IsCut(std::uint32_t node) const { return cut_[node]; }

    /// Relative to its parent at its first key.
    const TEV2_LOADER::TEV2_VECTOR_3& FirstPlace(std::uint32_t node) const { return first_places_[node]; }

    /// In file order. kNoNode: those at top level.
    std::span<const std::uint32_t> Children(std::uint32_t node) const;

    /// Every node once, each directly followed by all that is below it, siblings in file order.
    std::span<const std::uint32_t> PreOrder() const { return pre_order_; }

    /// The names from the top level to the node, "Hips/Spine/Head"; of more than 16 the last, after "...".
    std::string Path(std::uint32_t node) const;

    /// Its name where no other node has that, otherwise its path.
    std::string Label(std::uint32_t node) const { return unique_[node] ? names_[node] : Path(node); }

private:
    void FindUniqueNames();
    void BreakCircles();
    void SortChildren();
    void Walk();

    std::vector<std::string> names_;
    std::vector<bool> unique_;
    std::vector<std::uint32_t> parents_;
    std::vector<bool> cut_;
    std::vector<TEV2_LOADER::TEV2_VECTOR_3> first_places_;
    std::vector<std::uint32_t> first_child_; ///< by node; the top level after the last
    std::vector<std::uint32_t> children_;
    std::vector<std::uint32_t> pre_order_;
};

} // namespace tev2_compare
