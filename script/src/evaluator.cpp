#include "evaluator.h"

#include "lexer.h"
#include "operators.h"
#include "texts.h"

#include <base/text.h>
#include <kiln/fp.h>
#include <kiln/host/largesteps.h>
#include <kiln/host/script.h>
#include <kiln/interface.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace script {

namespace {

constexpr std::uint64_t kStepsBetweenStops = 256;

const char* stackTop() {
    return static_cast<const char*>(__builtin_frame_address(0));
}

std::string indicated(const Function& function) {
    std::string text = function.name;
    for (std::size_t i = 0; i < function.parameters.size(); ++i) {
        const bool optional = i >= function.required;
        text += optional ? " [" + function.parameters[i] + "]" : " " + function.parameters[i];
    }
    return text;
}

// The values in the order of the parameters.
Arguments matched(const Function& function, std::vector<Argument>&& arguments) {
    const std::size_t count = function.parameters.size();
    std::vector<Value> values(count);
    std::vector<bool> given(count, false);
    std::size_t position = 0;
    for (auto& [keyword, value] : arguments) {
        std::size_t index = position;
        if (!keyword.empty()) {
            const auto found = std::ranges::find(function.parameters, base::smallLetters(keyword));
            if (found == function.parameters.end())
                throw Failure(function.name + ": there is no argument \"" + keyword + "\"");
            index = static_cast<std::size_t>(found - function.parameters.begin());
        } else if (++position > count && !function.anyNumber) {
            throw Failure(function.name + ": too many arguments; it is called as \"" +
                          indicated(function) + "\"");
        }
        if (index >= values.size()) {
            values.emplace_back();
            given.push_back(false);
        }
        if (given[index])
            throw Failure(function.name + ": argument \"" + function.parameters[index] +
                          "\" is given twice");
        values[index] = std::move(value);
        given[index] = true;
    }
    for (std::size_t i = 0; i < function.required; ++i)
        if (!given[i])
            throw Failure(function.name + ": argument \"" + function.parameters[i] +
                          "\" is missing");
    return Arguments(function.parameters, std::move(values), std::move(given));
}

}  // namespace

Evaluator::Evaluator(Engine::State& state, std::shared_ptr<const std::string> file)
    : state_(state), file_(std::move(file)) {}

Value Evaluator::run(const Node& script) {
    try {
        Value value = evaluate(script);
        return value;
    } catch (const kiln::StepRefused&) {
        throw Error(*file_, position_, textOf(TextId::kTooLargeToUndo));
    } catch (const std::bad_alloc&) {
        throw Error(*file_, position_, textOf(TextId::kOutOfMemory));
    } catch (const std::length_error&) {
        throw Error(*file_, position_, textOf(TextId::kOutOfMemory));
    }
}

void Evaluator::fail(const Node& node, const std::string& what) const {
    throw Error(*file_, node.position, what);
}

void Evaluator::checkLimits() {
    const std::uint64_t steps = ++state_.steps;
    const Limits& limits = state_.limits;
    if (limits.steps != 0 && steps > limits.steps)
        throw Failure(textOf(TextId::kStopped, {std::to_string(limits.steps)}));
    if (steps % kStepsBetweenStops == 0 && state_.stop && state_.stop())
        throw Failure(textOf(TextId::kInterrupted));
    if (static_cast<std::size_t>(std::abs(state_.stack - stackTop())) > limits.stackBytes)
        throw Failure("calls and expressions lie too deep within each other");
}

Value Evaluator::evaluate(const Node& node) {
    position_ = node.position;
    try {
        checkLimits();
        return dispatched(node);
    } catch (const Failure& failure) {
        fail(node, failure.what());
    }
}

