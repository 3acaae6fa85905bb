// The user is asked to save a scene exactly when OpenFlight data of it has changed, though chunks
// are updated in place, where the host sees nothing.
#include "attrscene.h"

#include <gtest/gtest.h>
#include <quillon/fltopcode.h>

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

}  // namespace
