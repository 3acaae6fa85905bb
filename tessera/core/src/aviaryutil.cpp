#include <tessera/aviaryutil.h>

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

// Function ids. Scripts are compiled against names, but callers through the dispatcher use these
// numbers, so they stay as they are.
enum Function : FunctionID {
    kBrowser = 0,
    kRefreshBrowser = 1,
    kResetBrowserPosition = 2,  // not published; its number stays taken
    kGetLodDistance = 3,
    kSetLodDistance = 4,
    kIsLodDistanceSet = 5,
    kLodLeastDetail = 6,
    kLodLessDetail = 7,
    kLodMoreDetail = 8,
    kLodMostDetail = 9,
    kCreateGroup = 10,
    kCreateObject = 11,
    kCreateSwitch = 12,
    kCreateLOD = 13,
    kCreateDOF = 14,
    kCreateBSP = 15,
    kCreateClipRegion = 16,
    kCreateExternalRef = 17,
    kCreateLightPoint = 18,
    kGetComment = 19,
    kPutComment = 20,
    kHasData = 21,
    kCopyData = 22,
    kRemoveData = 23,
    kGetLastImport = 24,
    kIsOfType = 25,
    kSetKeepTriangles = 26,
    kGetKeepTriangles = 27,
    kAddTextureAttr = 28,
    kRemoveTextureAttr = 29,
    kGetExternalRefFilename = 30,
    kPutExternalRefFilename = 31,
    kGetExternalRefFlags = 32,
    kPutExternalRefFlags = 33,
    kOverrideColors = 34,
    kOverrideMaterials = 35,
    kOverrideTextures = 36,
    kOverrideLineStyles = 37,
    kOverrideSounds = 38,
    kOverrideLightSources = 39,
    kOverrideLightPoints = 40,
};

constexpr int kNoDescription = -1;

// Keyword names are matched exactly and scripts depend on them, the lower-case "node" of HasData
// and RemoveData included.
constexpr FPFunctionDesc kFunctions[] = {
    {kBrowser, "Browser", kNoDescription, TYPE_VOID},
    {kRefreshBrowser, "RefreshBrowser", kNoDescription, TYPE_VOID},
    {kGetLodDistance, "GetLodDistance", kNoDescription, TYPE_FLOAT},
    {kSetLodDistance,
     "SetLodDistance",
     kNoDescription,
     TYPE_VOID,
     0,
     {{"LodDistance", TYPE_FLOAT}}},
    {kIsLodDistanceSet, "IsLodDistanceSet", kNoDescription, TYPE_BOOL},
    {kLodLeastDetail, "LodLeastDetail", kNoDescription, TYPE_VOID},
    {kLodLessDetail, "LodLessDetail", kNoDescription, TYPE_VOID},
    {kLodMoreDetail, "LodMoreDetail", kNoDescription, TYPE_VOID},
    {kLodMostDetail, "LodMostDetail", kNoDescription, TYPE_VOID},
    {kCreateGroup, "CreateGroup", kNoDescription, TYPE_BOOL},
    {kCreateObject, "CreateObject", kNoDescription, TYPE_BOOL},
    {kCreateSwitch, "CreateSwitch", kNoDescription, TYPE_BOOL},
    {kCreateLOD, "CreateLOD", kNoDescription, TYPE_BOOL},
    {kCreateDOF, "CreateDOF", kNoDescription, TYPE_BOOL},
    {kCreateBSP, "CreateBSP", kNoDescription, TYPE_BOOL},
    {kCreateClipRegion, "CreateClipRegion", kNoDescription, TYPE_BOOL},
    {kCreateExternalRef, "CreateExternalRef", kNoDescription, TYPE_BOOL},
    {kCreateLightPoint, "CreateLightPoint", kNoDescription, TYPE_BOOL},
    {kGetComment, "GetComment", kNoDescription, TYPE_STRING, 0, {{"Node", TYPE_INODE}}},
    {kPutComment,
     "PutComment",
     kNoDescription,
     TYPE_BOOL,
     0,
     {{"Node", TYPE_INODE}, {"String", TYPE_STRING}}},
    {kHasData, "HasData", kNoDescription, TYPE_BOOL, 0, {{"node", TYPE_INODE}}},
    {kCopyData,
     "CopyData",
     kNoDescription,
     TYPE_BOOL,
     0,
     {{"srcnode", TYPE_INODE}, {"dstnode", TYPE_INODE}}},
    {kRemoveData, "RemoveData", kNoDescription, TYPE_BOOL, 0, {{"node", TYPE_INODE}}},
    {kGetLastImport, "GetLastImport", kNoDescription, TYPE_STRING},
    {kIsOfType,
     "IsOfType",
     kNoDescription,
     TYPE_BOOL,
     0,
     {{"Node", TYPE_INODE}, {"String", TYPE_STRING}}},
    {kSetKeepTriangles,
     "SetKeepTriangles",
     kNoDescription,
     TYPE_BOOL,
     0,
     {{"Node", TYPE_INODE}, {"Flag", TYPE_BOOL}}},
    {kGetKeepTriangles, "GetKeepTriangles", kNoDescription, TYPE_BOOL, 0, {{"Node", TYPE_INODE}}},
    {kAddTextureAttr, "AddTextureAttr", kNoDescription, TYPE_BOOL, 0, {{"Texmap", TYPE_TEXMAP}}},
    {kRemoveTextureAttr,
     "RemoveTextureAttr",
     kNoDescription,
     TYPE_BOOL,
     0,
     {{"Texmap", TYPE_TEXMAP}}},
    {kGetExternalRefFilename,
     "GetExternalRefFilename",
     kNoDescription,
     TYPE_STRING,
     0,
     {{"Node", TYPE_INODE}}},
    {kPutExternalRefFilename,
     "PutExternalRefFilename",
     kNoDescription,
     TYPE_BOOL,
     0,
     {{"Node", TYPE_INODE}, {"String", TYPE_STRING}}},
    {kGetExternalRefFlags,
     "GetExternalRefFlags",
     kNoDescription,
     TYPE_INT,
     0,
     {{"Node", TYPE_INODE}}},
    {kPutExternalRefFlags,
     "PutExternalRefFlags",
     kNoDescription,
     TYPE_BOOL,
     0,
     {{"Node", TYPE_INODE}, {"Flags", TYPE_INT}}},
};

