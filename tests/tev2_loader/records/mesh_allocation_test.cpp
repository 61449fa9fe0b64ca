#include "tests/support/allocation_watch.h"
#include "tests/tev2_loader/records/mesh_bytes.h"

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

/// How often operator new is called while time moves.
long AllocationsOf(TEV2_INTERNAL_ANIM_OBJECT& object)
{
    const long before = AllocationCount();
    for (const float time : {1.0f, 2.0f, 0.0f, 9.0f})
        object.SetTime(time);
    object.Update(0.25f);
    return AllocationCount() - before;
}

template <typename Mesh>
void ExpectNothingAllocated()
{
    Mesh mesh;
    EXPECT_EQ(LoadBodyOf(mesh, BytesOf(mesh).data), "");
    EXPECT_EQ(AllocationsOf(mesh), 0) << "loaded";
    EXPECT_NE(LoadBodyOf(mesh, HeadBytes().data), "");
    EXPECT_EQ(AllocationsOf(mesh), 0) << "kept";
    EXPECT_TRUE(mesh.vertices.Empty());
}

TEST(MeshAllocation, MovingTimeTakesNone)
{
    ExpectNothingAllocated<TEV2_RIGID>();
    ExpectNothingAllocated<TEV2_ANIM_MESH>();
    ExpectNothingAllocated<TEV2_MORPH_MESH>();
    ExpectNothingAllocated<TEV2_WEIGHTED_MESH>();

    TEV2_ANIM_MESH made;
    FillMesh(made);
    EXPECT_EQ(AllocationsOf(made), 3) << "one for each column, at the first time";
    EXPECT_EQ(AllocationsOf(made), 0);
}

TEST(MeshAllocation, ReadingAnEmptyBoxTakesNone)
{
    const TEV2_WEIGHTED_MESH mesh;
    const long before = AllocationCount();
    EXPECT_EQ(mesh.vertices->Count() + mesh.skin->bones.size(), 0u);
    EXPECT_EQ(AllocationCount(), before);
}

} // namespace
