// The exports of FltInterchange.dli, through which the host finds the importer, the exporter and
// the mark of textures; and what tells it how OpenFlight nodes look.
#include "texts.h"

#include <interchange/export.h>
#include <interchange/import.h>
#include <interchange/nodelooks.h>
#include <interchange/textureattr.h>

#include <kiln/kiln.h>
#include <xref/xreffunctions.h>

#include <iterator>
#include <new>
#include <string>

namespace {

class FltSceneImport final : public SceneImport {
public:
    int ExtCount() override { return 1; }
    const char* Ext(int index) override { return index == 0 ? "flt" : ""; }
    const char* ShortDesc() override { return "OpenFlight"; }

    int DoImport(const char* path, ImpExpReport& report, Interface* ip) override {
        if (ip == nullptr) return IMPEXP_FAIL;
        const int result = interchange::importFile(path, report, *ip);
        ip->RedrawViews(ip->GetTime());
        return result;
    }
};

class FltSceneExport final : public SceneExport {
public:
    int ExtCount() override { return 1; }
    const char* Ext(int index) override { return index == 0 ? "flt" : ""; }
    const char* ShortDesc() override { return "OpenFlight"; }

    int VersionCount() override { return static_cast<int>(std::size(kVersions)); }
    DWORD Version(int index) override { return kVersions[index].number; }
    const char* VersionName(int index) override { return kVersions[index].name; }

    void Parts(Interface* ip, DWORD options, Tab<INode*>& parts) override {
        if (ip == nullptr) return;
        try {
            for (INode* database : interchange::databasesOf(*ip, chosenBy(options)))
                parts.Append(database);
        } catch (...) {
            parts.ZeroCount();  // the export itself says what is wrong
        }
    }
    CStr PartFileName(INode* part) override {
        try {
            return part == nullptr ? CStr() : CStr(interchange::sourceFileOf(*part));
        } catch (...) {
            return {};
        }
    }

    CStr LeftOut(Interface* ip, DWORD options, INode* part) override {
        if (ip == nullptr) return {};
        try {
            interchange::ExportOptions chosen = chosenBy(options);
            chosen.database = part;
            return CStr(interchange::leftOutOf(chosen, *ip));
        } catch (...) {
            return {};  // the export itself says what is wrong
        }
    }

    int DoExport(const char* path, ImpExpReport& report, Interface* ip, DWORD options,
                 INode* part) override {
        if (ip == nullptr) return IMPEXP_FAIL;
        interchange::ExportOptions chosen = chosenBy(options);
        chosen.database = part;
        return interchange::exportFile(path, chosen, report, *ip);
    }

private:
    static interchange::ExportOptions chosenBy(DWORD options) {
        interchange::ExportOptions chosen;
        chosen.revision = options >> SCENE_EXPORT_VERSION_SHIFT;
        chosen.selectedOnly = (options & SCENE_EXPORT_SELECTED) != 0;
        return chosen;
    }

    struct PublishedVersion {
        DWORD number;
        const char* name;
    };
    static constexpr PublishedVersion kVersions[] = {
        {1660, "16.6"}, {1650, "16.5"}, {1640, "16.4"}, {1630, "16.3"}, {1620, "16.2"},
        {1610, "16.1"}, {1600, "16.0"}, {1580, "15.8"}, {1570, "15.7"}, {1560, "15.6"},
        {1550, "15.5"}, {1540, "15.4"}, {1510, "15.1"}, {1420, "14.2"}};
};

class FltSceneImportDesc final : public ClassDesc2 {
public:
    bool IsPublic() override { return true; }
    void* Create(bool) override {
        return static_cast<SceneImport*>(new (std::nothrow) FltSceneImport);
    }
    const char* ClassName() override { return "OpenFlight"; }
    SClass_ID SuperClassID() override { return SCENE_IMPORT_CLASS_ID; }
    Class_ID ClassID() override { return {0x51D8A2C4, 0x7B30E619}; }
    const char* Category() override { return ""; }
};

class FltSceneExportDesc final : public ClassDesc2 {
public:
    bool IsPublic() override { return true; }
    void* Create(bool) override {
        return static_cast<SceneExport*>(new (std::nothrow) FltSceneExport);
    }
    const char* ClassName() override { return "OpenFlight"; }
    SClass_ID SuperClassID() override { return SCENE_EXPORT_CLASS_ID; }
    Class_ID ClassID() override { return {0x51D8A2C4, 0x7B30E61B}; }
    const char* Category() override { return ""; }
};

class TextureAttrDesc final : public ClassDesc2 {
public:
    bool IsPublic() override { return false; }
    void* Create(bool) override {
        return static_cast<CustAttrib*>(new (std::nothrow) interchange::TextureAttr);
    }
    const char* ClassName() override { return "OpenFlight texture"; }
    SClass_ID SuperClassID() override { return CUST_ATTRIB_CLASS_ID; }
    Class_ID ClassID() override { return interchange::kTextureAttrClassId; }
    const char* Category() override { return ""; }
};

const interchange::NodeLooks nodeLooks;

}  // namespace

KILN_PLUGIN_EXPORT const char* LibDescription() {
    // Keeps the published functions in the module.
    xref::xrefFunctions();
    static std::string description;
    try {
        description = interchange::text(interchange::TextId::kDescription);
    } catch (...) {
        description.clear();
    }
    return description.c_str();
}

KILN_PLUGIN_EXPORT int LibNumberClasses() {
    return 3;
}

KILN_PLUGIN_EXPORT ClassDesc* LibClassDesc(int index) {
    static FltSceneImportDesc importer;
    static FltSceneExportDesc exporter;
    static TextureAttrDesc textureAttr;
    ClassDesc* const all[] = {&importer, &exporter, &textureAttr};
    return index >= 0 && index < LibNumberClasses() ? all[index] : nullptr;
}

KILN_PLUGIN_EXPORT DWORD LibVersion() {
    return KILN_SDK_VERSION;
}
