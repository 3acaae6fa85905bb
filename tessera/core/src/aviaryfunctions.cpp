#include "aviaryfunctions.h"

#include <tessera/iaviaryutil.h>

#include <functional>
#include <initializer_list>
#include <iterator>
#include <stdexcept>
#include <type_traits>
#include <utility>

namespace tessera {

namespace {

// ---------------------------------------------------------------- arguments and results

/// What C++ types are to scripts. Truth values travel as numbers, so a number takes either.
template <typename T>
constexpr bool isOfType(ParamType2 type) {
    if constexpr (std::is_same_v<T, void>) return type == TYPE_VOID;
    if constexpr (std::is_same_v<T, bool>) return type == TYPE_BOOL;
    if constexpr (std::is_same_v<T, int>) return type == TYPE_INT || type == TYPE_BOOL;
    if constexpr (std::is_same_v<T, double>) return type == TYPE_FLOAT;
    if constexpr (std::is_same_v<T, const char*>) return type == TYPE_STRING;
    if constexpr (std::is_same_v<T, INode*>) return type == TYPE_INODE;
    if constexpr (std::is_same_v<T, Texmap*>) return type == TYPE_TEXMAP;
}

template <typename T>
T argument(const FPParams* params, std::size_t i) {
    if (!params || i >= params->size() || !isOfType<T>((*params)[i].type)) return {};
    const FPValue& value = (*params)[i];
    if constexpr (std::is_same_v<T, int>) return value.i;
    if constexpr (std::is_same_v<T, double>) return double{value.f};
    if constexpr (std::is_same_v<T, const char*>) return value.s;
    if constexpr (std::is_same_v<T, INode*>) return value.n;
    if constexpr (std::is_same_v<T, Texmap*>) return value.tex;
}

void load(FPValue& result, bool value, const IAviaryUtil&) {
    result.SetBool(value);
}
void load(FPValue& result, int value, const IAviaryUtil&) {
    result.SetInt(value);
}
void load(FPValue& result, double value, const IAviaryUtil&) {
    result.SetFloat(static_cast<float>(value));
}
/// Takes a text over, unless it is the shared empty one.
void load(FPValue& result, const char* value, const IAviaryUtil& aviary) {
    if (value == aviary.EmptyString())
        result.SetString(value);
    else
        result.SetOwnedString(const_cast<char*>(value));
}

// ---------------------------------------------------------------- rows

using Call = void (*)(IAviaryUtil&, const FPParams*, FPValue& result);

enum class Published { kAsFunction, kAsProperty, kNot };

/// One function: what is published of it, and what a call of it does.
struct Row {
    FPFunctionDesc described;
    Published published;
    Call call;
};

constexpr int kNoDescription = -1;

/// A row for a member of the interface, or for a function that gets the interface first. One whose
/// types are not those of its parameters does not compile.
template <auto kFunction, typename Result, typename... Arguments>
constexpr Row rowFor(Published published, FunctionID id, const char* name, ParamType2 result,
                     std::initializer_list<FPParamDesc> params) {
    if (params.size() != sizeof...(Arguments)) throw std::invalid_argument("parameters");
    const FPParamDesc* param = params.begin();
    if (!isOfType<Result>(result) || !(true && ... && isOfType<Arguments>((param++)->type)))
        throw std::invalid_argument("types");
    const Call call = [](IAviaryUtil& aviary, [[maybe_unused]] const FPParams* given,
                         [[maybe_unused]] FPValue& value) {
        const auto run = [&]<std::size_t... i>(std::index_sequence<i...>) {
            return std::invoke(kFunction, aviary, argument<Arguments>(given, i)...);
        };
        constexpr std::index_sequence_for<Arguments...> kAll;
        if constexpr (std::is_void_v<Result>)
            run(kAll);
        else
            load(value, run(kAll), aviary);
    };
    return {{id, name, kNoDescription, result, 0, params}, published, call};
}

template <auto kFunction>
struct RowOf;
template <typename Result, typename... Arguments, Result (IAviaryUtil::*kMember)(Arguments...)>
struct RowOf<kMember> {
    static constexpr auto kMake = rowFor<kMember, Result, Arguments...>;
};
template <typename Result, typename... Arguments, Result (*kFree)(IAviaryUtil&, Arguments...)>
struct RowOf<kFree> {
    static constexpr auto kMake = rowFor<kFree, Result, Arguments...>;
};

template <auto kFunction>
constexpr Row function(FunctionID id, const char* name, ParamType2 result,
                       std::initializer_list<FPParamDesc> params = {}) {
    return RowOf<kFunction>::kMake(Published::kAsFunction, id, name, result, params);
}

template <auto kGetter>
constexpr Row property(FunctionID id, const char* name) {
    return RowOf<kGetter>::kMake(Published::kAsProperty, id, name, TYPE_INT, {});
}

/// Scripts cannot name it; its number stays taken.
template <auto kFunction>
constexpr Row unpublished(FunctionID id) {
    return RowOf<kFunction>::kMake(Published::kNot, id, "", TYPE_VOID, {});
}

/// A script may keep the text beyond the next import, so it gets a copy of its own.
const char* copyOfLastImport(IAviaryUtil& aviary) {
    const char* const copy = KILN_strdup(aviary.GetLastImport());
    return copy ? copy : aviary.EmptyString();
}

// Scripts depend on the names, keywords included, which are matched exactly: the lower-case "node"
// of some stays. Callers through the dispatcher depend on the numbers.
using I = IAviaryUtil;
constexpr FPParamDesc kNode{"Node", TYPE_INODE};
constexpr FPParamDesc kLowerNode{"node", TYPE_INODE};
constexpr FPParamDesc kString{"String", TYPE_STRING};
constexpr FPParamDesc kTexmap{"Texmap", TYPE_TEXMAP};

constexpr Row kRows[] = {
    function<&I::Browser>(0, "Browser", TYPE_VOID),
    function<&I::RefreshBrowser>(1, "RefreshBrowser", TYPE_VOID),
    unpublished<&I::ResetBrowserPosition>(2),
    function<&I::GetLodDistance>(3, "GetLodDistance", TYPE_FLOAT),
    function<&I::SetLodDistance>(4, "SetLodDistance", TYPE_VOID, {{"LodDistance", TYPE_FLOAT}}),
    function<&I::IsLodDistanceSet>(5, "IsLodDistanceSet", TYPE_BOOL),
    function<&I::LodLeastDetail>(6, "LodLeastDetail", TYPE_VOID),
    function<&I::LodLessDetail>(7, "LodLessDetail", TYPE_VOID),
    function<&I::LodMoreDetail>(8, "LodMoreDetail", TYPE_VOID),
    function<&I::LodMostDetail>(9, "LodMostDetail", TYPE_VOID),
    function<&I::CreateGroup>(10, "CreateGroup", TYPE_BOOL),
    function<&I::CreateObject>(11, "CreateObject", TYPE_BOOL),
    function<&I::CreateSwitch>(12, "CreateSwitch", TYPE_BOOL),
    function<&I::CreateLOD>(13, "CreateLOD", TYPE_BOOL),
    function<&I::CreateDOF>(14, "CreateDOF", TYPE_BOOL),
    function<&I::CreateBSP>(15, "CreateBSP", TYPE_BOOL),
    function<&I::CreateClipRegion>(16, "CreateClipRegion", TYPE_BOOL),
    function<&I::CreateExternalRef>(17, "CreateExternalRef", TYPE_BOOL),
    function<&I::CreateLightPoint>(18, "CreateLightPoint", TYPE_BOOL),
    function<&I::GetComment>(19, "GetComment", TYPE_STRING, {kNode}),
    function<&I::PutComment>(20, "PutComment", TYPE_BOOL, {kNode, kString}),
    function<&I::HasData>(21, "HasData", TYPE_BOOL, {kLowerNode}),
    function<&I::CopyData>(22, "CopyData", TYPE_BOOL,
                           {{"srcnode", TYPE_INODE}, {"dstnode", TYPE_INODE}}),
    function<&I::RemoveData>(23, "RemoveData", TYPE_BOOL, {kLowerNode}),
    function<copyOfLastImport>(24, "GetLastImport", TYPE_STRING),
    function<&I::IsOfType>(25, "IsOfType", TYPE_BOOL, {kNode, kString}),
    function<&I::SetKeepTriangles>(26, "SetKeepTriangles", TYPE_BOOL, {kNode, {"Flag", TYPE_BOOL}}),
    function<&I::GetKeepTriangles>(27, "GetKeepTriangles", TYPE_BOOL, {kNode}),
    function<&I::AddTextureAttr>(28, "AddTextureAttr", TYPE_BOOL, {kTexmap}),
    function<&I::RemoveTextureAttr>(29, "RemoveTextureAttr", TYPE_BOOL, {kTexmap}),
    function<&I::GetExternalRefFilename>(30, "GetExternalRefFilename", TYPE_STRING, {kNode}),
    function<&I::PutExternalRefFilename>(31, "PutExternalRefFilename", TYPE_BOOL, {kNode, kString}),
    function<&I::GetExternalRefFlags>(32, "GetExternalRefFlags", TYPE_INT, {kNode}),
    function<&I::PutExternalRefFlags>(33, "PutExternalRefFlags", TYPE_BOOL,
                                      {kNode, {"Flags", TYPE_INT}}),
    property<&I::GetOverrideColors>(34, "OverrideColors"),
    property<&I::GetOverrideMaterials>(35, "OverrideMaterials"),
    property<&I::GetOverrideTextures>(36, "OverrideTextures"),
    property<&I::GetOverrideLineStyles>(37, "OverrideLineStyles"),
    property<&I::GetOverrideSounds>(38, "OverrideSounds"),
    property<&I::GetOverrideLightSources>(39, "OverrideLightSources"),
    property<&I::GetOverrideLightPoints>(40, "OverrideLightPoints"),
};

constexpr bool idsArePositions() {
    for (std::size_t i = 0; i < std::size(kRows); ++i)
        if (!std::cmp_equal(kRows[i].described.id, i)) return false;
    return true;
}
static_assert(idsArePositions());

}  // namespace

std::vector<FPFunctionDesc> aviaryFunctions() {
    std::vector<FPFunctionDesc> functions;
    for (const Row& row : kRows)
        if (row.published == Published::kAsFunction) functions.push_back(row.described);
    return functions;
}

std::vector<FPPropertyDesc> aviaryProperties() {
    std::vector<FPPropertyDesc> properties;
    for (const Row& row : kRows)
        if (row.published == Published::kAsProperty)
            properties.push_back(
                {row.described.id, FP_NO_FUNCTION, row.described.name, 0, row.described.result});
    return properties;
}

FPStatus callAviary(IAviaryUtil& aviary, FunctionID id, const FPParams* params, FPValue& result) {
    if (id < 0 || std::cmp_greater_equal(id, std::size(kRows))) return FPS_NO_SUCH_FUNCTION;
    kRows[id].call(aviary, params, result);
    return FPS_OK;
}

}  // namespace tessera
