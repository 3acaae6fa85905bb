// The script engine: runs scripts over a registry of verbs, values and node properties.
#pragma once

#include <script/error.h>
#include <script/value.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace script {

/// What one script may use up. A script that asks for more ends with an error.
struct Limits {
    std::uint64_t steps = 0;   ///< evaluated expressions; 0 for any number
    std::size_t calls = 1000;  ///< calls of script functions within each other
    std::size_t stackBytes =
        std::size_t{768} * 1024;         ///< of the thread's stack, from the start of the run
    std::size_t textBytes = 16 << 20;    ///< in one string, and in one script
    std::size_t arrayItems = 4'000'000;  ///< in one array
};

/// The arguments of a call of a verb, in the order of its parameters. What the accessors throw is
/// a `Failure` that names the parameter.
class Arguments {
public:
    Arguments(const std::vector<std::string>& parameters, std::vector<Value> values,
              std::vector<bool> given)
        : parameters_(parameters), values_(std::move(values)), given_(std::move(given)) {}

    bool has(std::size_t index) const { return given_[index]; }
    const Value& operator[](std::size_t index) const { return values_[index]; }
    /// All of them; more than the parameters for a verb that takes any number.
    const std::vector<Value>& all() const { return values_; }

    double number(std::size_t index) const;  ///< a finite one
    double number(std::size_t index, double otherwise) const;
    int integer(std::size_t index) const;
    const std::string& text(std::size_t index) const;
    bool boolean(std::size_t index, bool otherwise) const;
    Point3 point(std::size_t index) const;
    INode* node(std::size_t index) const;                ///< one of the scene
    std::vector<INode*> nodes(std::size_t index) const;  ///< a node, or an array of nodes
    std::shared_ptr<Array> array(std::size_t index) const;

private:
    [[noreturn]] void refuse(std::size_t index, const char* expected) const;

    const std::vector<std::string>& parameters_;
    std::vector<Value> values_;
    std::vector<bool> given_;
};

using Verb = std::function<Value(const Arguments&)>;
using ValueReader = std::function<Value()>;
using PropertyReader = std::function<Value(INode& node)>;
using PropertyWriter = std::function<void(INode& node, const Value& value)>;

/// Runs scripts. Variables and functions that a script defines stay for the next one. Names are
/// compared without regard to the case of ASCII letters. Used on the host's thread only.
class Engine {
public:
    /// With the verbs of the language itself: print, append, the mathematics and so on.
    Engine();
    ~Engine();
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    /// Offers a verb. `parameters` names them, separated by spaces: "node name?" has an optional
    /// one, "values..." takes any number. A verb of the same name is replaced.
    void addVerb(const std::string& name, const std::string& parameters, Verb verb);
    /// Adds a read-only name with a value that is worked out each time, such as `selection`.
    void addValue(const std::string& name, ValueReader reader);
    /// Offers a property of nodes; without `write` a read-only one.
    void addNodeProperty(const std::string& name, PropertyReader read, PropertyWriter write = {});

    /// Where `print` writes, a whole line at a time without its end. Nowhere at first.
    void setOutput(std::function<void(std::string_view)> output);
    /// Writes a line there, as `print` does.
    void print(std::string_view line) const;
    void setLimits(const Limits& limits);
    const Limits& limits() const noexcept;
    /// Asked every few steps; true ends the script with an error. Null for never.
    void setStop(std::function<bool()> stop);

    /// Runs a script and returns the value of its last expression, undefined for none. `file`
    /// stands in messages. Throws `Error`; what the script did before that stays done. What it does
    /// is a step of the host's history, named after the file.
    Value run(std::string_view text, const std::string& file);

    /// The same for a script file; its path stands in messages. Throws `Failure` when the file
    /// cannot be read.
    Value runFile(const std::string& path);

    /// Does something between two steps of the host's history while a script runs, for which what
    /// the script has done so far becomes a step. Throws `Failure` within an "undo" block.
    bool betweenSteps(bool (*action)());

    void setVariable(const std::string& name, Value value);
    std::optional<Value> variable(const std::string& name) const;
    /// One line per verb, "move node offset", in alphabetical order.
    std::vector<std::string> verbs() const;

    struct State;

private:
    std::unique_ptr<State> state_;
};

/// The text of a script file at `path` (UTF-8), without a byte order mark. Throws `Failure`.
std::string readScript(const std::string& path);

/// The verbs of the host's scene: creation, selection, linking, transforms, scene files.
void addHostVerbs(Engine& engine);

}  // namespace script
