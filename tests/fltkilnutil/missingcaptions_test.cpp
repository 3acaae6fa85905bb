// The caption library is not there. A program of its own, since the table is built only once.
#include "../support/ownlog.h"
#include "attrscene.h"

#include <fltkilnutil/captions.h>

#include <gtest/gtest.h>

namespace {

using MissingCaptions = AttrScene;

TEST_F(MissingCaptions, NoNodeHasAttributesAndOneLineIsLogged) {
    const OwnLog log;
#ifdef _WIN32
    kiln::Core::get()->setDirectory(KILN_PLUGIN_DIR, log.folder().string());
#else
    fltkilnutil::setCaptionLibraryInstalled(false);
#endif
    INode* const group = kindNode(FltNodeKind::Group);
    EXPECT_EQ(fltAttrGroupFind(FltNodeKind::Group), nullptr);
    EXPECT_EQ(fltAttrGroups(), nullptr);
    EXPECT_EQ(fltAttrFindRow(FltNodeKind::Group, "FltGrpLayer"), nullptr);
    EXPECT_EQ(fltAttrLoad(group, 1580), nullptr);
    EXPECT_EQ(fltAttrLoad(node(new TriObject), 1580), nullptr);
    EXPECT_EQ(log.content(), "Attribute captions not found: FltKilnUtilRes.dll\n");
}

}  // namespace
