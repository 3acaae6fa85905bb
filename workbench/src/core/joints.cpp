#include <workbench/joints.h>

#include <kiln/subtree.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <unordered_set>
#include <utility>

namespace workbench {
namespace {

constexpr double kLeastFactor = 0.1, kGreatestFactor = 3;
constexpr double kHalfTurn = 180;

bool isFactor(std::size_t motion) {
    return motion >= NodeJoint::kFirstScale;
}

bool isAngle(std::size_t motion) {
    return motion >= NodeJoint::kFirstAngle && !isFactor(motion);
}

std::optional<KnownJoint> jointOf(NodeLookSource& source, INode& node) {
    KnownJoint known;
    if (node.IsRootNode() || !source.GetJoint(&node, known.joint)) return std::nullopt;
    known.node = node.GetHandle();
    known.name = node.GetName();
    return known;
}

/// The first of 1, 2 and 5 times a power of ten that is not below the number.
double roundedUp(double value) {
    const double power = std::pow(10, std::floor(std::log10(value)));
    for (const double times : {1., 2., 5.})
        if (value <= times * power) return times * power;
    return 10 * power;
}

/// Which motions play: the first kind of which there are any.
std::vector<std::size_t> motionsThatPlay(const NodeJoint& joint, double reach) {
    std::vector<std::size_t> limited, angles, ways, factors;
    for (std::size_t i = 0; i < NodeJoint::kMotions; ++i) {
        if (!rangeOf(joint, i, reach)) continue;
        (joint.motions[i].isLimited ? limited
         : isAngle(i)               ? angles
         : isFactor(i)              ? factors
                                    : ways)
            .push_back(i);
    }
    for (std::vector<std::size_t>* const kind : {&limited, &angles, &ways})
        if (!kind->empty()) return std::move(*kind);
    return factors;
}

}  // namespace

// However many nodes are selected, each of those above them is asked once.
std::vector<KnownJoint> selectedJoints(Interface& host) {
    std::vector<KnownJoint> joints;
    NodeLookSource* const source = GetNodeLookSource();
    if (!source) return joints;
    std::unordered_set<const INode*> seen;
    for (int i = 0; i < host.GetSelNodeCount(); ++i) {
        INode* node = host.GetSelNode(i);
        while (node && seen.insert(node).second) {
            if (std::optional<KnownJoint> joint = jointOf(*source, *node)) {
                joints.push_back(std::move(*joint));
                break;
            }
            node = node->GetParentNode();
        }
    }
    return joints;
}

std::vector<KnownJoint> allJoints(Interface& host, std::span<INode* const> fileTops) {
    std::vector<KnownJoint> joints;
    NodeLookSource* const source = GetNodeLookSource();
    if (!source) return joints;
    ForEachInSubtree(host.GetRootNode(), [&](INode& node) {
        if (std::optional<KnownJoint> joint = jointOf(*source, node))
            joints.push_back(std::move(*joint));
    });
    // A file may be shown as a whole and in part.
    std::unordered_set<const INode*> seen;
    for (INode* const top : fileTops)
        ForEachInSubtree(top, [&](INode& node) {
            std::optional<KnownJoint> joint = jointOf(*source, node);
            if (!joint || !seen.insert(&node).second) return;
            joint->inFile = &node;
            joints.push_back(std::move(*joint));
        });
    return joints;
}

double MotionRange::clamp(double value) const {
    return value > least ? std::min(value, greatest) : least;
}

std::optional<MotionRange> rangeOf(const NodeJoint& joint, std::size_t motion, double reach) {
    const NodeJoint::Motion& own = joint.motions[motion];
    if (own.isLimited) {
        const bool hasRoom = std::isfinite(own.least) && std::isfinite(own.greatest) &&
                             std::isfinite(own.greatest - own.least) && own.least < own.greatest;
        return hasRoom ? std::optional(MotionRange{own.least, own.greatest}) : std::nullopt;
    }
    const double now = std::isfinite(joint.values[motion]) ? joint.values[motion] : 0;
    if (isFactor(motion))
        return MotionRange{std::min(kLeastFactor, now), std::max(kGreatestFactor, now)};
    const double most = isAngle(motion) ? kHalfTurn : roundedUp(reach > 0 ? reach : 1);
    return MotionRange{std::min(-most, now), std::max(most, now)};
}

JointPlay::JointPlay(const std::vector<KnownJoint>& joints, const render::Poses& poses,
                     double reach) {
    for (const KnownJoint& known : joints) {
        const auto pose = known.inFile ? poses.end() : poses.find(known.node);
        Player player{
            known.node, known.inFile, pose == poses.end() ? known.joint.values : pose->second, {}};
        for (const std::size_t motion : motionsThatPlay(known.joint, reach)) {
            const MotionRange range = *rangeOf(known.joint, motion, reach);
            const double half = (range.greatest - range.least) / 2;
            const double share = (range.clamp(player.start[motion]) - range.least) / half - 1;
            player.swings.push_back({motion, range, std::asin(std::clamp(share, -1., 1.))});
        }
        if (!player.swings.empty()) players_.push_back(std::move(player));
    }
}

NodeJoint::Values JointPlay::Player::at(double seconds) const {
    NodeJoint::Values values = start;
    const double angle = 2 * std::numbers::pi * seconds / kPeriod;
    for (const Swing& swing : swings) {
        const double share = (1 + std::sin(angle + swing.phase)) / 2;
        values[swing.motion] = std::lerp(swing.range.least, swing.range.greatest, share);
    }
    return values;
}

render::Poses JointPlay::at(double seconds) const {
    render::Poses poses;
    for (const Player& player : players_)
        if (!player.inFile) poses.emplace(player.node, player.at(seconds));
    return poses;
}

render::FilePoses JointPlay::inFilesAt(double seconds) const {
    render::FilePoses poses;
    for (const Player& player : players_)
        if (player.inFile) poses.emplace(player.inFile, player.at(seconds));
    return poses;
}

bool keepPoses(Interface& host, const render::Poses& poses) {
    NodeLookSource* const source = GetNodeLookSource();
    for (const auto& [handle, values] : poses) {
        INode* const node = host.GetINodeByHandle(handle);
        if (node && (!source || !source->SetJoint(node, values))) return false;
    }
    return true;
}

}  // namespace workbench
