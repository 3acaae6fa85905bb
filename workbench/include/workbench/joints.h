// Joints of the scene: which the user means, and where they may stand.
#pragma once

#include <kiln/interface.h>
#include <kiln/nodelook.h>
#include <render/scenefeed.h>

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace workbench {

/// A joint and what is known of it.
struct KnownJoint {
    DWORD node = 0;  ///< its handle
    std::string name;
    NodeJoint joint;
    const INode* inFile = nullptr;  ///< itself, where it is in a file that the scene refers to
};

/// The selected nodes that are joints, and of the others the nearest joint above; each once, in the
/// order of selection.
std::vector<KnownJoint> selectedJoints(Interface& host);
/// All of the scene, parents before children, and then those of files that it refers to: what hangs
/// below `fileTops`, each once.
std::vector<KnownJoint> allJoints(Interface& host, std::span<INode* const> fileTops = {});

/// Between which values a motion goes.
struct MotionRange {
    double least = 0, greatest = 0;

    /// The nearest value within; `least` for what is no number.
    double clamp(double value) const;
    friend bool operator==(const MotionRange&, const MotionRange&) = default;
};

/// That of a motion: its limits, and nothing for one that these leave no room. Without limits it is
/// one turn for angles, for factors 0.1 to 3, and about `reach` units to both sides along an axis;
/// more, where the value of now lies beyond.
std::optional<MotionRange> rangeOf(const NodeJoint& joint, std::size_t motion, double reach);

/// Brings the joints of a scene to and fro between their limits, each from where it stands. Where a
/// joint has motions with limits, it is these that play; otherwise its angles, the ways along its
/// axes or the factors, whichever is free.
class JointPlay {
public:
    /// Seconds from one end to the other and back.
    static constexpr double kPeriod = 4;

    /// `poses` are those shown now; other joints stand as the scene says. `reach` is as with
    /// `rangeOf`.
    JointPlay(const std::vector<KnownJoint>& joints, const render::Poses& poses, double reach);

    /// Where they are so many seconds after the beginning: those of the scene, and of files.
    render::Poses at(double seconds) const;
    render::FilePoses inFilesAt(double seconds) const;

private:
    struct Swing {
        std::size_t motion;
        MotionRange range;
        double phase;  ///< in radians: where in its way it begins
    };
    struct Player {
        DWORD node;
        const INode* inFile;
        NodeJoint::Values start;
        std::vector<Swing> swings;

        NodeJoint::Values at(double seconds) const;
    };
    std::vector<Player> players_;
};

/// Has the scene stand as the poses show it, in the step that the caller has opened. False when one
/// of them cannot be kept: the caller then takes the step back. Joints that are gone are left out.
bool keepPoses(Interface& host, const render::Poses& poses);

}  // namespace workbench
