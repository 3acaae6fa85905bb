// The first step of a session. Apart from the others, because whether a distance was ever stored is
// never forgotten.
#include "lodbands.h"

#include <tessera/lodviewer.h>

namespace {

using tessera::LodViewer;

TEST(LodDistance, IsNotTakenWithoutAHost) {
    IAviaryUtil& aviary = tessera::aviaryUtil();
    ASSERT_EQ(GetCOREInterface(), nullptr);
    aviary.SetLodDistance(70);
    EXPECT_FALSE(aviary.IsLodDistanceSet());
    EXPECT_EQ(aviary.GetLodDistance(), 0);
}

TEST_F(LodViewerTest, StepsFromNowhereGoToTheEnds) {
    buildBands();
    ASSERT_FALSE(aviary.IsLodDistanceSet());
    LodViewer(host).Refresh();
    EXPECT_EQ(shown(), "nmf");
    aviary.LodMoreDetail();
    EXPECT_EQ(aviary.GetLodDistance(), 50);
    EXPECT_TRUE(aviary.IsLodDistanceSet());
    EXPECT_EQ(shown(), "n--");
}

}  // namespace
