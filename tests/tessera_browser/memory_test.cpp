// The module when memory runs out: its allocations are made to fail one after the other.
#include "../support/failingallocator.h"
#include "browserfixture.h"

#include <set>

namespace {

class BrowserMemory : public BrowserTest {};

TEST_F(BrowserMemory, CreatingTheFormFailsCleanlyWhereverMemoryRunsOut) {
    open(false);  // what is made once only is made by now
    browser().destroy();
    const FailingAllocator allocator;
    ASSERT_TRUE(allocator.isThere());
    std::set<int> answers;
    int allocations = 0;
    for (bool failed = true; failed; ++allocations) {
        SCOPED_TRACE(allocations);
        FailingAllocator::failAfter(allocations);
        const int answer = browser().create(nullptr, Client::callback, 0, &client);
        failed = FailingAllocator::hasFailed();
        FailingAllocator::failNever();
        answers.insert(answer);
        EXPECT_EQ(form() != nullptr, answer == tessera::kBrowserDone);
        browser().destroy();
        testinput::pump();
        ASSERT_EQ(form(), nullptr);
    }
    RecordProperty("allocations", allocations);
    EXPECT_TRUE(answers.contains(tessera::kBrowserNoMemory));
    EXPECT_TRUE(answers.contains(tessera::kBrowserFormMissing));
    open();
    EXPECT_TRUE(IsWindowVisible(form())) << "and works again afterwards";
}

}  // namespace
