#include "../support/temporaryfolder.h"

#include <workbench/savedviews.h>

#include <gtest/gtest.h>

#include <fstream>

using namespace workbench;
using render::CameraStand, render::View;

namespace {

class SavedViewsTest : public testing::Test {
protected:
    static CameraStand viewOf(double distance) {
        return {View::kTop, {1.0 / 3, -2e6, 3}, distance, 0.5f, -0.25f};
    }
    static double distanceAt(const SavedViews& views, std::size_t place) {
        return views.at(place) ? views.at(place)->distance : 0;
    }

    const TemporaryFolder folder_;
    const std::string file_ = (folder_.path() / "user" / "views.txt").string();
};

TEST_F(SavedViewsTest, AreKeptForEachFileFromRunToRun) {
    {
        SavedViews views(file_);
        views.setScene("C:\\tower.flt", false);
        views.save(0, viewOf(10));
        views.save(3, viewOf(1e-3));
        views.setScene("C:\\other\tname.kiln", false);
        EXPECT_FALSE(views.at(0)) << "another scene's";
        views.save(0, viewOf(20));
    }
    std::ofstream(file_, std::ios::app) << "1\t0\t0\t0\t0\tnan?\t0\t0\tC:\\tower.flt\r\n"
                                        << "4\t0\t0\t0\t0\t5\t0\t0\tC:\\tower.flt\r\n"
                                        << "2\t7\t0\t0\t0\t5\t0\t0\tC:\\tower.flt\r\n2\t1\r\n";
    SavedViews views(file_);
    views.setScene("c:\\Tower.FLT", false);
    ASSERT_TRUE(views.at(0) && views.at(3));
    EXPECT_EQ(views.at(0)->view, View::kTop);
    EXPECT_EQ(views.at(0)->target, (render::Vec3d{1.0 / 3, -2e6, 3}));
    EXPECT_EQ(views.at(3)->distance, 1e-3);
    EXPECT_EQ(views.at(3)->pitch, -0.25f);
    EXPECT_FALSE(views.at(1) || views.at(2)) << "damaged lines say nothing";
    views.setScene("C:\\other\tname.kiln", false);
    EXPECT_EQ(distanceAt(views, 0), 20);
}

TEST_F(SavedViewsTest, StayWithASceneThatIsSavedUnderAnotherName) {
    SavedViews views(file_);
    views.setScene("", false);
    views.save(1, viewOf(10));
    views.setScene("", true);
    EXPECT_EQ(distanceAt(views, 1), 10);
    views.setScene("C:\\new.kiln", true);
    views.setScene("", false);
    EXPECT_FALSE(views.at(1)) << "a new scene has none";
    SavedViews later(file_);
    later.setScene("C:\\new.kiln", false);
    EXPECT_EQ(distanceAt(later, 1), 10);
}

TEST_F(SavedViewsTest, OfTheLastScenesAreRemembered) {
    SavedViews views(file_);
    for (std::size_t i = 0; i <= SavedViews::kMostScenes; ++i) {
        views.setScene("C:\\" + std::to_string(i), false);
        views.save(0, viewOf(1));
    }
    SavedViews later(file_);
    for (const char* const file : {"C:\\0", "C:\\1"}) {
        views.setScene(file, false);
        later.setScene(file, false);
        EXPECT_EQ(views.at(0).has_value(), file[3] == '1');
        EXPECT_EQ(later.at(0).has_value(), file[3] == '1');
    }
}

}  // namespace
