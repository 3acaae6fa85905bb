// What scripts are in the host's history.
#pragma once

#include <kiln/undo.h>

#include <optional>
#include <string>
#include <utility>

namespace script {

/// The steps that a script makes: one of what it does, and one for each of its "undo" blocks.
class ScriptSteps {
public:
    /// The outermost script while it runs. What it does stays done, whatever comes of it.
    class Whole {
    public:
        Whole(ScriptSteps& steps, std::string name);
        ~Whole() { steps_.endStep(); }
        Whole(const Whole&) = delete;
        Whole& operator=(const Whole&) = delete;

    private:
        ScriptSteps& steps_;
    };

    /// Runs a block, which is a step unless it is within another, and which is taken back when it
    /// throws.
    template <typename Run>
    auto inBlock(const std::string& name, Run&& run) {
        const Apart apart(*this);
        UndoScope scope(name.c_str());
        auto result = run();
        scope.Commit();
        return result;
    }
    /// Does something between two steps. Throws `Failure` within a block.
    bool between(bool (*action)());

private:
    /// Ends the step so far; the next begins when this goes.
    class Apart {
    public:
        explicit Apart(ScriptSteps& steps) noexcept;
        ~Apart();
        Apart(const Apart&) = delete;
        Apart& operator=(const Apart&) = delete;

    private:
        ScriptSteps& steps_;
    };

    void endStep() noexcept;

    std::string name_;
    std::optional<UndoScope> rest_;  // what happens outside of blocks
    int blocks_ = 0;                 // within each other
};

}  // namespace script
