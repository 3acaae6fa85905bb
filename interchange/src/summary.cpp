#include <interchange/import.h>

#include <fltkilnutil/nodekind.h>

#include <algorithm>
#include <string_view>

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

std::string counted(std::size_t count, std::string_view one, std::string_view many) {
    return std::to_string(count) + ' ' + std::string(count == 1 ? one : many);
}

}  // namespace

std::string summaryOf(const Outline& outline) {
    std::string kinds;
    for (const KindName& name : kKindNames) {
        const auto count = static_cast<std::size_t>(std::ranges::count(
            outline.nodes, static_cast<std::uint16_t>(name.kind), &OutlineNode::kind));
        if (count == 0) continue;
        if (!kinds.empty()) kinds += ", ";
        kinds += counted(count, name.one, name.many);
    }
    std::string text =
        "imported " + counted(outline.nodes.size(), "node", "nodes") + " (" + kinds + ")";
    if (outline.unknownRecords != 0) {
        text += ", skipped " + counted(outline.unknownRecords, "unknown record", "unknown records");
    }
    if (outline.leftOutNodes != 0) {
        text += ", left out " +
                counted(outline.leftOutNodes, "node of another kind", "nodes of other kinds");
    }
    return text;
}

}  // namespace interchange
