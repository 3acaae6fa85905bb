// What the entry points that the host and the browser call do with failures inside: they go on, or
// give up quietly, and the log gets one line.
#include "../support/failingallocator.h"
#include "../support/messageboxes.h"
#include "../support/ownlog.h"
#include "panelfixture.h"

#include <diagnostics/assertion.h>
#include <fltkilnutil/kilnflt.h>
#include <quillon/fltinstance.h>
#include <quillon/fltlod.h>

#include <commctrl.h>

#include <sstream>
#include <stdexcept>

namespace {

class GuardTest : public PanelTest {
protected:
    ~GuardTest() override { core.closeUtility(); }

    /// The failures that were logged since the last call; what the browser traces is left out.
    std::string logged() const {
        std::istringstream all(log_.take());
        std::string lines;
        for (std::string line; std::getline(all, line);)
            if (line.starts_with("Assertion") || line.starts_with("Exception"))
                lines += line + '\n';
        return lines;
    }

    /// A node with a record of another kind than it should have.
    static INode* addDamaged(FltNodeKind kind, const FltRecord& record) {
        INode* const node = GetCOREInterface()->CreateObjectNode(new DummyObject, "damaged");
        EXPECT_TRUE(fltEnsureKind(node, kind, kFltRevision));
        EXPECT_TRUE(fltPutRecord(node, record));
        AppDataChunk* const chunk =
            node->GetAppDataChunk(Class_ID(0x6A3C1F07, 0x2E9D0001), 0xA10, 1);
        static_cast<BYTE*>(chunk->data)[1] = 0x7F;
        return node;
    }
    static INode* addDamagedLod() { return addDamaged(FltNodeKind::Lod, FltLod()); }

    const OwnLog log_;
};

constexpr const char* kLodLine = "Assertion failed in fltlod at 61\n";

TEST_F(GuardTest, ThePagesButtonsStepPastDamagedRecordsWithOneLineEach) {
    ASSERT_TRUE(aviary().CreateLOD());  // 0 to 100,000
    window.press(IDC_LOD_MOST);
    EXPECT_EQ(logged(), "") << "nothing is wrong yet";
    addDamagedLod();
    addDamagedLod();
    aviary().StoreLodDistance(1);
    window.press(IDC_LOD_MOST);
    EXPECT_EQ(aviary().GetLodDistance(), 50000) << "what can be read is shown";
    EXPECT_EQ(logged(), kLodLine);
    window.press(IDC_LOD_MORE);
    window.press(IDC_LOD_LEAST);
    EXPECT_EQ(logged(), std::string(kLodLine) + kLodLine) << "two failures in a row";
}

TEST_F(GuardTest, OpeningAndFillingTheBrowserLogsOneLine) {
    FltInstanceRef reference;
    reference.instanceNumber = 1;
    addDamaged(FltNodeKind::InstanceRef, reference);
    addDamaged(FltNodeKind::InstanceRef, reference);
    window.press(IDC_BROWSER);
    ASSERT_TRUE(IsWindowVisible(form()));
    EXPECT_EQ(TreeView_GetCount(GetDlgItem(form(), IDC_TREE)), 3u) << "the tree is whole";
    EXPECT_EQ(logged(), "Assertion failed in fltinstance at 44\n") << "from the page";
    SendDlgItemMessageW(form(), IDC_REFRESH, BM_CLICK, 0, 0);
    EXPECT_EQ(logged(), "Assertion failed in fltinstance at 44\n") << "from the event handler";
}

TEST_F(GuardTest, ScriptsLeaveNoLine) {
    addDamagedLod();
    aviary().LodMostDetail();
    aviary().Browser();
    aviary().RefreshBrowser();
    EXPECT_EQ(logged(), "");
}

// The host's own window is asked for when the page makes the browser.
TEST_F(GuardTest, MakingTheBrowserSurvivesWhateverTheHostThrows) {
    core.closeUtility();
    exported<void (*)()>("_zufltguidestroy")();
    window.failure_ = [] { throw std::runtime_error("no window"); };
    openPage();
    EXPECT_TRUE(window.page_) << "the page is there all the same";
    EXPECT_EQ(form(), nullptr);
    EXPECT_EQ(logged(), "Exception in avfltpanel at 717\n");
    core.closeUtility();
    window.failure_ = [] { throw diagnostics::AviaryAssertion("flthost", 12); };
    openPage();
    EXPECT_EQ(logged(), "Assertion failed in flthost at 12\n");
    window.failure_ = nullptr;
}

TEST_F(GuardTest, MakingTheBrowserWithoutMemoryHasALineOfItsOwn) {
    exported<void (*)()>("_zufltguidestroy")();
    const MessageBoxes boxes;
    const FailingAllocator allocator;
    ASSERT_TRUE(allocator.isThere());
    int ownLines = 0;
    bool failed = true;
    for (int allocations = 0; failed; ++allocations) {
        SCOPED_TRACE(allocations);
        FailingAllocator::failAfter(allocations);
        SendMessageW(window.page_, WM_INITDIALOG, 0, 0);
        failed = FailingAllocator::hasFailed();
        FailingAllocator::failNever();
        const std::string lines = logged();
        ASSERT_TRUE(lines.empty() || lines == "Exception in avfltpanel at 717\n") << lines;
        if (!lines.empty()) ++ownLines;
        exported<void (*)()>("_zufltguidestroy")();
    }
    EXPECT_GT(ownLines, 0);
}

TEST_F(GuardTest, ThePageItselfMayFail) {
    core.closeUtility();
    window.pageFailure_ = [] { throw std::runtime_error("no page"); };
    openPage();
    EXPECT_EQ(window.page_, nullptr);
    core.closeUtility();
    window.pageFailure_ = nullptr;
    openPage();
    EXPECT_TRUE(window.page_);
}

}  // namespace
