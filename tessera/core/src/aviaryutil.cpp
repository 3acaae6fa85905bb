#include <tessera/aviaryutil.h>

#include "aviaryfunctions.h"
#include "textureattr.h"

#include <fltkilnutil/kilnface.h>
#include <fltkilnutil/kilnflt.h>
#include <quillon/fltface.h>
#include <quillon/fltopcode.h>
#include <quillon/flttext.h>
#include <quillon/fltxref.h>
#include <tessera/browserclient.h>
#include <tessera/browserexports.h>
#include <tessera/lodviewer.h>
#include <tessera/nodecreation.h>

#include <cstring>
#include <string>
#include <utility>

namespace tessera {

namespace {

/// Nothing may reach the script engine by exception; what would is the function's plain failure.
template <typename Result, typename Body>
Result orFailure(Result failure, Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        return failure;
    }
}

template <typename Body>
void orNothing(Body&& body) noexcept {
    try {
        std::forward<Body>(body)();
    } catch (...) {
    }
}

/// The node's stored kind is `kind`; derivation does not count.
bool isStored(INode* node, FltNodeKind kind) {
    FltNodeKind stored;
    return fltGetKind(node, false, stored) && stored == kind;
}

constexpr char kEmptyString[1] = "";

/// For the caller to free; short of memory the empty text that is not.
const char* copyOf(const char* text) {
    const char* const copy = KILN_strdup(text);
    return copy ? copy : kEmptyString;
}

bool readXRef(INode* node, FltXRef& record) {
    return isStored(node, FltNodeKind::XRef) && fltGetRecord(node, record);
}

class AviaryUtil final : public IAviaryUtil {
public:
    AviaryUtil()
        : IAviaryUtil(kAviaryInterfaceId, "Aviary", 0, nullptr, FP_CORE, aviaryFunctions(),
                      aviaryProperties()) {}

    void Browser() override {
        orNothing([] {
            Interface* const host = GetCOREInterface();
            if (!host || createBrowser(*host) != kBrowserDone) return;
            DisableAccelerators();
            showBrowser(*host);
        });
    }
    void RefreshBrowser() override {
        orNothing([] { zufltguirefresh(); });
    }
    void ResetBrowserPosition() override {
        orNothing([] { zufltguiresetpos(); });
    }

    void StoreLodDistance(double distance) override {
        lodDistance_ = distance;
        lodDistanceSet_ = true;
    }
    void SetLodDistance(double distance) override {
        orNothing([&] {
            Interface* const host = GetCOREInterface();
            if (!host) return;
            StoreLodDistance(distance);
            LodViewer(*host).Refresh();
        });
    }
    double GetLodDistance() override { return lodDistance_; }
    bool IsLodDistanceSet() override { return lodDistanceSet_; }
    void LodLeastDetail() override { stepLod(&LodViewer::LeastDetail); }
    void LodLessDetail() override { stepLod(&LodViewer::LessDetail); }
    void LodMoreDetail() override { stepLod(&LodViewer::MoreDetail); }
    void LodMostDetail() override { stepLod(&LodViewer::MostDetail); }

    bool CreateGroup() override { return CreateNode(kFltGroup); }
    bool CreateObject() override { return CreateNode(kFltObject); }
    bool CreateSwitch() override { return CreateNode(kFltSwitch); }
    bool CreateLOD() override { return CreateNode(kFltLod); }
    bool CreateDOF() override { return CreateNode(kFltDof); }
    bool CreateBSP() override { return CreateNode(kFltBsp); }
    bool CreateClipRegion() override { return CreateNode(kFltClipRegion); }
    bool CreateExternalRef() override { return CreateNode(kFltExternalRef); }
    bool CreateLightPoint() override { return CreateNode(kFltLightPoint); }
    bool CreateNode(unsigned short opcode) override {
        return orFailure(false, [=] {
            Interface* const host = GetCOREInterface();
            if (!host) return false;
            INode* const parent = host->GetSelNodeCount() == 1 ? host->GetSelNode(0) : nullptr;
            return createFltNode(*host, opcode, kFltRevision, parent) != nullptr;
        });
    }

