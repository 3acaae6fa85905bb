#include "scriptsteps.h"

#include <script/error.h>

#include <new>

namespace script {

ScriptSteps::Whole::Whole(ScriptSteps& steps, std::string name) : steps_(steps) {
    steps_.name_ = std::move(name);
    steps_.rest_.emplace(steps_.name_.c_str());
}

void ScriptSteps::endStep() noexcept {
    if (rest_) rest_->Commit();
    rest_.reset();
}

bool ScriptSteps::between(bool (*action)()) {
    if (blocks_ > 0) throw Failure("this cannot be done within an \"undo\" block");
    const Apart apart(*this);
    return action();
}

ScriptSteps::Apart::Apart(ScriptSteps& steps) noexcept : steps_(steps) {
    if (steps_.blocks_++ == 0) steps_.endStep();
}

ScriptSteps::Apart::~Apart() {
    if (--steps_.blocks_ > 0) return;
    try {
        steps_.rest_.emplace(steps_.name_.c_str());
    } catch (const std::bad_alloc&) {
        // The host then makes a step of what follows all the same.
    }
}

}  // namespace script
