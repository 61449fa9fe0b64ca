#include "python/scene.h"

#include "python/bindings.h"

#include <algorithm>
#include <utility>

namespace tev2_python
{

namespace py = pybind11;
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

void Scene::RemoveNode(std::size_t index)
{
    Changed();
    auto& nodes = records.matrixHierarchy.nodes;
    const auto place = static_cast<std::ptrdiff_t>(index);
    if (index < node_keepers_.size())
    {
        if (const std::shared_ptr<Keeper> keeper = node_keepers_[index].lock())
        {
            auto removed = std::make_shared<TEV2_MATRIX_NODE>(std::move(nodes[index]));
            removed->parentMatrix = nullptr;
            keeper->removed = std::move(removed);
        }
        node_keepers_.erase(node_keepers_.begin() + place);
        for (std::size_t after = index; after < node_keepers_.size(); ++after)
            if (const std::shared_ptr<Keeper> keeper = node_keepers_[after].lock())
                keeper->index = after;
    }
    nodes.erase(nodes.begin() + place);
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

void BindScene(py::module_& module)
{
    py::class_<Scene, std::shared_ptr<Scene>>(module, "Scene", "A whole scene.").def(py::init<>());
}

} // namespace tev2_python
