#include "summary.h"

#include "texts.h"

#include <fltkilnutil/nodekind.h>
#include <interchange/import.h>

namespace interchange {

namespace {

struct KindName {
    FltNodeKind kind;
    TextId name;
};

/// In the order in which a summary lists them.
constexpr KindName kKindNames[] = {
    {FltNodeKind::Group, TextId::kGroup},
    {FltNodeKind::Lod, TextId::kLod},
    {FltNodeKind::Switch, TextId::kSwitch},
    {FltNodeKind::Dof, TextId::kDof},
    {FltNodeKind::Object, TextId::kObject},
    {FltNodeKind::Bsp, TextId::kBsp},
    {FltNodeKind::ClipRegion, TextId::kClipRegion},
    {FltNodeKind::XRef, TextId::kXRef},
    {FltNodeKind::InstanceDef, TextId::kInstanceDef},
    {FltNodeKind::InstanceRef, TextId::kInstanceRef},
    {FltNodeKind::LightPoint, TextId::kLightPoint},
    {FltNodeKind::LightSource, TextId::kLightSource},
    {FltNodeKind::Face, TextId::kFace},
    {FltNodeKind::Header, TextId::kHeader},
};

}  // namespace

std::string textOf(const KindCounts& counts) {
    std::size_t all = 0;
    for (const auto& [kind, count] : counts) all += count;
    std::size_t named = 0;
    std::string kinds;
    for (const KindName& name : kKindNames) {
        const auto found = counts.find(static_cast<std::uint16_t>(name.kind));
        if (found == counts.end()) continue;
        enumerate(kinds, counted(found->second, name.name));
        named += found->second;
    }
    if (all != named) enumerate(kinds, counted(all - named, TextId::kOtherNode));
    return text(TextId::kNodesOfKinds, {counted(all, TextId::kNode), kinds});
}

std::string summaryOf(const FileIndex& file) {
    KindCounts counts;
    for (const FileNode& node : file.nodes) ++counts[node.kind];
    std::string summary = text(TextId::kImported, {textOf(counts)});
    if (file.unknownRecords != 0) {
        summary =
            text(TextId::kKept, {summary, counted(file.unknownRecords, TextId::kUnknownRecord)});
    }
    if (file.strayBytes != 0) {
        summary = text(TextId::kLeftOut, {summary, counted(file.strayBytes, TextId::kStrayByte)});
    }
    return summary;
}

}  // namespace interchange
