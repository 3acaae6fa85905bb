// Deleting and copying nodes as the browser has its client do it.
#include "scene.h"

#include <kiln/host/history.h>
#include <kiln/kiln.h>
#include <quillon/fltinstance.h>
#include <quillon/fltopcode.h>

#include <cstring>
#include <iterator>

namespace {

using tessera::BrowserItem;
using tessera::NodeHandle;

class NodeCommandsTest : public SceneTest {
protected:
    /// An earlier test may have left its handlers registered.
    void open() {
        aviary.Browser();
        recordingBrowser().sceneChanges = 0;
    }
    BrowserItem item(const char* name) const { return recordingBrowser().find(name); }

    bool remove(std::initializer_list<BrowserItem> items) const {
        return recordingBrowser().commands->remove(std::data(items), items.size(), &host);
    }
    /// The copy, or null.
    INode* copy(BrowserItem what, BrowserItem parent, bool beside = false) const {
        NodeHandle made = 0;
        const bool done =
            recordingBrowser().commands->copy(&what, &parent, 1, beside, &made, &host);
        EXPECT_EQ(done, made != 0);
        return reinterpret_cast<INode*>(made);
    }
};

TEST_F(NodeCommandsTest, CopiesWhatANodeIsMadeOf) {
    INode* const top = add(nullptr, "top", kFltGroup);
    auto* const mesh = new TriObject;
    const Point3 corners[] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    for (const Point3& corner : corners) mesh->GetMesh().verts.Append(1, &corner);
    const DWORD polygon[] = {0, 1, 2};
    ASSERT_TRUE(mesh->GetMesh().AppendPolygon(3, polygon));
    auto* const light = new GenLight(SPOT_LIGHT_CLASS_ID);
    light->SetIntensity(0.25);
    light->SetUseLight(false);
    INode* const face = host.CreateObjectNode(mesh, "face");
    INode* const lamp = host.CreateObjectNode(light, "lamp");
    for (INode* node : {face, lamp}) ASSERT_TRUE(top->AttachChild(node, false));
    face->SetWireColor(0x123456);
    face->Hide(true);
    void* const bytes = KILN_malloc(3);
    std::memcpy(bytes, "abc", 3);
    ASSERT_TRUE(face->AddAppDataChunk(Class_ID(1, 2), 3, 4, 3, bytes));
    INode* const target = add(nullptr, "target");
    Matrix3 place;
    place.SetTrans({5, 6, 7});
    target->SetNodeTM(0, place);
    open();

    INode* const made = copy(item("top"), item("target"));
    ASSERT_TRUE(made);
    EXPECT_EQ(made->GetParentNode(), target);
    EXPECT_EQ(made->GetNodeTM(0), top->GetNodeTM(0)) << "it stays where it is in the world";
    ASSERT_EQ(made->NumberOfChildren(), 2);
    INode* const madeFace = made->GetChildNode(0);
    EXPECT_STREQ(madeFace->GetName(), "face001");
    EXPECT_EQ(madeFace->GetWireColor(), 0x123456u);
    EXPECT_TRUE(madeFace->IsHidden());
    const AppDataChunk* const chunk = madeFace->GetAppDataChunk(Class_ID(1, 2), 3, 4);
    ASSERT_TRUE(chunk);
    EXPECT_EQ(std::string(static_cast<const char*>(chunk->data), chunk->length), "abc");
    ASSERT_EQ(madeFace->GetObjectRef()->ClassID(), TRIOBJ_CLASS_ID);
    auto* const madeMesh = static_cast<TriObject*>(madeFace->GetObjectRef());
    EXPECT_NE(madeMesh, mesh);
    EXPECT_EQ(madeMesh->GetMesh(), mesh->GetMesh());
    auto* const madeLight = static_cast<GenLight*>(made->GetChildNode(1)->GetObjectRef());
    ASSERT_EQ(madeLight->ClassID(), SPOT_LIGHT_CLASS_ID);
    EXPECT_EQ(madeLight->GetIntensity(), 0.25);
    EXPECT_FALSE(madeLight->GetUseLight());
    madeLight->SetUseLight(true);
    EXPECT_FALSE(light->GetUseLight());
    FltNodeKind kind{};
    ASSERT_TRUE(fltGetKind(made, false, kind));
    EXPECT_EQ(kind, FltNodeKind::Group);
    EXPECT_EQ(recordingBrowser().outline(),
              "Scene Root(top(face,lamp),target(top001(face001,lamp001)))");
    EXPECT_EQ(recordingBrowser().sceneChanges, 0) << "the browser shows it already";
}

TEST_F(NodeCommandsTest, RefuseTheRootAndWhatHasGone) {
    INode* const a = add(nullptr, "a");
    add(a, "b");
    open();
    EXPECT_FALSE(remove({item("Scene Root")}));
    EXPECT_FALSE(remove({item("a"), item("Scene Root")})) << "all or nothing";
    EXPECT_EQ(copy(item("Scene Root"), item("a")), nullptr);
    EXPECT_EQ(copy(item("b"), nullptr), nullptr);
    host.DeleteNode(a);  // the tree does not know yet
    EXPECT_FALSE(remove({item("a")}));
    EXPECT_FALSE(remove({item("b")}));
    EXPECT_EQ(copy(item("b"), item("Scene Root")), nullptr);
    EXPECT_EQ(host.GetNodeCount(), 0);
}

// The same node stands in the tree below the definition and below each reference to it.
TEST_F(NodeCommandsTest, FillTheTreeAnewWhereReferencesShowTheSame) {
    INode* const definition = add(nullptr, "definition", kFltInstanceDef);
    FltInstanceDef record;
    record.instanceNumber = 7;
    ASSERT_TRUE(fltPutRecord(definition, record));
    add(definition, "leaf");
    INode* const use = add(nullptr, "use", kFltInstanceRef);
    FltInstanceRef reference;
    reference.instanceNumber = 7;
    ASSERT_TRUE(fltPutRecord(use, reference));
    open();
    ASSERT_EQ(recordingBrowser().outline(), "Scene Root(definition(leaf),use(leaf))");
    recordingBrowser().refreshes = 0;
    ASSERT_TRUE(copy(item("leaf"), item("definition"), true));
    EXPECT_EQ(definition->NumberOfChildren(), 2);
    EXPECT_EQ(recordingBrowser().refreshes, 1);
    recordingBrowser().send(tessera::BrowserEvent::kRebuild);
    ASSERT_EQ(recordingBrowser().outline(),
              "Scene Root(definition(leaf,leaf001),use(leaf,leaf001))");
    const BrowserItem shown = recordingBrowser().top.children[0]->children[1]->children[0].get();
    ASSERT_TRUE(remove({item("leaf"), shown})) << "one node, deleted once";
    EXPECT_EQ(definition->NumberOfChildren(), 1);
    EXPECT_EQ(recordingBrowser().refreshes, 2);
}

}  // namespace