Value Evaluator::dispatched(const Node& node) {
    switch (node.kind) {
        case NodeKind::kLiteral:
            return node.literal;
        case NodeKind::kName:
            return name(node);
        case NodeKind::kNodeName:
            return nodeName(node);
        case NodeKind::kArray:
            return arrayOf(node);
        case NodeKind::kPoint:
            return pointOf(node);
        case NodeKind::kBlock:
            return block(node);
        case NodeKind::kCall:
            return call(node);
        case NodeKind::kMember:
            return member(node);
        case NodeKind::kElement:
            return element(node);
        case NodeKind::kNegate:
            return negated(evaluate(*node.children[0]));
        case NodeKind::kLogicalNot:
            return Value(!condition(*node.children[0]));
        case NodeKind::kLogicalAnd:
        case NodeKind::kLogicalOr:
            return logical(node);
        case NodeKind::kBinary: {
            const Value left = evaluate(*node.children[0]);
            return combined(node.text, left, evaluate(*node.children[1]), state_.limits);
        }
        case NodeKind::kConvert:
            return converted(evaluate(*node.children[0]), node.text);
        case NodeKind::kAssign:
            return assign(node);
        case NodeKind::kDeclare:
            return declare(node);
        case NodeKind::kIfThen:
            return ifThen(node);
        case NodeKind::kWhileDo:
            return whileDo(node);
        case NodeKind::kForEach:
            return forEach(node);
        case NodeKind::kForCount:
            return forCount(node);
        case NodeKind::kFunction:
            return defineFunction(node);
        case NodeKind::kExit:
        case NodeKind::kContinue:
            if (loops_ == 0)
                throw Failure("there is no loop around \"" +
                              std::string(node.kind == NodeKind::kExit ? "exit" : "continue") +
                              "\"");
            flow_ = node.kind == NodeKind::kExit ? Flow::kBreak : Flow::kContinue;
            return {};
        case NodeKind::kUndo:
            return state_.script.inBlock(node.text, [&] { return evaluate(*node.children[0]); });
        case NodeKind::kReturn:
            return returnFrom(node);
    }
    return {};
}

Value* Evaluator::variable(const std::string& name) {
    if (frame_) {
        const auto local = frame_->find(name);
        if (local != frame_->end()) return &local->second;
    }
    const auto global = state_.variables.find(name);
    return global != state_.variables.end() ? &global->second : nullptr;
}

void Evaluator::setVariable(const std::string& name, Value value) {
    if (Value* const known = variable(name))
        *known = std::move(value);
    else
        (frame_ ? *frame_ : state_.variables)[name] = std::move(value);
}

Value Evaluator::name(const Node& node) {
    if (const Value* const known = variable(node.text)) return *known;
    if (const auto value = state_.values.find(node.text); value != state_.values.end())
        return value->second();
    if (const auto verb = state_.verbs.find(node.text); verb != state_.verbs.end())
        return Value(verb->second);
    if (auto verb = publishedVerb(node.spelling)) return Value(std::move(verb));
    if (FPInterfaceDesc* const found = kiln::findInterface(node.spelling)) return Value(found);
    throw Failure("nothing is named \"" + node.spelling + "\"");
}

Value Evaluator::nodeName(const Node& node) {
    Interface* const host = GetCOREInterface();
    if (!host) throw Failure(textOf(TextId::kNoScene));
    if (node.text.empty()) {
        if (INode* const selected = host->GetSelNode(0)) return Value::ofNode(selected);
        throw Failure("no node is selected");
    }
    if (INode* const found = host->GetINodeByName(node.text.c_str())) return Value::ofNode(found);
    throw Failure("no node is named \"" + node.text + "\"");
}

Value Evaluator::arrayOf(const Node& node) {
    std::vector<Value> items;
    items.reserve(node.children.size());
    for (const NodePointer& child : node.children) items.push_back(evaluate(*child));
    return Value::ofArray(std::move(items));
}

Value Evaluator::pointOf(const Node& node) {
    double coordinates[3];
    for (std::size_t i = 0; i < 3; ++i) {
        const Value value = evaluate(*node.children[i]);
        if (!value.isNumber())
            fail(*node.children[i], "a coordinate is a number, not " + value.described());
        coordinates[i] = value.number();
    }
    return Value(Point3{coordinates[0], coordinates[1], coordinates[2]});
}

