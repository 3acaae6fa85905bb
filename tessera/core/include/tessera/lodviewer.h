// The level-of-detail preview: hides and shows geometry as seen from one distance.
#pragma once

#include <quillon/fltlod.h>

#include <vector>

class INode;
class Interface;

namespace tessera {

/// Walks the scene once per operation, on the stack of whoever asks. All distances are in scene
/// units. Between the distinct switch distances of the scene lie bands; the steps choose the middle
/// of one. A step gives true when it applied a distance, and false, changing nothing, when the
/// scene has fewer than two distinct distances or the last band in that direction is shown.
class LodViewer {
public:
    /// `host` is not owned and must outlive the viewer.
    explicit LodViewer(Interface& host) : host_(host) {}

    /// The nearest band.
    bool MostDetail();
    /// The farthest band.
    bool LeastDetail();
    /// One band nearer than the stored distance; the nearest when none is stored.
    bool MoreDetail();
    /// One band farther than the stored distance; the farthest when none is stored.
    bool LessDetail();
    /// Applies the stored distance again, after switches or levels of detail have changed. Does
    /// nothing when none is stored.
    void Refresh();

    /// Reads every level of detail of the scene. One that cannot be read counts as a plain
    /// structural node.
    void Collect();
    /// Shows the scene, as collected, from `distance`, redraws the viewports and stores the
    /// distance with "Aviary".
    void Apply(double distance);

    /// The distinct switch distances, ascending.
    const std::vector<double>& lodDistances() const noexcept { return lodDistances_; }

private:
    struct LodEntry {
        INode* node;
        FltLod lod;
    };
    struct Pending {
        INode* node;
        bool inRange;
    };

    bool applyBand(std::size_t lower);
    const FltLod* findLod(INode* node) const;
    void walk(INode* root, double distance);
    void visit(const Pending& pending, double distance);
    void visitChildren(INode* node, bool inRange);
    void visitLod(INode* node, const FltLod& lod, double distance);
    void visitSwitch(INode* node, bool inRange);
    void hideBelow(INode* node);

    Interface& host_;
    std::vector<LodEntry> lodTable_;  // by the node's address
    std::vector<double> lodDistances_;
    std::vector<Pending> pending_;  // nodes to visit, the next one last
};

}  // namespace tessera