constexpr FPPropertyDesc kProperties[] = {
    {kOverrideColors, FP_NO_FUNCTION, "OverrideColors", 0, TYPE_INT},
    {kOverrideMaterials, FP_NO_FUNCTION, "OverrideMaterials", 0, TYPE_INT},
    {kOverrideTextures, FP_NO_FUNCTION, "OverrideTextures", 0, TYPE_INT},
    {kOverrideLineStyles, FP_NO_FUNCTION, "OverrideLineStyles", 0, TYPE_INT},
    {kOverrideSounds, FP_NO_FUNCTION, "OverrideSounds", 0, TYPE_INT},
    {kOverrideLightSources, FP_NO_FUNCTION, "OverrideLightSources", 0, TYPE_INT},
    {kOverrideLightPoints, FP_NO_FUNCTION, "OverrideLightPoints", 0, TYPE_INT},
};

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
        : IAviaryUtil(kAviaryInterfaceId, "Aviary", 0, nullptr, FP_CORE, kFunctions, kProperties) {}

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
    FPStatus _dispatch_fn(FunctionID id, TimeValue t, FPValue& result, FPParams* params) override;

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

/// The arguments of one call. One that is missing reads as null or 0.
class Arguments {
public:
    explicit Arguments(const FPParams* params) : params_(params) {}

    INode* node(std::size_t i) const { return at(i, TYPE_INODE).n; }
    Texmap* texmap(std::size_t i) const { return at(i, TYPE_TEXMAP).tex; }
    const char* text(std::size_t i) const { return at(i, TYPE_STRING).s; }
    double number(std::size_t i) const { return double{at(i, TYPE_FLOAT).f}; }
    int integer(std::size_t i) const {
        const FPValue& value = at(i, TYPE_INT);
        return value.type == TYPE_INT ? value.i : at(i, TYPE_BOOL).i;
    }

private:
    const FPValue& at(std::size_t i, ParamType2 type) const {
        static const FPValue kNode = FPValue::Node(nullptr);
        static const FPValue kTexmap = FPValue::Map(nullptr);
        static const FPValue kText = FPValue::String(nullptr);
        static const FPValue kFloat = FPValue::Float(0);
        static const FPValue kInt = FPValue::Bool(false);
        if (params_ && i < params_->size() && (*params_)[i].type == type) return (*params_)[i];
        switch (type) {
            case TYPE_INODE:
                return kNode;
            case TYPE_TEXMAP:
                return kTexmap;
            case TYPE_STRING:
                return kText;
            case TYPE_FLOAT:
                return kFloat;
            default:
                return kInt;
        }
    }

