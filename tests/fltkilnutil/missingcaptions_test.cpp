// The caption library is not there. A program of its own, since the table is built only once.
#include "../support/temporaryfolder.h"
#include "attrscene.h"

#include <fltkilnutil/captions.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

using MissingCaptions = AttrScene;

void setLogFolder(const std::filesystem::path& folder) {
#ifdef _WIN32
    _putenv_s("SystemDrive", folder.string().c_str());
#else
    setenv("SystemDrive", folder.c_str(), 1);
#endif
}

TEST_F(MissingCaptions, NoNodeHasAttributesAndOneLineIsLogged) {
    const TemporaryFolder temporary(u8"tessera-log-");
    const std::filesystem::path& folder = temporary.path();
    setLogFolder(folder);
#ifdef _WIN32
    kiln::Core::get()->setDirectory(KILN_PLUGIN_DIR, folder.string());
#else
    fltkilnutil::setCaptionLibraryInstalled(false);
#endif
    INode* const group = kindNode(FltNodeKind::Group);
    EXPECT_EQ(fltAttrGroupFind(FltNodeKind::Group), nullptr);
    EXPECT_EQ(fltAttrGroups(), nullptr);
    EXPECT_EQ(fltAttrFindRow(FltNodeKind::Group, "FltGrpLayer"), nullptr);
    EXPECT_EQ(fltAttrLoad(group, 1580), nullptr);
    EXPECT_EQ(fltAttrLoad(node(new TriObject), 1580), nullptr);

    const std::string logPath = folder.string() + "\\Aviary.log";  // on every platform
    {
        std::ifstream log(logPath);
        const std::string content{std::istreambuf_iterator<char>(log), {}};
        EXPECT_EQ(content, "Attribute captions not found: FltKilnUtilRes.dll\n");
    }
    std::filesystem::remove(logPath);
}

}  // namespace
