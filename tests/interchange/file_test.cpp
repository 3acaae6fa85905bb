// Files on disk, through the plug-in's exports, with Aviary listening.
#include "../support/temporaryfolder.h"
#include "../tessera_core/recordingbrowser.h"
#include "fltbytes.h"
#include "importscene.h"

#include <airport.h>
#include <interchange/export.h>
#include <tessera/aviaryutil.h>

KILN_PLUGIN_EXPORT const char* LibDescription();
KILN_PLUGIN_EXPORT int LibNumberClasses();
KILN_PLUGIN_EXPORT ClassDesc* LibClassDesc(int index);
KILN_PLUGIN_EXPORT DWORD LibVersion();

namespace {

class FileTest : public ImportScene {
protected:
    FileTest() {
        static const kiln::Status registered = kiln::registerModule(
            "FltInterchange", {&LibDescription, &LibNumberClasses, &LibClassDesc, &LibVersion});
        EXPECT_TRUE(registered.ok()) << registered.message();
        tessera::aviaryUtil().SetLastImport("");
    }
    const TemporaryFolder folder;
};

}  // namespace

TEST_F(FileTest, ImportsThroughThePlugIn) {
    const std::string path = folder.write(u8"机场 one.flt", FltBytes("").group("a").group("b"));
    const kiln::ImportResult result = core.importFile(path);
    EXPECT_TRUE(result.ok());
    EXPECT_EQ(result.message, "imported 3 nodes (2 groups, 1 header)");
    EXPECT_EQ(tree(), "机场 one(a,b)");
    EXPECT_STREQ(tessera::aviaryUtil().GetLastImport(), "机场 one.flt");
    EXPECT_EQ(recordingBrowser().title, "机场 one.flt");
}

TEST_F(FileTest, LeavesOutStrayBytesAtTheEnd) {
    const std::string path =
        folder.write(u8"stray.flt", FltBytes("f").push().group("a").pop().append(Bytes().u8(7)));
    const kiln::ImportResult result = core.importFile(path);
    EXPECT_EQ(result.message,
              "imported 2 nodes (1 group, 1 header), left out 1 stray byte at the end");
    EXPECT_EQ(tree(), "f(a)");
}

TEST_F(FileTest, RefusesInOneSentence) {
    FltBytes cut = FltBytes().group("a");
    cut.vector().resize(340);
    const kiln::ImportResult result = core.importFile(folder.write(u8"cut.flt", cut));
    EXPECT_EQ(result.code, IMPEXP_FAIL);
    EXPECT_EQ(
        result.message,
        "cut.flt: damaged at byte offset 328: a record of 32 bytes, of which the file has 12");
    EXPECT_EQ(tree(), "");
    EXPECT_STREQ(tessera::aviaryUtil().GetLastImport(), "");

    const kiln::ImportResult missing = core.importFile(folder.file("missing.flt"));
    EXPECT_EQ(missing.code, IMPEXP_FAIL);
    EXPECT_NE(missing.message.find("missing.flt"), std::string::npos) << missing.message;
}

TEST_F(FileTest, TellsInTheHostsLanguage) {
    const SpokenLanguage chinese(KILN_LANGUAGE_CHINESE);
    const std::string path =
        folder.write(u8"stray.flt", FltBytes("f").push().group("a").pop().append(Bytes().u8(7)));
    EXPECT_EQ(core.importFile(path).message,
              "已导入 2 个节点（1 个组、1 个标头），略去了末尾的 1 个多余字节");
    EXPECT_EQ(core.importFile(folder.write(u8"no.flt", FltBytes().pop())).message,
              "no.flt：字节偏移 328 处已损坏：FLT_POP_LEVEL 没有可关闭的层级");
    const std::string missing = folder.file("missing.flt");
    EXPECT_TRUE(core.importFile(missing).message.starts_with("无法读取 " + missing + "："));
}

TEST_F(FileTest, FailsPlainlyWhenTheHostsReportThrows) {
    class Throwing : public ImpExpReport {
        void Error(const char*) override { throw 1; }
        void Summary(const char*) override { throw std::runtime_error("no"); }
        bool Progress(double, const char*) override { return true; }
        bool Cancelled() const override { return false; }
    } throwing;
    const std::string good = folder.write(u8"good.flt", FltBytes("f").group("a"));
    const std::string missing = folder.file("missing.flt");
    for (const std::string& path : {good, missing}) {
        EXPECT_EQ(interchange::importFile(path.c_str(), throwing, host), IMPEXP_FAIL);
    }
    const std::string out = folder.file("nowhere/out.flt");
    EXPECT_EQ(interchange::exportFile(out.c_str(), {}, throwing, host), IMPEXP_FAIL);
}

TEST_F(FileTest, ImportsTheSampleWhole) {
    const std::string path = folder.file("airport.flt");
    ASSERT_TRUE(samples::writeScene(samples::makeAirport(), path));
    const kiln::ImportResult result = core.importFile(path);
    EXPECT_EQ(result.message,
              "imported 614 nodes (8 groups, 2 levels of detail, 1 switch, 1 degree of freedom, "
              "40 objects, 1 binary separating plane, 1 clip region, 1 external reference, "
              "1 instance definition, 3 instance references, 4 light points, 2 light sources, "
              "548 faces, 1 header)");
    EXPECT_EQ(host.GetNodeCount(), 614);
    int empty = 0;
    std::vector<INode*> open = {host.GetRootNode()};
    while (!open.empty()) {
        INode* node = open.back();
        open.pop_back();
        for (int i = 0; i < node->NumberOfChildren(); ++i) open.push_back(node->GetChildNode(i));
        const auto* object = dynamic_cast<TriObject*>(node->GetObjectRef());
        if (object != nullptr && object->GetMesh().verts.IsEmpty()) ++empty;
    }
    EXPECT_EQ(empty, 0) << "every polygon of the sample has an area";
}
