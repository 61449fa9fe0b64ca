#include "python/scene.h"

#include <algorithm>
#include <utility>

namespace tev2_python
{

using namespace TEV2_LOADER;

std::shared_ptr<Keeper> Scene::KeeperOf(const void* part)
{
    if (keepers_.size() >= most_keepers_)
    {
        std::erase_if(keepers_, [](const auto& entry) { return entry.second.expired(); });
        most_keepers_ = std::max(most_keepers_, 2 * keepers_.size());
    }
    std::weak_ptr<Keeper>& known = keepers_[part];
    std::shared_ptr<Keeper> keeper = known.lock();
    if (!keeper)
        known = keeper = std::make_shared<Keeper>();
    return keeper;
}

void Scene::HandOver(const void* part, std::shared_ptr<void> owner)
{
    Changed();
    const auto found = keepers_.find(part);
    if (found == keepers_.end())
        return;
    if (const std::shared_ptr<Keeper> keeper = found->second.lock())
        keeper->removed = std::move(owner);
    keepers_.erase(found);
}

std::shared_ptr<Keeper> Scene::KeeperOfNode(std::size_t index)
{
    if (node_keepers_.size() <= index)
        node_keepers_.resize(records.matrixHierarchy.nodes.size());
    std::shared_ptr<Keeper> keeper = node_keepers_[index].lock();
    if (!keeper)
    {
        keeper = std::make_shared<Keeper>();
        keeper->index = index;
        node_keepers_[index] = keeper;
    }
    return keeper;
}

void Scene::RemoveNodes(const std::vector<bool>& gone)
{
    Changed();
    auto& nodes = records.matrixHierarchy.nodes;
    node_keepers_.resize(nodes.size());
    std::size_t kept = 0;
    for (std::size_t index = 0; index < nodes.size(); ++index)
    {
        const std::shared_ptr<Keeper> keeper = node_keepers_[index].lock();
        if (gone[index])
        {
            if (keeper)
                keeper->removed = std::make_shared<TEV2_MATRIX_NODE>(std::move(nodes[index]));
            continue;
        }
        if (keeper)
            keeper->index = kept;
        if (kept != index)
        {
            nodes[kept] = std::move(nodes[index]);
            node_keepers_[kept] = std::move(node_keepers_[index]);
        }
        ++kept;
    }
    nodes.resize(kept);
    node_keepers_.resize(kept);
    records.matrixHierarchy.LinkParents();
}

void Scene::SetTime(float time)
{
    records.SetTime(time);
    time_ = time;
    evaluated_ = true;
}

float Scene::Time() const
{
    return time_.value_or(records.environment.timeRange.minimum);
}

void Scene::Evaluate()
{
    if (evaluated_)
        return;
    records.SetTime(Time());
    evaluated_ = true;
}

} // namespace tev2_python