Value Evaluator::block(const Node& node) {
    Value last;
    for (const NodePointer& statement : node.children) {
        last = evaluate(*statement);
        if (flow_ != Flow::kOn) break;
        // A verb that is named and not called would do nothing, to its author's surprise.
        const auto* const function = last.as<std::shared_ptr<const Function>>();
        if (function && statement->kind == NodeKind::kName)
            fail(*statement, "to call \"" + (*function)->name + "\" write " + (*function)->name +
                                 "() or give it arguments");
    }
    return last;
}

bool Evaluator::condition(const Node& node) {
    const Value value = evaluate(node);
    if (const auto* boolean = value.as<bool>()) return *boolean;
    if (flow_ != Flow::kOn) return false;
    fail(node, "true or false was expected here, not " + value.described());
}

Value Evaluator::logical(const Node& node) {
    const bool left = condition(*node.children[0]);
    if (left == (node.kind == NodeKind::kLogicalOr)) return Value(left);
    return Value(condition(*node.children[1]));
}

Value Evaluator::ofInterface(const Node& base) {
    if (base.kind != NodeKind::kName) return evaluate(base);
    const bool known = variable(base.text) || state_.values.contains(base.text) ||
                       state_.verbs.contains(base.text) || kiln::findInterface(base.spelling);
    if (!known) fail(base, unknownInterface(base.spelling));
    return evaluate(base);
}

Value Evaluator::member(const Node& node) {
    const Value base = ofInterface(*node.children[0]);
    const std::string& name = node.text;
    if (const auto* interface = base.as<FPInterfaceDesc*>())
        return publishedMember(**interface, node.spelling);
    if (const auto* reference = base.as<NodeReference>()) {
        const auto property = state_.nodeProperties.find(name);
        if (property != state_.nodeProperties.end())
            return property->second.read(livingNode(*reference));
        if (auto value = publishedNodeProperty(livingNode(*reference), node.spelling))
            return *value;
    }
    if (const std::shared_ptr<Array> array = base.array(); array && name == "count")
        return Value::ofCount(array->items.size());
    if (base.text() && name == "count")
        return Value::ofCount(
            static_cast<std::size_t>(std::ranges::count_if(*base.text(), [](char c) {
                return (static_cast<unsigned char>(c) & 0xC0u) != 0x80u;
            })));
    if (const auto* point = base.as<Point3>()) {
        if (name == "x") return Value(point->x);
        if (name == "y") return Value(point->y);
        if (name == "z") return Value(point->z);
    }
    throw Failure(base.described() + " has no property \"" + node.spelling + "\"");
}

std::size_t Evaluator::indexIn(const Node& node, const Value& index, std::size_t count) const {
    const double position = index.number();
    if (!index.isNumber() || std::trunc(position) != position)
        fail(node, "an index is an integer, not " + index.described());
    if (position < 1 || position > static_cast<double>(count))
        fail(node, "there is no element " + index.shown() + "; the first is 1, the last " +
                       std::to_string(count));
    return static_cast<std::size_t>(position) - 1;
}

Value Evaluator::element(const Node& node) {
    const Value base = evaluate(*node.children[0]);
    const std::shared_ptr<Array> array = base.array();
    if (!array) throw Failure("only an array has elements, not " + base.described());
    const Value index = evaluate(*node.children[1]);
    return array->items[indexIn(*node.children[1], index, array->items.size())];
}

Value Evaluator::call(const Node& node) {
    const Node& callee = *node.children[0];
    FPInterfaceDesc* interface = nullptr;
    Value function;
    if (callee.kind == NodeKind::kMember) {
        const Value base = ofInterface(*callee.children[0]);
        if (const auto* found = base.as<FPInterfaceDesc*>()) interface = *found;
    }
    if (!interface) function = evaluate(callee);
    const auto* const called = function.as<std::shared_ptr<const Function>>();
    if (!interface && !called)
        fail(callee, "this is " + function.described() +
                         " and cannot be called; an operator, a comma or a line end is missing");
    std::vector<Argument> arguments;
    for (std::size_t i = 1; i < node.children.size(); ++i)
        arguments.emplace_back(i <= node.keywords.size() ? node.keywords[i - 1] : "",
                               evaluate(*node.children[i]));
    if (flow_ != Flow::kOn) return {};
    position_ = node.position;
    if (interface) return publishedCall(*interface, callee.spelling, arguments);
    return callFunction(node, **called, std::move(arguments));
}

