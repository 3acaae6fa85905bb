// Steps that the history cannot keep.
#pragma once

#include <kiln/platform.h>

#include <functional>
#include <new>
#include <string>

namespace kiln {

/// A change was refused because its step could not be undone. Whoever acts ends as for want of
/// memory; the step is taken back as a whole, even where somebody goes on.
class StepRefused : public std::bad_alloc {
public:
    const char* what() const noexcept override { return "the step is too large to be undone"; }
};

/// Whether a step that is about to keep more than the history may is carried out all the same: it
/// cannot be undone then, and neither can those before it. `name` is the step's, empty outside of
/// scopes.
using LargeStepQuestion = std::function<bool(const std::string& name)>;

/// Has `question` asked once in such a step, before the change that is too much for the history;
/// the scene is then in the middle of the action. Without one, as at first, the answer is yes. What
/// the question throws counts as no.
KILNAPI void setLargeStepQuestion(LargeStepQuestion question);

}  // namespace kiln
