#include "checkscene.h"

#include <checks/query.h>
#include <quillon/fltlod.h>
#include <quillon/fltmaterial.h>
#include <quillon/flttext.h>
#include <quillon/flttexture.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using checks::Query, checks::QueryError;

namespace {

class QueryTest : public testing::Test {
protected:
    QueryTest() {
        FltTexture texture;
        texture.index = 3;
        fltSetText(texture.fileName, std::string("C:\\pictures\\Brick01.rgb"));
        FltMaterial material;
        material.index = 1;
        fltSetText(material.name, std::string("glass"));
        scene.keep(scene.database, {&texture, &material});
        FltFace face;
        face.textureIndex = 3;
        face.materialIndex = 1;
        wall = scene.addFace(scene.object, square(4), face);
        wall->SetName("wall");
        FltLod lod;
        lod.switchInDistance = 5000.25;
        nearLod = scene.add(scene.group, lod);
        nearLod->SetName("tower near");
        lod.switchInDistance = 9000;
        farLod = scene.add(scene.group, lod);
        farLod->SetName("Tower far");
        fltPutComment(farLod, "with its beacon");
        scene.host.CreateObjectNode(new DummyObject, "tower of the host alone");
    }

    std::vector<std::string> found(const char* query) {
        std::vector<std::string> names;
        for (INode* const node : Query(query).find(scene.host)) names.emplace_back(node->GetName());
        return names;
    }

    CheckScene scene;
    INode *wall, *nearLod, *farLod;
};

TEST_F(QueryTest, FindsNodesByWhatTheyAreAndHave) {
    const struct {
        const char* query;
        std::vector<std::string> names;
    } kCases[] = {
        {"kind = lod", {"tower near", "Tower far"}},
        {"name = tower*", {"tower near", "Tower far"}},
        {"NAME = \"TOWER ?AR\"", {"Tower far"}},
        {"tower", {"tower near", "Tower far"}},
        {"'r f'", {"Tower far"}},
        {"FltLodMin > 5000.25", {"Tower far"}},
        {"fltlodmin >= 5000.25", {"tower near", "Tower far"}},
        {"FltLodMin = 5000.25", {"tower near"}},
        {"FltLodMin != 5000.25", {"Tower far"}},
        {"comment = *BEACON", {"Tower far"}},
        {"texture = brick*", {"wall"}},
        {"texture = 3 and material = 1", {"wall"}},
        {"texture = c:*01.rgb", {"wall"}},
        {"material = glass", {"wall"}},
        {"texture = *", {"wall"}},
        {"not kind = lod and not kind = face and name = n*", {"n1", "n2", "n3"}},
        {"kind = header or kind = lod and near", {"n1", "tower near"}},
        {"(kind = header or kind = lod) and near", {"tower near"}},
        {"not (kind = lod or kind = face)", {"n1", "n2", "n3"}},
        {"name = *a*a*a*a*b", {}},
    };
    for (const auto& test : kCases) EXPECT_EQ(found(test.query), test.names) << test.query;
}

TEST_F(QueryTest, TellsWhereItCannotBeRead) {
    const struct {
        std::string query;
        std::size_t at;
    } kCases[] = {
        {"", 0},
        {"name =", 6},
        {"name = a b", 9},
        {"(name = a", 9},
        {"FltNone = 1", 0},
        {"name < b", 7},
        {"FltLodMin > much", 12},
        {"name = \"a", 7},
        {"and", 0},
        {"kind = lod and", 14},
        {") or", 0},
        {"= 3", 0},
        {std::string(100000, '('), 65},
        {"not " + std::string(4, ' '), 8},
    };
    for (const auto& test : kCases) {
        try {
            Query query(test.query);
            ADD_FAILURE() << test.query;
        } catch (const QueryError& error) {
            EXPECT_EQ(error.at, test.at) << test.query.substr(0, 40) << ": " << error.what();
        }
    }
    std::string deepNot;
    for (int i = 0; i < 100000; ++i) deepNot += "not ";
    EXPECT_THROW(Query(deepNot + "a"), QueryError);
    std::string wide = "a";
    for (int i = 0; i < 100000; ++i) wide += " or a";
    EXPECT_EQ(Query(wide).find(scene.host).size(), 3u) << "a long one is none that is deep";
}

}  // namespace
