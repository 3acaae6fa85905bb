// Runs the tree of a script.
#pragma once

#include "published.h"
#include "state.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace script {

class Evaluator {
public:
    Evaluator(Engine::State& state, std::shared_ptr<const std::string> file);

    /// Runs a script's block. Throws `Error`.
    Value run(const Node& script);

private:
    /// What the statement that ran last wants its surroundings to do.
    enum class Flow { kOn, kBreak, kContinue, kReturn };
    using Frame = std::unordered_map<std::string, Value>;

    Value evaluate(const Node& node);
    Value dispatched(const Node& node);
    void checkLimits();
    [[noreturn]] void fail(const Node& node, const std::string& what) const;

    Value name(const Node& node);
    Value nodeName(const Node& node);
    Value arrayOf(const Node& node);
    Value pointOf(const Node& node);
    Value block(const Node& node);
    Value logical(const Node& node);
    Value member(const Node& node);
    Value element(const Node& node);
    Value call(const Node& node);
    Value callFunction(const Node& node, const Function& function, std::vector<Argument> arguments);
    Value callScript(const Node& node, const Function& function, const Arguments& arguments);
    Value assign(const Node& node);
    void store(const Node& target, const Value& value);
    void storeMember(const Node& target, const Value& value);
    void storeElement(const Node& target, const Value& value);
    Value declare(const Node& node);
    Value ifThen(const Node& node);
    Value whileDo(const Node& node);
    Value forEach(const Node& node);
    Value forCount(const Node& node);
    /// Runs a loop's body once; false when it was the last one.
    bool turn(const Node& loop, const NodePointer& body, const NodePointer& where, Value value,
              std::vector<Value>& collected);
    Value loopResult(const Node& loop, std::vector<Value> collected);
    Value defineFunction(const Node& node);
    Value returnFrom(const Node& node);

    bool condition(const Node& node);
    double number(const Node& node, bool& integers);
    Value ofInterface(const Node& base);
    Value* variable(const std::string& name);
    void setVariable(const std::string& name, Value value);
    std::size_t indexIn(const Node& node, const Value& index, std::size_t count) const;

    Engine::State& state_;
    std::shared_ptr<const std::string> file_;
    Frame* frame_ = nullptr;  // of the function that runs, null outside
    Flow flow_ = Flow::kOn;
    Position position_;
    std::size_t calls_ = 0;
    std::size_t loops_ = 0;
};

}  // namespace script
