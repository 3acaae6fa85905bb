#include "summary.h"

#include <fltkilnutil/nodekind.h>
#include <interchange/import.h>

namespace interchange {

namespace {

struct KindName {
    FltNodeKind kind;
    std::string_view one;
    std::string_view many;
};

/// In the order in which a summary lists them.
constexpr KindName kKindNames[] = {
    {FltNodeKind::Group, "group", "groups"},
    {FltNodeKind::Lod, "level of detail", "levels of detail"},
    {FltNodeKind::Switch, "switch", "switches"},
    {FltNodeKind::Dof, "degree of freedom", "degrees of freedom"},
    {FltNodeKind::Object, "object", "objects"},
    {FltNodeKind::Bsp, "binary separating plane", "binary separating planes"},
    {FltNodeKind::ClipRegion, "clip region", "clip regions"},
    {FltNodeKind::XRef, "external reference", "external references"},
    {FltNodeKind::InstanceDef, "instance definition", "instance definitions"},
    {FltNodeKind::InstanceRef, "instance reference", "instance references"},
    {FltNodeKind::LightPoint, "light point", "light points"},
    {FltNodeKind::LightSource, "light source", "light sources"},
    {FltNodeKind::Face, "face", "faces"},
    {FltNodeKind::Header, "header", "headers"},
};

void append(std::string& kinds, std::size_t count, std::string_view one, std::string_view many) {
    if (count == 0) return;
    if (!kinds.empty()) kinds += ", ";
    kinds += counted(count, one, many);
}

}  // namespace

std::string counted(std::size_t count, std::string_view one, std::string_view many) {
    return std::to_string(count) + ' ' + std::string(count == 1 ? one : many);
}

std::string textOf(const KindCounts& counts) {
    std::size_t all = 0;
    for (const auto& [kind, count] : counts) all += count;
    std::size_t named = 0;
    std::string kinds;
    for (const KindName& name : kKindNames) {
        const auto found = counts.find(static_cast<std::uint16_t>(name.kind));
        if (found == counts.end()) continue;
        append(kinds, found->second, name.one, name.many);
        named += found->second;
    }
    append(kinds, all - named, "node of another kind", "nodes of other kinds");
    return counted(all, "node", "nodes") + " (" + kinds + ")";
}

std::string summaryOf(const FileIndex& file) {
    KindCounts counts;
    for (const FileNode& node : file.nodes) ++counts[node.kind];
    std::string text = "imported " + textOf(counts);
    if (file.unknownRecords != 0) {
        text += ", kept " + counted(file.unknownRecords, "unknown record", "unknown records");
    }
    if (file.strayBytes != 0) {
        text += ", left out " +
                counted(file.strayBytes, "stray byte at the end", "stray bytes at the end");
    }
    return text;
}

}  // namespace interchange
