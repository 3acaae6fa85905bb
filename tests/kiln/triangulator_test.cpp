#include <gtest/gtest.h>
#include <kiln/triangulator.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

namespace {

using Corners = std::vector<Point3>;

Point3 areaOf(const Corners& polygon) {
    Point3 area;
    for (std::size_t i = 2; i < polygon.size(); ++i) {
        area = area + CrossProd(polygon[i - 1] - polygon[0], polygon[i] - polygon[0]);
    }
    return area;
}

struct Cut {
    std::size_t triangles = 0;
    std::size_t outlineEdges = 0;
    double signedArea = 0;    ///< over the polygon's; 1 when nothing is missing
    double absoluteArea = 0;  ///< the same without signs; 1 when nothing overlaps either
};

Cut cutOf(const Corners& polygon) {
    Triangulator triangulator;
    Cut cut;
    const Point3 whole = areaOf(polygon);
    for (const Triangle& triangle : triangulator.cut(polygon)) {
        const Point3 area = areaOf({polygon[triangle.corner[0]], polygon[triangle.corner[1]],
                                    polygon[triangle.corner[2]]});
        const double share = DotProd(area, whole) / DotProd(whole, whole);
        cut.signedArea += share;
        cut.absoluteArea += std::abs(share);
        ++cut.triangles;
        for (const bool outline : triangle.outline) cut.outlineEdges += outline ? 1 : 0;
    }
    return cut;
}

/// A comb with its teeth upwards, concave between any two of them.
Corners comb(int teeth) {
    Corners polygon = {{0, -1, 0}, {2.0 * teeth, -1, 0}};
    for (int i = teeth; i-- > 0;) {
        polygon.push_back({2.0 * i + 2, 0, 0});
        polygon.push_back({2.0 * i + 1, 10, 0});
    }
    polygon.push_back({0, 0, 0});
    return polygon;
}

}  // namespace

TEST(Triangulator, CoversPolygonsExactly) {
    const Corners ell = {{0, 0, 0}, {2, 0, 0}, {2, 1, 0}, {1, 1, 0}, {1, 2, 0}, {0, 2, 0}};
    Corners tilted, mirrored, farAway;
    for (const Point3& p : ell) {
        tilted.push_back({p.x, p.y * 0.6, p.y * 0.8 + p.x});
        mirrored.push_back({p.y, p.x, 5});
        farAway.push_back({p.x + 4e6, p.y - 3e6, 2e6});
    }
    const Corners withHole = {{0, 0, 0}, {6, 0, 0}, {6, 6, 0}, {0, 6, 0}, {0, 0, 0},
                              {2, 2, 0}, {2, 4, 0}, {4, 4, 0}, {4, 2, 0}, {2, 2, 0}};
    const struct {
        const char* name;
        Corners polygon;
        std::size_t triangles;
        std::size_t edges;
    } cases[] = {
        {"triangle", {{0, 0, 0}, {0, 1, 0}, {0, 0, 1}}, 1, 3},
        {"square", {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, 2, 4},
        {"arrow head", {{0, 0, 0}, {2, -1, 0}, {0, 3, 0}, {-2, -1, 0}}, 2, 4},
        {"L", ell, 4, 6},
        {"L out of the plane", tilted, 4, 6},
        {"L from behind", mirrored, 4, 6},
        {"L far from the origin", farAway, 4, 6},
        {"corner on a straight edge",
         {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}},
         3,
         5},
        {"repeated corners",
         {{0, 0, 0}, {0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 0}},
         2,
         4},
        {"square with a square hole, joined by a cut", withHole, 8, 10},
        {"comb", comb(40), 81, 83},
    };
    for (const auto& test : cases) {
        const Cut cut = cutOf(test.polygon);
        EXPECT_EQ(cut.triangles, test.triangles) << test.name;
        EXPECT_EQ(cut.outlineEdges, test.edges) << test.name;
        EXPECT_NEAR(cut.signedArea, 1, 1e-9) << test.name;
        EXPECT_NEAR(cut.absoluteArea, 1, 1e-9) << test.name;
    }
}

TEST(Triangulator, GivesNothingForPolygonsWithoutArea) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    for (const Corners& polygon : {Corners{}, Corners{{0, 0, 0}, {1, 0, 0}},
                                   Corners{{1, 1, 1}, {1, 1, 1}, {1, 1, 1}, {1, 1, 1}},
                                   Corners{{0, 0, 0}, {1, 1, 1}, {2, 2, 2}, {3, 3, 3}},
                                   Corners{{0, 0, 0}, {1, 0, 0}, {nan, 1, 0}},
                                   Corners{{0, 0, 0}, {infinity, 0, 0}, {1, 1, 0}}}) {
        EXPECT_EQ(cutOf(polygon).triangles, 0U);
    }
}

TEST(Triangulator, EndsWithEveryPolygon) {
    unsigned state = 1;
    const auto random = [&] { return double(state = state * 1103515245U + 12345U) * 1e-6; };
    const Corners bowTie = {{0, 0, 0}, {1, 1, 0}, {1, 0, 0}, {0, 1, 0}};
    Corners star, wild, huge;
    for (int i = 0; i < 5; ++i) {
        const double angle = std::numbers::pi * 2 * (i * 2 % 5) / 5;
        star.push_back({std::cos(angle), std::sin(angle), 0});
    }
    for (int i = 0; i < 16'000; ++i) wild.push_back({random(), random(), random()});
    for (int i = 0; i < 8; ++i) huge.push_back({random() * 1e300, random() * 1e300, -1e308});
    for (const Corners& polygon : {star, bowTie, wild, huge}) {
        Triangulator triangulator;
        const auto triangles = triangulator.cut(polygon);
        EXPECT_LE(triangles.size(), polygon.size() - 2);
        for (const Triangle& triangle : triangles) {
            for (const std::uint32_t corner : triangle.corner) EXPECT_LT(corner, polygon.size());
        }
    }
    EXPECT_GT(cutOf(star).triangles, 0U);
    EXPECT_GT(cutOf(bowTie).triangles, 0U);
}