Value Evaluator::callFunction(const Node& node, const Function& function,
                              std::vector<Argument> arguments) {
    const Arguments ordered = matched(function, std::move(arguments));
    if (!function.verb) return callScript(node, function, ordered);
    try {
        return function.verb(ordered);
    } catch (const Failure& failure) {
        fail(node, function.name + ": " + failure.what());
    }
}

Value Evaluator::callScript(const Node& node, const Function& function,
                            const Arguments& arguments) {
    if (calls_ >= state_.limits.calls) fail(node, "calls lie too deep within each other");
    const Node& definition = *function.definition;
    Frame frame;
    Frame* const outerFrame = std::exchange(frame_, &frame);
    const std::shared_ptr<const std::string> outerFile = std::exchange(file_, function.file);
    const std::size_t outerLoops = std::exchange(loops_, 0);
    ++calls_;
    for (std::size_t i = 0; i < function.parameters.size(); ++i)
        frame[function.parameters[i]] =
            arguments.has(i) ? arguments[i]
                             : evaluate(*definition.children[1 + i - function.required]);
    Value result = evaluate(*definition.children[0]);
    --calls_;
    flow_ = Flow::kOn;
    loops_ = outerLoops;
    file_ = outerFile;
    frame_ = outerFrame;
    return result;
}

Value Evaluator::assign(const Node& node) {
    const Node& target = *node.children[0];
    Value value;
    if (node.text.empty()) {
        value = evaluate(*node.children[1]);
    } else {
        const Value before = evaluate(target);
        value = combined(node.text, before, evaluate(*node.children[1]), state_.limits);
    }
    if (flow_ != Flow::kOn) return value;
    position_ = target.position;
    store(target, value);
    return value;
}

void Evaluator::store(const Node& target, const Value& value) {
    if (target.kind == NodeKind::kName)
        setVariable(target.text, value);
    else if (target.kind == NodeKind::kMember)
        storeMember(target, value);
    else
        storeElement(target, value);
}

void Evaluator::storeMember(const Node& target, const Value& value) {
    const Value base = ofInterface(*target.children[0]);
    if (const auto* interface = base.as<FPInterfaceDesc*>())
        return setPublished(**interface, target.spelling, value);
    const auto* const reference = base.as<NodeReference>();
    const auto property = state_.nodeProperties.find(target.text);
    if (!reference || property == state_.nodeProperties.end())
        fail(target,
             base.described() + " has no property \"" + target.spelling + "\" that could be set");
    if (!property->second.write)
        fail(target, "the property \"" + target.spelling + "\" is read-only");
    try {
        property->second.write(livingNode(*reference), value);
    } catch (const Failure& failure) {
        fail(target, failure.what());
    }
}

void Evaluator::storeElement(const Node& target, const Value& value) {
    const Value base = evaluate(*target.children[0]);
    const std::shared_ptr<Array> array = base.array();
    if (!array) fail(target, "only an array has elements, not " + base.described());
    const Value index = evaluate(*target.children[1]);
    if (holds(value, *array)) fail(target, "an array cannot hold itself");
    const bool appends = index.number() == static_cast<double>(array->items.size() + 1);
    if (appends && array->items.size() >= state_.limits.arrayItems)
        fail(target, "this array would have too many elements");
    if (appends)
        array->items.push_back(value);
    else
        array->items[indexIn(*target.children[1], index, array->items.size())] = value;
}

Value Evaluator::declare(const Node& node) {
    Value value = node.children.empty() ? Value() : evaluate(*node.children[0]);
    if (!node.flag && frame_)
        (*frame_)[node.text] = value;
    else if (!node.children.empty() || !state_.variables.contains(node.text))
        state_.variables[node.text] = value;
    return value;
}

