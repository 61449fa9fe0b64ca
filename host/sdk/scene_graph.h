#pragma once

#include "mobu_host/scene.h"

#include <memory>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace mobu_host
{

/// The objects of the scene: the tree of models, and the lists of cameras, constraints and takes. An object is added
/// completely or, when memory runs out, not at all.
class SceneGraph
{
public:
    SceneGraph();
    ~SceneGraph();

    /// Makes the scene object and the system root; later calls do nothing.
    void MakeScene();
    /// Makes the root model and the system's cameras of an empty scene.
    void MakeSystemObjects();
    /// Deletes all that was added.
    void Clear();

    void Add(FBModel& model, FBModel* parent); ///< parent null: a system object outside the tree
    void Add(FBCamera& camera);                ///< to the list of cameras; it was added as a model
    void Add(FBConstraint& constraint);
    bool Add(FBTake& take); ///< false when it is in the scene already

    bool Holds(FBModel& model) const;
    void Remove(FBModel& model); ///< its children go to its parent
    void Remove(FBCamera& camera);
    void Remove(FBConstraint& constraint);
    void Remove(FBTake& take);

    void SetParent(FBModel& model, FBModel* parent); ///< null: the scene root; a loop is refused
    void OrderCameras(const std::vector<FBCamera*>& order);

    const std::vector<FBModel*>& TreeInPreOrder();
    const std::vector<FBModel*>& SystemModels() const { return system_models_; }
    /// The first model of the tree with this name, or one of the system's; null when there is none.
    FBModel* FindModel(const char* long_name);
    FBModel* FindInTree(std::string_view long_name);
    FBCamera* UserCamera(int one_based) const;
    int UserCameraIndex(const FBCamera* camera) const; ///< 0 when it is none

    std::unique_ptr<FBScene> scene;
    std::unique_ptr<FBModel> system_root;
    FBModel* root = nullptr;
    FBCameraSwitcher* switcher = nullptr;
    FBCamera* switcher_override = nullptr;

private:
    void Own(FBComponent& component);
    void Disown(FBComponent& component);

    std::vector<FBComponent*> owned_; // in order of creation
    std::vector<FBModel*> pre_order_; // of the tree, unless it is stale
    std::vector<FBModel*> system_models_;
    std::unordered_set<const FBTake*> takes_;
    bool order_is_stale_ = true;
    std::unordered_map<std::string_view, FBModel*>
        names_; // of the tree, as of names_version_; the texts are the models'
    unsigned long long names_version_ = 0;
};

} // namespace mobu_host
