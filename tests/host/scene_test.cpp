#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "tests/host/scene_steps.h"
#include "tests/support/allocation_watch.h"

namespace mobu_host
{
namespace
{

std::string PreOrder()
{
    std::string names;
    for (FBModel* model : ModelsInPreOrder())
        names += std::string(model->Name) + " ";
    return names;
}

class SceneTest : public testing::Test
{
protected:
    SceneTest() { NewScene(); }
    FBTake* Current() { return system_.CurrentTake; }
    FBSystem system_;
    FBPlayerControl player_;
};

// A camera type of its own, as a plug-in could register one.
class StereoCamera : public FBCamera
{
    FBClassDeclare(StereoCamera, FBCamera);

public:
    explicit StereoCamera(const char* name) : FBCamera(name) {}
};
FBClassImplementation(StereoCamera);

TEST_F(SceneTest, StartsWithNothingButWhatEverySceneHas)
{
    AddModel("Gone");
    AddTake("Gone", 0.0, 1.0);
    AddCameraSwitcher();
    AddConstraint("Gone", true);
    SetSceneFilePath("/scenes/a.fbx");
    EXPECT_STREQ(Scene().FilePath, "/scenes/a.fbx");
    EXPECT_STREQ(FBApplication().FBXFileName, "/scenes/a.fbx");
    player_.Goto(Seconds(1.0));
    NewScene();

    FBScene& scene = *system_.Scene;
    FBModel* root = system_.SceneRootModel;
    EXPECT_EQ(&scene, &Scene());
    EXPECT_EQ(root, static_cast<FBModel*>(scene.RootModel));
    EXPECT_NE(root, static_cast<FBModel*>(system_.RootModel));
    EXPECT_FALSE(root->Parent);
    EXPECT_EQ(PreOrder(), "Scene ");
    EXPECT_EQ(scene.Constraints.GetCount(), 0);
    EXPECT_FALSE(FBFindModelByLabelName("Camera Switcher"));
    ASSERT_EQ(scene.Takes.GetCount(), 1);
    EXPECT_STREQ(scene.Takes[0]->Name, "Take 001");
    EXPECT_EQ(Current(), scene.Takes[0]);
    EXPECT_EQ(Now(), FBTime::Zero);
    EXPECT_EQ(static_cast<const char*>(scene.FilePath), nullptr);
    EXPECT_STREQ(FBApplication().FBXFileName, "");
    SceneBehaviour().empty_path_when_unsaved = true;
    EXPECT_STREQ(scene.FilePath, "");

    const char* const producers[] = {"Perspective", "Front", "Back", "Right", "Left", "Top", "Bottom"};
    ASSERT_EQ(scene.Cameras.GetCount(), 7);
    for (int i = 0; i < 7; ++i)
    {
        FBCamera* camera = scene.Cameras[i];
        EXPECT_STREQ(camera->LongName, (std::string("Producer ") + producers[i]).c_str());
        EXPECT_TRUE(camera->SystemCamera);
        EXPECT_FALSE(camera->Parent);
        EXPECT_EQ(FBFindModelByLabelName(camera->LongName), camera);
    }
}

TEST_F(SceneTest, ParentAndChildrenAgree)
{
    FBModel* root = system_.SceneRootModel;
    FBModel* a = AddModel("A");
    FBModel* b = AddModel("B");
    FBModel* c = AddModel("C", a);
    FBModel* d = AddModel("D", c);
    EXPECT_EQ(PreOrder(), "Scene A C D B ");
    b->Parent = a;
    EXPECT_EQ(a->Children[1], b);
    EXPECT_EQ(root->Children.GetCount(), 1);
    a->Parent = d; // below itself: refused
    EXPECT_EQ(static_cast<FBModel*>(a->Parent), root);
    EXPECT_EQ(PreOrder(), "Scene A C D B ");
    b->Children.Add(c);
    EXPECT_EQ(PreOrder(), "Scene A B C D ");
    EXPECT_EQ(static_cast<FBModel*>(c->Parent), b);
    b->Children.Remove(c);
    EXPECT_EQ(static_cast<FBModel*>(c->Parent), root);
    d->Parent = nullptr;
    EXPECT_EQ(PreOrder(), "Scene A B C D ");
    EXPECT_EQ(root->Children.Find(d), 2);
    EXPECT_EQ(root->Children.Find(b), -1);
    EXPECT_FALSE(root->Children[-1]);
    EXPECT_FALSE(root->Children[3]);
    root->Parent = a;
    Scene().Cameras[0]->Parent = a;
    EXPECT_EQ(PreOrder(), "Scene A B C D ");
}

TEST_F(SceneTest, DeletingAModelLeavesNothingPointingToIt)
{
    FBModel* parent = AddModel("Parent");
    FBModel* target = AddModel("Target", parent);
    FBModel* child = AddModel("Child", target);
    FBCamera* camera = AddCamera("Camera");
    camera->Interest = target;
    FBTake& take = *system_.CurrentTake;
    AnimateTransform(*target, take, [](double) { return LocalTransform(); });
    AnimateProperty(target->Visibility, take, [](double, int) { return 1.0; });
    FBConstraint* constraint = AddConstraint("C", true, target, [](double) { return LocalTransform(); });
    Scene().Evaluate();
    target->FBDelete();
    EXPECT_EQ(static_cast<FBModel*>(child->Parent), parent);
    EXPECT_FALSE(camera->Interest);
    EXPECT_TRUE(Scene().Evaluate());
    EXPECT_EQ(PreOrder(), "Scene Parent Child Camera ");
    constraint->FBDelete();
    camera->FBDelete();
    EXPECT_EQ(Scene().Cameras.GetCount(), 7);
    EXPECT_EQ(Scene().Constraints.GetCount(), 0);
    EXPECT_TRUE(Scene().Evaluate());
}

TEST_F(SceneTest, FindsModelsByLongNameAsItIsNow)
{
    AddModel("ns:Hip");
    FBModel* second = AddModel("Hip");
    FBModel* twin = AddModel("Twin", second);
    AddModel("Twin");
    EXPECT_STREQ(FBFindModelByLabelName("ns:Hip")->Name, "Hip");
    EXPECT_EQ(FBFindModelByLabelName("Hip"), second);
    EXPECT_EQ(FBFindModelByLabelName("Twin"), twin); // the first in the tree
    EXPECT_FALSE(FBFindModelByLabelName("hip"));
    EXPECT_FALSE(FBFindModelByLabelName(""));
    EXPECT_FALSE(FBFindModelByLabelName(nullptr));
    twin->LongName = "Other";
    EXPECT_EQ(FBFindModelByLabelName("Other"), twin);
    second->Name = "Twin";
    EXPECT_EQ(FindModel("Twin"), second);
    second->FBDelete();
    EXPECT_NE(FindModel("Twin"), nullptr);
    EXPECT_FALSE(FindModel("Hip"));
    EXPECT_FALSE(FindModel("Producer Front")) << "not below the root of the scene";
}

TEST_F(SceneTest, TypesFollowTheDeclaredParents)
{
    FBCamera* camera = AddCamera("Camera");
    StereoCamera* stereo = AddModelOf<StereoCamera>("Stereo", camera);
    FBCameraSwitcher* switcher = AddCameraSwitcher();
    FBConstraint* constraint = AddConstraint("Real", true);
    FBConstraint* foreign = AddForeignConstraint("Foreign", true);
    const struct
    {
        FBComponent* component;
        int exact;
        std::vector<int> is, is_not;
    } cases[] = {
        {camera, FBCamera::TypeInfo, {FBModel::TypeInfo, FBPlug::TypeInfo}, {FBConstraint::TypeInfo}},
        {stereo, StereoCamera::TypeInfo, {FBCamera::TypeInfo}, {}},
        {switcher, FBCameraSwitcher::TypeInfo, {FBBox::TypeInfo}, {FBModel::TypeInfo, FBCamera::TypeInfo}},
        {constraint, FBConstraint::TypeInfo, {}, {}},
        {foreign, foreign->GetTypeId(), {FBBox::TypeInfo}, {FBConstraint::TypeInfo}},
    };
    for (const auto& c : cases)
    {
        EXPECT_EQ(c.component->GetTypeId(), c.exact);
        EXPECT_TRUE(c.component->Is(c.exact));
        for (const int type : c.is)
            EXPECT_TRUE(c.component->Is(type)) << c.component->ClassName() << type;
        for (const int type : c.is_not)
            EXPECT_FALSE(c.component->Is(type)) << c.component->ClassName() << type;
    }
    EXPECT_STREQ(stereo->ClassName(), "StereoCamera");
    EXPECT_EQ(FBCast<FBCamera>(stereo), stereo);
    EXPECT_EQ(FBCast<FBCamera>(switcher), nullptr);
    EXPECT_EQ(Scene().Cameras[7], camera);
    EXPECT_EQ(Scene().Cameras[8], stereo);
    EXPECT_EQ(Scene().Constraints.GetCount(), 2);
}

TEST_F(SceneTest, SwitcherFollowsItsAnimationUnlessACameraIsChosen)
{
    FBCamera* first = AddCamera("First");
    FBCamera* second = AddCamera("Second");
    EXPECT_FALSE(FBFindModelByLabelName("Camera Switcher"));
    FBCameraSwitcher* switcher = AddCameraSwitcher();
    EXPECT_EQ(AddCameraSwitcher(), switcher);
    EXPECT_EQ(FBFindModelByLabelName("Camera Switcher"), switcher);
    AnimateProperty(switcher->CurrentCameraIndex, *system_.CurrentTake,
                    [](double seconds, int) { return seconds < 1.0 ? 1.0 : 2.0; });
    FBCameraSwitcher view;
    Scene().Evaluate();
    EXPECT_EQ(view.CurrentCameraIndex, 1);
    EXPECT_EQ(static_cast<FBCamera*>(view.CurrentCamera), first);
    player_.Goto(Seconds(1.0));
    EXPECT_EQ(view.CurrentCameraIndex, 1);
    Scene().Evaluate();
    EXPECT_EQ(view.CurrentCameraIndex, 2);
    EXPECT_EQ(static_cast<FBCamera*>(switcher->CurrentCamera), second);
    view.CurrentCamera = first;
    Scene().Evaluate();
    EXPECT_EQ(switcher->CurrentCameraIndex, 1);
    view.CurrentCameraIndex = -1;
    EXPECT_EQ(switcher->CurrentCameraIndex, 2);
    EXPECT_EQ(PreOrder(), "Scene First Second ");
}

TEST_F(SceneTest, TakeChangeShowsAtTheNextEvaluation)
{
    FBModel& model = *AddModel("Model");
    FBModel& still = *AddModel("Still");
    FBProperty* level = AddUserProperty(model, "Level", kFBPT_double, true);
    double own = 7.0;
    level->SetData(&own);
    model.Translation = FBVector3d(-1.0, 0.0, 0.0);
    still.Translation = FBVector3d(0.0, 9.0, 0.0);
    ClearTakes();
    EXPECT_FALSE(system_.CurrentTake);
    FBTake* one = AddTake("One", 0.0, 1.0);
    FBTake* two = AddTake("Two", 0.0, 1.0);
    FBTake* bare = AddTake("Bare", 0.0, 1.0);
    EXPECT_EQ(Current(), one);
    AnimateTransform(model, *one, [](double) { return At(10.0); });
    AnimateTransform(model, *two, [](double) { return At(20.0); });
    AnimateProperty(*level, *one, [](double, int) { return 100.0; });

    const struct
    {
        FBTake* take;
        double x;
        const char* level;
    } steps[] = {
        {one, 10.0, "100"}, {two, 20.0, "7"}, {one, 10.0, "100"}, {bare, -1.0, "7"}, {two, 20.0, "7"}};
    double before = 0.0; // never evaluated
    player_.Goto(Seconds(0.5));
    for (const auto& step : steps)
    {
        system_.CurrentTake = step.take;
        EXPECT_EQ(X(model), before);
        EXPECT_EQ(Now(), Seconds(0.5));
        Scene().Evaluate();
        EXPECT_EQ(X(model), step.x);
        EXPECT_STREQ(level->AsString(), step.level);
        EXPECT_EQ(Y(still), 9.0);
        before = step.x;
    }
}

TEST_F(SceneTest, TakesAreCopiedWithTheirAnimationAndLeave)
{
    FBModel& model = *AddModel("Model");
    FBTake* const first = Current();
    FBTake* const moved = AddTake("Moved", 0.0, 1.0);
    AnimateTransform(model, *moved, [](double) { return At(20.0); });
    FBTake* const copy = moved->CopyTake("Copy");
    EXPECT_EQ(Scene().Takes[2], copy);
    AnimateTransform(model, *moved, {});
    system_.CurrentTake = moved;
    RemoveTake(moved);
    EXPECT_EQ(Current(), first);
    EXPECT_EQ(Scene().Takes.Find(moved), -1);
    system_.CurrentTake = copy;
    Scene().Evaluate();
    EXPECT_EQ(X(model), 20.0);

    FBTake outsider("Outsider");
    system_.CurrentTake = &outsider;
    EXPECT_EQ(Current(), copy) << "not in the scene";
    Scene().Takes.Add(&outsider);
    system_.CurrentTake = &outsider;
    EXPECT_EQ(Current(), &outsider);
    Scene().Takes.Remove(&outsider);
    EXPECT_EQ(Current(), first);
}

TEST_F(SceneTest, ConstraintsActFromTheNextEvaluationOn)
{
    FBModel& model = *AddModel("Model");
    AnimateTransform(model, *Current(), [](double seconds) { return At(seconds); });
    FBConstraint* constraint = AddConstraint("Pin", true, &model, [](double) { return At(0.0, 50.0); });
    EvaluateAt(3.0);
    EXPECT_EQ(Y(model), 50.0);
    constraint->Active = false;
    EXPECT_EQ(Y(model), 50.0);
    Scene().Evaluate();
    EXPECT_EQ(X(model), 3.0);
    EXPECT_EQ(Y(model), 0.0);
}

TEST_F(SceneTest, ObserversSeeEveryStep)
{
    std::string log;
    {
        SceneObserver observer(
            {[&](FBTime time, FBTake* take)
             { log += "goto " + std::to_string(time.GetFrame()) + std::string(take->Name) + ";"; },
             [&](FBTime time, FBTake*) { log += "at " + std::to_string(time.GetFrame()) + ";"; }});
        player_.Goto(Seconds(1.0));
        Scene().Evaluate();
        NewScene();
        player_.Goto(Seconds(2.0));
    }
    player_.Goto(Seconds(3.0));
    Scene().Evaluate();
    EXPECT_EQ(log, "goto 30Take 001;at 30;goto 60Take 001;");
}

TEST_F(SceneTest, EvaluationAllocatesNothing)
{
    FBModel* parent = nullptr;
    FBTake& take = *system_.CurrentTake;
    for (int i = 0; i < 300; ++i)
    {
        parent = AddModel("Model " + std::to_string(i), i % 10 ? parent : nullptr);
        if (i % 2)
            AnimateTransform(*parent, take, [](double seconds) { return At(seconds); });
        else
            AnimateLocalMatrix(*parent, take, [](double) { return FBMatrix(); });
        AnimateProperty(*AddUserProperty(*parent, "P", kFBPT_ColorRGBA, true), take,
                        [](double seconds, int) { return seconds; });
    }
    Scene().Evaluate(); // works out the order once
    const long before = tv2_tests::AllocationCount();
    FBMatrix matrix;
    for (int frame = 0; frame < 100; ++frame)
    {
        player_.Goto(FBTime(frame * 1'000'000));
        Scene().Evaluate();
        parent->GetMatrix(matrix);
    }
    EXPECT_EQ(tv2_tests::AllocationCount(), before);
}

} // namespace
} // namespace mobu_host
