// The user is asked to save a scene exactly when OpenFlight data of it has changed, though chunks
// are updated in place, where the host sees nothing.
#include "attrscene.h"

#include <gtest/gtest.h>
#include <kiln/host/diagnostics.h>
#include <quillon/fltobject.h>
#include <quillon/fltopcode.h>

#include <functional>
#include <string>
#include <vector>

using namespace testing_chunks;

namespace {

using ModifiedScene = AttrScene;

bool modifiedBy(const auto& action) {
    kiln::Core::get()->setModified(false);
    EXPECT_TRUE(action());
    return kiln::Core::get()->isModified();
}

TEST_F(ModifiedScene, AnEditInPlaceCountsAndAnEmptyOneDoesNot) {
    const RecordBytes record(kFltObject, 32);
    INode* const object = recordNode(FltNodeKind::Object, record);
    const void* const buffer = chunk(object, kRecordChunk)->data;
    const auto setPriority = [&](const char* text) {
        return edit(object, FltNodeKind::Object, "FltObjRelPriority", text);
    };
    EXPECT_TRUE(modifiedBy([&] { return setPriority("7"); }));
    EXPECT_EQ(chunk(object, kRecordChunk)->data, buffer);
    EXPECT_FALSE(modifiedBy([&] { return setPriority("7"); }));
    EXPECT_FALSE(modifiedBy([&] { return fltAttrLoad(object, 1580) != nullptr; }));
    EXPECT_TRUE(modifiedBy([&] { return setPriority("8"); }));
}

TEST_F(ModifiedScene, SoDoKindCommentAndCopy) {
    INode* const face = kindNode(FltNodeKind::Face);
    const auto ensure = [&](std::uint32_t parameter) {
        return fltEnsureKind(face, FltNodeKind::Face, parameter);
    };
    EXPECT_TRUE(modifiedBy([&] { return ensure(1570); }));
    EXPECT_FALSE(modifiedBy([&] { return ensure(1570); }));
    EXPECT_TRUE(modifiedBy([&] { return fltPutComment(face, "short"); }));
    EXPECT_TRUE(modifiedBy([&] { return fltPutComment(face, "shirt"); }));
    EXPECT_FALSE(modifiedBy([&] { return fltPutComment(face, "shirt"); }));
    EXPECT_TRUE(
        modifiedBy([&] { return fltPutComment(face, "a longer one than the one before"); }));
    setChunk(face, kRecordChunk, RecordBytes(5, 80));
    INode* const copy = dummy();
    EXPECT_TRUE(modifiedBy([&] { return fltCopyData(face, copy); }));
    EXPECT_FALSE(modifiedBy([&] { return fltCopyData(face, copy); }));
}

TEST_F(ModifiedScene, AnUndoPutsBackWhatWasStored) {
    INode* const object = recordNode(FltNodeKind::Object, RecordBytes(kFltObject, 32));
    kiln::Core& core = *kiln::Core::get();
    ASSERT_TRUE(fltPutComment(object, "before"));
    core.history().endCommand();
    core.setModified(false);
    const std::string before = core.sceneText();
    const void* const buffer = chunk(object, kRecordChunk)->data;
    for (const std::function<bool()>& change : std::vector<std::function<bool()>>{
             [&] { return edit(object, FltNodeKind::Object, "FltObjRelPriority", "7"); },
             [&] { return fltPutComment(object, "behind"); },
             [&] { return fltPutComment(object, "a longer one than the one before"); },
             [&] { return fltEnsureKind(object, FltNodeKind::Object, 1570); },
             [&] { return fltRemoveData(object); }}) {
        ASSERT_TRUE(change());
        const std::string after = core.sceneText();
        EXPECT_NE(after, before);
        ASSERT_TRUE(core.history().undo());
        EXPECT_EQ(core.sceneText(), before);
        EXPECT_FALSE(core.isModified());
        EXPECT_EQ(chunk(object, kRecordChunk)->data, buffer);
        ASSERT_TRUE(core.history().redo());
        EXPECT_EQ(core.sceneText(), after);
        ASSERT_TRUE(core.history().undo());
    }
}

// Without memory for what an undo would need nothing is stored.
TEST_F(ModifiedScene, WhatCannotBeRecordedIsNotStored) {
    INode* const object = recordNode(FltNodeKind::Object, RecordBytes(kFltObject, 32));
    FltObject record;
    record.relativePriority = 5;
    ASSERT_TRUE(fltPutData(object, FltNodeKind::Object, kFltRevision, record, nullptr));
    kiln::Core& core = *kiln::Core::get();
    core.setModified(false);
    const std::string before = core.sceneText();
    record.relativePriority = 6;
    bool stored = false;
    for (std::size_t allowed = 0; !stored; ++allowed) {
        ASSERT_LT(allowed, 20u);
        core.history().clear();
        core.setModified(false);
        const kiln::AllocationLimit limit(allowed);
        stored = fltPutRecord(object, record);
        if (!stored) {
            EXPECT_EQ(core.sceneText(), before);
            EXPECT_FALSE(core.isModified());
        }
    }
    EXPECT_NE(core.sceneText(), before);
}

}  // namespace
