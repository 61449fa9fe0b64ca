#pragma once

#include "tev2_loader/tev2.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

namespace tev2_python
{

/// Keeps a part of a scene in memory once an edit has taken it out. Everything in Python that refers to the part holds
/// its keeper, and the edit hands the part over.
struct Keeper
{
    std::size_t index = 0;         ///< of a node that is in its scene
    std::shared_ptr<void> removed; ///< null while the part is in its scene

    bool InScene() const { return removed == nullptr; }
};

/// A scene as Python holds it: by shared pointer, as does everything that refers to a part of it.
///
/// Arrays of Python are views of the records' memory. So no memory that Python may have seen is ever moved or freed by
/// an edit: an edit makes a new track or record and takes the old one out with Remove. Nodes do move, but what
/// they own does not.
class Scene
{
public:
    TEV2_LOADER::TEV2 records;

    /// The keeper of a track or record that the scene owns, at this address. One thread at a time: hold the GIL.
    std::shared_ptr<Keeper> KeeperOf(const void* part);

    /// Takes a track or record out: it lives on as long as its keeper is held. May be null.
    template <typename Part>
    void Remove(std::unique_ptr<Part> part)
    {
        const void* const address = part.get();
        if (part)
            HandOver(address, std::shared_ptr<void>(std::move(part)));
    }

    /// The keeper of a node, which knows its index.
    std::shared_ptr<Keeper> KeeperOfNode(std::size_t index);

    /// Takes out the nodes for which `gone` is true; the others close up. The keeper of each gets a TEV2_MATRIX_NODE.
    void RemoveNodes(const std::vector<bool>& gone);

    /// To be called after every edit: world matrices are evaluated again when asked for.
    void Changed() { evaluated_ = false; }

    /// Evaluates the scene at a time in seconds.
    void SetTime(float time);

    /// The time that the scene is at: that of the last SetTime, or the start of its time range.
    float Time() const;

    /// Evaluates the scene at its time, unless it is.
    void Evaluate();

private:
    void HandOver(const void* part, std::shared_ptr<void> owner);

    std::unordered_map<const void*, std::weak_ptr<Keeper>> keepers_;
    std::size_t most_keepers_ = 64;                   ///< before those that nobody holds are forgotten
    std::vector<std::weak_ptr<Keeper>> node_keepers_; ///< by index; may be shorter than the nodes
    std::optional<float> time_;
    bool evaluated_ = false;
};

} // namespace tev2_python
