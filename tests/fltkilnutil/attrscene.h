// Nodes whose attributes are looked at.
#pragma once

#include "chunkbytes.h"
#include "testscene.h"

#include <fltkilnutil/fltattr.h>
#include <fltkilnutil/kilnflt.h>

#include <string>

class AttrScene : public TestScene {
protected:
    /// A node of that kind without a record.
    INode* kindNode(FltNodeKind kind, std::uint32_t parameter = 1580) {
        INode* const made = dummy();
        EXPECT_TRUE(fltEnsureKind(made, kind, parameter));
        return made;
    }

    INode* recordNode(FltNodeKind kind, const testing_chunks::Bytes& record,
                      std::uint32_t parameter = 1580) {
        INode* const made = kindNode(kind, parameter);
        testing_chunks::setChunk(made, testing_chunks::kRecordChunk, record);
        return made;
    }

    static FltAttrDesc& row(FltNodeKind kind, const char* key) {
        FltAttrDesc* const found = fltAttrFindRow(kind, key);
        if (found == nullptr) throw std::runtime_error(std::string("no row ") + key);
        return *found;
    }

    /// The value text of a row, as last loaded.
    static std::string value(FltNodeKind kind, const char* key) {
        return row(kind, key).value.text();
    }

    /// Loads the node, sets one row and stores.
    static bool edit(INode* node, FltNodeKind kind, const char* key, const char* text) {
        FltAttrGroup* const group = fltAttrLoad(node, 1580);
        if (group == nullptr) return false;
        row(kind, key).value.setText(text);
        return fltAttrStore(node, *group);
    }
};
