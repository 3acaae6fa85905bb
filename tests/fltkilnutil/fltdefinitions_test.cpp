#include "chunkbytes.h"
#include "testscene.h"

#include <fltkilnutil/fltdefinitions.h>
#include <fltkilnutil/kilnflt.h>
#include <quillon/fltinstance.h>

using namespace testing_chunks;

namespace {

class Definitions : public TestScene {
protected:
    INode* add(INode* parent, FltNodeKind kind) {
        INode* const node = dummy();
        EXPECT_TRUE(fltEnsureKind(node, kind, kFltRevision));
        if (parent != nullptr) parent->AttachChild(node, false);
        return node;
    }
    INode* define(INode* parent, int number) {
        INode* const node = add(parent, FltNodeKind::InstanceDef);
        FltInstanceDef record;
        record.instanceNumber = static_cast<std::int16_t>(number);
        EXPECT_TRUE(fltPutRecord(node, record));
        return node;
    }
    INode* refer(INode* parent, int number) {
        INode* const node = add(parent, FltNodeKind::InstanceRef);
        FltInstanceRef record;
        record.instanceNumber = static_cast<std::int16_t>(number);
        EXPECT_TRUE(fltPutRecord(node, record));
        return node;
    }

    FltDefinitions definitions;
};

TEST_F(Definitions, AreLookedForInTheirOwnDatabaseFirst) {
    INode* const loose = define(nullptr, 3);
    INode* const first = add(nullptr, FltNodeKind::Header);
    INode* const second = add(nullptr, FltNodeKind::Header);
    INode* const early = refer(second, 1);  // before the definitions, as it may be
    INode* const firstOne = define(add(first, FltNodeKind::Group), 1);
    INode* const firstTwo = define(first, 2);
    define(first, 2);
    INode* const secondOne = define(second, 1);
    INode* const inner = add(second, FltNodeKind::Header);
    INode* const innerOne = define(inner, 1);
    EXPECT_EQ(definitions.of(early), secondOne);
    definitions.clear();

    INode* const outside = refer(nullptr, 2);
    const struct {
        const char* what;
        INode* reference;
        INode* definition;
    } cases[] = {
        {"its own, below a group", refer(first, 1), firstOne},
        {"its own, deeper than the definition", refer(add(second, FltNodeKind::Group), 1),
         secondOne},
        {"the nearest header's", refer(inner, 1), innerOne},
        {"the first of two", refer(first, 2), firstTwo},
        {"another database's, where its own has none", refer(second, 2), firstTwo},
        {"one in no database", refer(second, 3), loose},
        {"from outside of any", outside, firstTwo},
        {"none", refer(first, 9), nullptr},
    };
    for (const auto& c : cases) EXPECT_EQ(definitions.of(c.reference), c.definition) << c.what;
    EXPECT_EQ(definitions.of(firstOne), nullptr);
    EXPECT_EQ(definitions.of(nullptr), nullptr);
}

TEST_F(Definitions, WhatANodeShowsGoesThroughReferences) {
    INode* const outer = define(nullptr, 1);
    INode* const inner = define(nullptr, 2);
    INode* const deep = add(inner, FltNodeKind::Group);
    INode* const useOfInner = refer(add(outer, FltNodeKind::Group), 2);
    INode* const group = add(nullptr, FltNodeKind::Group);
    INode* const useOfOuter = refer(group, 1);
    refer(inner, 1);  // a scene that is endless already
    INode* const beside = add(nullptr, FltNodeKind::Group);
    const FltShownNodes shown(group);
    for (INode* const node : {group, useOfOuter, outer, useOfInner, inner, deep})
        EXPECT_TRUE(shown.contains(node));
    for (INode* const node : {beside, group->GetParentNode(), static_cast<INode*>(nullptr)})
        EXPECT_FALSE(shown.contains(node));
    EXPECT_FALSE(FltShownNodes(deep).contains(inner));
    EXPECT_FALSE(FltShownNodes(nullptr).contains(group));
}

TEST_F(Definitions, DamagedRecordsDefineAndFindNothing) {
    INode* const damaged = define(nullptr, 1);
    INode* const sound = define(nullptr, 1);
    INode* const reference = refer(nullptr, 1);
    INode* const lost = refer(nullptr, 1);
    for (INode* const node : {damaged, lost}) setChunk(node, kRecordChunk, Bytes(8, 0xFF));
    EXPECT_EQ(definitions.of(reference), sound);
    EXPECT_EQ(definitions.of(lost), nullptr);
    // What was found stays until it is cleared.
    ASSERT_TRUE(fltRemoveData(sound));
    EXPECT_EQ(definitions.of(reference), sound);
    definitions.clear();
    EXPECT_EQ(definitions.of(reference), nullptr);
}

}  // namespace
