// Very many polygons in one place, and checks that are done piece by piece.
#include "checkscene.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using checks::Rule;

/// Gives so many squares, without a scene around them; all in one place, or each turned a little.
class CrowdSource final : public checks::Source {
public:
    CrowdSource(std::uint32_t count, bool isTurned) : count_(count), isTurned_(isTurned) {}

    bool next(checks::Node& node) override {
        if (at_ == count_) return false;
        node = {};
        node.place = at_ + 1;
        node.kind = at_ == 0 ? std::uint16_t{kFltObject} : std::uint16_t{kFltFace};
        node.parent = at_ == 0 ? checks::kNone : 0;
        if (at_ != 0) {
            polygons_.clear();
            for (int i = 0; i < 4; ++i) {
                const double angle = 1.5707963267948966 * i + (isTurned_ ? 1e-4 * at_ : 0);
                polygons_.corners.push_back({5 * std::cos(angle), 5 * std::sin(angle), 0});
            }
            polygons_.ends.push_back(4);
            node.polygons = &polygons_;
        }
        ++at_;
        return true;
    }
    std::size_t estimate() const override { return count_; }
    std::string nameAt(std::uint64_t place) const override { return std::to_string(place); }
    std::vector<std::string> folders() const override { return {}; }
    std::string fileOf(std::uint64_t) const override { return {}; }

private:
    std::uint32_t count_;
    bool isTurned_;
    std::uint32_t at_ = 0;
    checks::Polygons polygons_;
};

// With a time that grew with the square of their number these would take hours.
TEST(Scale, BearsVeryManyPolygonsInOnePlace) {
    constexpr std::uint32_t kPolygons = 100'000;
    for (const bool isTurned : {false, true}) {
        CrowdSource source(kPolygons + 1, isTurned);
        const checks::Target target;
        checks::Check check(source, target);
        check.finish();
        const checks::Report& report = check.report();
        if (!isTurned) {
            EXPECT_EQ(report.countOf(Rule::FACE_DUPLICATE), kPolygons - 1);
        } else {
            EXPECT_EQ(report.countOf(Rule::FACE_OVERLAP) + report.countOf(Rule::FACE_DUPLICATE),
                      kPolygons - 1);
        }
    }
}

TEST(Scale, IsDonePieceByPiece) {
    const checks::Target target;
    CrowdSource whole(20'001, true), pieces(20'001, true);
    checks::Check atOnce(whole, target), piecewise(pieces, target);
    atOnce.finish();
    double before = 0;
    int slices = 0;
    while (!piecewise.advance(std::chrono::milliseconds(0))) {
        EXPECT_GE(piecewise.progress(), before);
        EXPECT_LE(piecewise.progress(), 1);
        before = piecewise.progress();
        ++slices;
    }
    EXPECT_GT(slices, 20);
    EXPECT_EQ(piecewise.progress(), 1);
    EXPECT_EQ(listOf(piecewise.report()), listOf(atOnce.report()));
    EXPECT_TRUE(piecewise.advance(std::chrono::milliseconds(0)));
}

}  // namespace
