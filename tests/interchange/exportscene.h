// A scene that files go into and come out of again.
#pragma once

#include "../support/temporaryfolder.h"
#include "importscene.h"

#include <interchange/export.h>

#include <commands.h>

#include <fstream>
#include <iterator>
#include <sstream>
#include <vector>

class ExportScene : public ImportScene {
protected:
    std::string pathOf(const char* name) const { return folder.file(name); }

    static std::vector<std::uint8_t> contentOf(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    /// The scene as a file, in which fltool finds nothing but what the scene brought along.
    std::vector<std::uint8_t> exported(const interchange::ExportOptions& options = {}) {
        report.progress = 0;
        const std::string path = pathOf("airfield.flt");
        EXPECT_EQ(interchange::exportFile(path.c_str(), options, report, host), IMPEXP_SUCCESS)
            << report.error;
        std::ostringstream findings;
        fltool::check({path, {}, false}, findings);
        EXPECT_EQ(findings.str(), knownFindings);
        return contentOf(path);
    }

    /// What fltool says of a scene that was damaged before it came here.
    std::string knownFindings;

    const TemporaryFolder folder{u8"tessera-export-"};
};
