// The level-of-detail preview: hides and shows geometry as seen from one distance.
#pragma once

#include <quillon/fltlod.h>
#include <quillon/fltswitch.h>

#include <cstddef>
#include <cstdint>
#include <vector>

class INode;
class Interface;

namespace tessera {

/// Walks the scene once per operation. All distances are in scene units. Between the distinct
/// switch distances of the scene lie bands; a step chooses the middle of one. It returns true when
/// it applied a distance, and false, changing nothing, when the scene has fewer than two distinct
/// distances or the last band in that direction is shown. Without memory a step throws
/// `std::bad_alloc`; some nodes may be shown or hidden by then.
///
/// A viewer keeps the levels of detail and, while it walks, the nodes above the present one: its
/// memory does not grow with the nodes of the scene.
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

    /// Reads every level of detail from `root` (may be null) down. One that cannot be read counts
    /// as a plain structural node.
    void Collect(INode* root);
    /// Shows the scene, as collected, from `distance`, redraws the viewports and stores the
    /// distance with "Aviary".
    void Apply(double distance);

    /// The distinct finite switch distances, ascending.
    const std::vector<double>& lodDistances() const noexcept { return lodDistances_; }

private:
    struct LodEntry {
        INode* node;
        FltLod lod;
    };
    /// How the nodes below one are walked.
    enum class Reach {
        kOutOfRange,  ///< shows nothing
        kInRange,     ///< shows everything but structural nodes
        kHidden,      ///< hides everything
    };
    /// A node whose children are being visited.
    struct Level {
        INode* node;
        int nextChild;
        int childCount;
        Reach reach;
        bool masked;  ///< the children are those of the last of `masks_`
    };
    /// The words of a switch, and where its current mask begins.
    struct Mask {
        FltSwitch record;
        std::int64_t firstWord;
    };

    bool applyBand(std::size_t lower);
    const FltLod* findLod(INode* node);
    void addDistance(double distance);
    void collect(INode* node);
    template <typename Visit>
    void walk(INode* root, Visit visit);
    INode* nextChild();
    INode* nextMaskedChild(Level& level);
    void visit(INode* node, Reach reach, double distance);
    void visitSwitch(INode* node, Reach reach);
    void enter(INode* node, Reach reach);

    Interface& host_;
    std::vector<LodEntry> lodTable_;  // by the node's address
    std::size_t foundLast_ = 0;       // place in the table
    std::vector<double> lodDistances_;
    std::vector<Level> levels_;  // from the top down
    std::vector<Mask> masks_;    // of the switches among them
};

}  // namespace tessera
