// What mends findings of a scene.
#pragma once

#include <checks/report.h>

class Interface;

namespace checks {

/// Whether `mend` may be able to mend what the rule finds.
bool canMend(Rule rule) noexcept;

/// Mends a finding of the scene, `target` being what was checked for. False, and nothing is
/// changed, when it cannot be mended: the rule has no mend, the node has gone or become another, or
/// the mend would take away what something else needs.
///
/// A mend is one step of the history, or part of that of the scope that is open. The scene is to be
/// as it was checked, but for other mends: what has come to need an entry of a palette since then
/// is not looked for.
///
/// A mend may set right further findings of the same rule on the node.
bool mend(Interface& host, const Target& target, const Finding& finding) noexcept;

}  // namespace checks