Value Evaluator::ifThen(const Node& node) {
    const bool holds = condition(*node.children[0]);
    if (flow_ != Flow::kOn) return {};
    if (holds) return evaluate(*node.children[1]);
    return node.children.size() > 2 ? evaluate(*node.children[2]) : Value();
}

bool Evaluator::turn(const Node& loop, const NodePointer& body, const NodePointer& where,
                     Value value, std::vector<Value>& collected) {
    (frame_ ? *frame_ : state_.variables)[loop.text] = std::move(value);
    if (where && !condition(*where)) return flow_ == Flow::kOn;
    Value result = evaluate(*body);
    if (flow_ == Flow::kOn && loop.flag) {
        if (collected.size() >= state_.limits.arrayItems)
            throw Failure("this array would have too many elements");
        collected.push_back(std::move(result));
    } else if (flow_ == Flow::kReturn) {
        collected.assign(1, result);
    }
    if (flow_ == Flow::kContinue) flow_ = Flow::kOn;
    return flow_ == Flow::kOn;
}

Value Evaluator::loopResult(const Node& loop, std::vector<Value> collected) {
    --loops_;
    if (flow_ == Flow::kReturn) return collected.empty() ? Value() : collected.front();
    flow_ = Flow::kOn;
    return loop.flag ? Value::ofArray(std::move(collected)) : Value(Done{});
}

Value Evaluator::whileDo(const Node& node) {
    ++loops_;
    std::vector<Value> given;
    while (flow_ == Flow::kOn && condition(*node.children[0])) {
        Value value = evaluate(*node.children[1]);
        if (flow_ == Flow::kContinue) flow_ = Flow::kOn;
        if (flow_ == Flow::kReturn) given.assign(1, value);
    }
    return loopResult(node, std::move(given));
}

Value Evaluator::forEach(const Node& node) {
    const Value over = evaluate(*node.children[0]);
    const std::shared_ptr<Array> array = over.array();
    if (!array) fail(*node.children[0], "an array was expected here, not " + over.described());
    ++loops_;
    // The body may change the array; the loop goes over what it was.
    const std::vector<Value> items = array->items;
    std::vector<Value> collected;
    for (const Value& item : items)
        if (!turn(node, node.children[1], node.children[2], item, collected)) break;
    return loopResult(node, std::move(collected));
}

double Evaluator::number(const Node& node, bool& integers) {
    const Value value = evaluate(node);
    if (!value.isNumber() || !std::isfinite(value.number()))
        fail(node, "a number was expected here, not " + value.described());
    integers = integers && value.as<std::int32_t>();
    return value.number();
}

Value Evaluator::forCount(const Node& node) {
    bool integers = true;
    const double from = number(*node.children[0], integers);
    const double to = number(*node.children[1], integers);
    const double step = node.children[2] ? number(*node.children[2], integers) : 1;
    if (step == 0) fail(*node.children[2], "a loop cannot go on by 0");
    ++loops_;
    std::vector<Value> collected;
    for (double count = 0;; ++count) {
        const double value = from + count * step;
        if (step > 0 ? value > to : value < to) break;
        const Value item = integers ? Value(static_cast<std::int32_t>(value)) : Value(value);
        if (!turn(node, node.children[3], node.children[4], item, collected)) break;
    }
    return loopResult(node, std::move(collected));
}

Value Evaluator::defineFunction(const Node& node) {
    auto function = std::make_shared<Function>();
    function->name = node.spelling;
    function->parameters = node.keywords;
    function->required = node.keywords.size() - (node.children.size() - 1);
    function->definition = std::make_shared<const Node>(node);
    function->file = file_;
    Value value{std::shared_ptr<const Function>(std::move(function))};
    (frame_ ? *frame_ : state_.variables)[node.text] = value;
    return value;
}

Value Evaluator::returnFrom(const Node& node) {
    if (!frame_) throw Failure("there is no function around \"return\"");
    Value value = node.children.empty() ? Value() : evaluate(*node.children[0]);
    flow_ = Flow::kReturn;
    return value;
}

}  // namespace script