    const FPParams* params_;
};

FPStatus AviaryUtil::_dispatch_fn(FunctionID id, TimeValue, FPValue& result, FPParams* params) {
    const Arguments a(params);
    const auto setBool = [&](bool value) { result.SetBool(value); };
    const auto setInt = [&](int value) { result.SetInt(value); };
    const auto setText = [&](const char* text) {
        if (text == kEmptyString)
            result.SetString(text);
        else
            result.SetOwnedString(const_cast<char*>(text));
    };
    switch (id) {
        case kBrowser:
            Browser();
            break;
        case kRefreshBrowser:
            RefreshBrowser();
            break;
        case kResetBrowserPosition:
            ResetBrowserPosition();
            break;
        case kGetLodDistance:
            result.SetFloat(static_cast<float>(GetLodDistance()));
            break;
        case kSetLodDistance:
            SetLodDistance(a.number(0));
            break;
        case kIsLodDistanceSet:
            setBool(IsLodDistanceSet());
            break;
        case kLodLeastDetail:
            LodLeastDetail();
            break;
        case kLodLessDetail:
            LodLessDetail();
            break;
        case kLodMoreDetail:
            LodMoreDetail();
            break;
        case kLodMostDetail:
            LodMostDetail();
            break;
        case kCreateGroup:
            setBool(CreateGroup());
            break;
        case kCreateObject:
            setBool(CreateObject());
            break;
        case kCreateSwitch:
            setBool(CreateSwitch());
            break;
        case kCreateLOD:
            setBool(CreateLOD());
            break;
        case kCreateDOF:
            setBool(CreateDOF());
            break;
        case kCreateBSP:
            setBool(CreateBSP());
            break;
        case kCreateClipRegion:
            setBool(CreateClipRegion());
            break;
        case kCreateExternalRef:
            setBool(CreateExternalRef());
            break;
        case kCreateLightPoint:
            setBool(CreateLightPoint());
            break;
        case kGetComment:
            setText(GetComment(a.node(0)));
            break;
        case kPutComment:
            setBool(PutComment(a.node(0), a.text(1)));
            break;
        case kHasData:
            setBool(HasData(a.node(0)));
            break;
        case kCopyData:
            setBool(CopyData(a.node(0), a.node(1)));
            break;
        case kRemoveData:
            setBool(RemoveData(a.node(0)));
            break;
        // A script may keep the value beyond the next import, so it gets a copy of its own.
        case kGetLastImport:
            setText(copyOf(GetLastImport()));
            break;
        case kIsOfType:
            setBool(IsOfType(a.node(0), a.text(1)));
            break;
        case kSetKeepTriangles:
            setBool(SetKeepTriangles(a.node(0), a.integer(1)));
            break;
        case kGetKeepTriangles:
            setBool(GetKeepTriangles(a.node(0)));
            break;
        case kAddTextureAttr:
            setBool(AddTextureAttr(a.texmap(0)));
            break;
        case kRemoveTextureAttr:
            setBool(RemoveTextureAttr(a.texmap(0)));
            break;
        case kGetExternalRefFilename:
            setText(GetExternalRefFilename(a.node(0)));
            break;
        case kPutExternalRefFilename:
            setBool(PutExternalRefFilename(a.node(0), a.text(1)));
            break;
        case kGetExternalRefFlags:
            setInt(GetExternalRefFlags(a.node(0)));
            break;
        case kPutExternalRefFlags:
            setBool(PutExternalRefFlags(a.node(0), a.integer(1)));
            break;
        case kOverrideColors:
            setInt(GetOverrideColors());
            break;
        case kOverrideMaterials:
            setInt(GetOverrideMaterials());
            break;
        case kOverrideTextures:
            setInt(GetOverrideTextures());
            break;
        case kOverrideLineStyles:
            setInt(GetOverrideLineStyles());
            break;
        case kOverrideSounds:
            setInt(GetOverrideSounds());
            break;
        case kOverrideLightSources:
            setInt(GetOverrideLightSources());
            break;
        case kOverrideLightPoints:
            setInt(GetOverrideLightPoints());
            break;
        default:
            return FPS_NO_SUCH_FUNCTION;
    }
    return FPS_OK;
}

// Built when the module is loaded, before the host asks for any class.
AviaryUtil theAviaryUtil;

}  // namespace

IAviaryUtil& aviaryUtil() {
    return theAviaryUtil;
}

}  // namespace tessera