    const char* GetComment(INode* node) override {
        return orFailure<const char*>(kEmptyString, [=]() -> const char* {
            if (!fltHasData(node)) return kEmptyString;
            std::string comment;
            fltGetComment(node, comment);
            return copyOf(comment.c_str());
        });
    }
    bool PutComment(INode* node, const char* text) override {
        return fltHasData(node) && fltPutComment(node, text ? text : "");
    }
    const char* GetExternalRefFilename(INode* node) override {
        return orFailure<const char*>(kEmptyString, [=]() -> const char* {
            FltXRef record;
            if (!readXRef(node, record)) return kEmptyString;
            return copyOf(std::string(fltText(record.fileName)).c_str());
        });
    }
    bool PutExternalRefFilename(INode* node, const char* text) override {
        FltXRef record;
        if (!readXRef(node, record)) return false;
        fltSetText(record.fileName, text ? text : "");
        return fltPutRecord(node, record);
    }
    int GetExternalRefFlags(INode* node) override {
        FltXRef record;
        return readXRef(node, record) ? record.flags : 0;
    }
    bool PutExternalRefFlags(INode* node, int flags) override {
        FltXRef record;
        if (!readXRef(node, record)) return false;
        record.flags = flags;
        return fltPutRecord(node, record);
    }

    bool HasData(INode* node) override { return fltHasData(node); }
    bool CopyData(INode* source, INode* destination) override {
        return fltCopyData(source, destination);
    }
    bool RemoveData(INode* node) override { return fltRemoveData(node); }

    void SetLastImport(const char* name) override {
        orNothing([=, this] {
            lastImport_ = name;
            zufltguisettitle(lastImport_);
        });
    }
    const char* GetLastImport() override { return lastImport_; }

    bool IsOfType(INode* node, const char* name) override {
        FltNodeKind kind;
        if (!name || !fltGetKind(node, false, kind)) return false;
        // The "FLT_" is skipped blindly, on purpose: a kind without a name of its own has always
        // been of type "FINED", what is left of "UNDEFINED".
        constexpr std::size_t kPrefixLength = 4;
        return std::strcmp(fltOpcodeName(static_cast<std::uint16_t>(kind)) + kPrefixLength, name) ==
               0;
    }
    bool SetKeepTriangles(INode* node, int flag) override;
    bool GetKeepTriangles(INode* node) override {
        KilnFace options;
        return isStored(node, FltNodeKind::Face) && fltGetOptions(node, options) &&
               options.keepTriangles != 0;
    }
    bool AddTextureAttr(Texmap* texmap) override {
        return orFailure(false, [=] { return addTextureAttr(texmap); });
    }
    bool RemoveTextureAttr(Texmap* texmap) override {
        return orFailure(false, [=] { return removeTextureAttr(texmap); });
    }

    int GetOverrideColors() override { return static_cast<int>(0x80000000u); }
    int GetOverrideMaterials() override { return 0x40000000; }
    int GetOverrideTextures() override { return 0x20000000; }
    int GetOverrideLineStyles() override { return 0x10000000; }
    int GetOverrideSounds() override { return 0x08000000; }
    int GetOverrideLightSources() override { return 0x04000000; }
    int GetOverrideLightPoints() override { return 0x02000000; }

    const char* EmptyString() const override { return kEmptyString; }

protected:
    FPStatus _dispatch_fn(FunctionID id, TimeValue, FPValue& result, FPParams* params) override {
        return callAviary(*this, id, params, result);
    }

private:
    void stepLod(bool (LodViewer::*step)()) {
        orNothing([=] {
            Interface* const host = GetCOREInterface();
            if (!host) return;
            LodViewer viewer(*host);
            if ((viewer.*step)()) host->RedrawViews(host->GetTime(), REDRAW_NORMAL, nullptr);
        });
    }

    CStr lastImport_;
    double lodDistance_ = 0;
    bool lodDistanceSet_ = false;
};

/// Makes a mesh node that is no OpenFlight node a face first, for a face is what can be kept in
/// triangles; a node that is stored as something else is refused.
bool AviaryUtil::SetKeepTriangles(INode* node, int flag) {
    if (!node || !fltIsFaceObject(node)) return false;
    return orFailure(false, [=] {
        FltFace record;
        KilnFace options;
        if (fltHasOptions(node) && !fltGetOptions(node, options)) return false;
        options.keepTriangles = static_cast<std::uint32_t>(flag);
        if (fltHasData(node) && (!isStored(node, FltNodeKind::Face) ||
                                 (fltHasRecord(node) && !fltGetRecord(node, record))))
            return false;
        return fltPutData(node, FltNodeKind::Face, kFltRevision, record, &options);
    });
}

// Built when the module is loaded, before the host asks for any class.
AviaryUtil theAviaryUtil;

}  // namespace

IAviaryUtil& aviaryUtil() {
    return theAviaryUtil;
}

}  // namespace tessera
