#include "evaluator.h"
#include "lexer.h"
#include "parser.h"
#include "texts.h"

#include <base/file.h>
#include <base/text.h>
#include <kiln/interface.h>

#include <cmath>
#include <limits>
#include <sstream>

namespace script {

namespace {

constexpr std::size_t kMaxScriptsWithin = 20;

/// Says that a script is at work, for as long as this object lives.
class Running {
public:
    explicit Running(std::size_t& count) : count_(count) { ++count_; }
    ~Running() { --count_; }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

private:
    std::size_t& count_;
};

}  // namespace

Engine::Engine() : state_(std::make_unique<State>()) {
    addLanguageVerbs(*this, *state_);
    addVerb("runScript", "path", [this](const Arguments& arguments) {
        if (state_->running >= kMaxScriptsWithin) throw Failure("scripts run each other too deep");
        return runScript(*state_, readScript(arguments.text(0)), arguments.text(0));
    });
}

Engine::~Engine() = default;

void Engine::addVerb(const std::string& name, const std::string& parameters, Verb verb) {
    auto function = std::make_shared<Function>();
    function->name = name;
    function->verb = std::move(verb);
    std::istringstream words(parameters);
    for (std::string word; words >> word;) {
        if (word.ends_with("...")) {
            function->anyNumber = true;
        } else if (word.ends_with("?")) {
            word.pop_back();
            function->parameters.push_back(base::smallLetters(word));
        } else {
            function->parameters.push_back(base::smallLetters(word));
            function->required = function->parameters.size();
        }
    }
    state_->verbs[base::smallLetters(name)] = std::move(function);
}

void Engine::addValue(const std::string& name, ValueReader reader) {
    state_->values[base::smallLetters(name)] = std::move(reader);
}

void Engine::addNodeProperty(const std::string& name, PropertyReader read, PropertyWriter write) {
    state_->nodeProperties[base::smallLetters(name)] = {std::move(read), std::move(write)};
}

void Engine::print(std::string_view line) const {
    if (state_->output) state_->output(line);
}

void Engine::setOutput(std::function<void(std::string_view)> output) {
    state_->output = std::move(output);
}

void Engine::setLimits(const Limits& limits) {
    state_->limits = limits;
}

const Limits& Engine::limits() const noexcept {
    return state_->limits;
}

void Engine::setStop(std::function<bool()> stop) {
    state_->stop = std::move(stop);
}

Value runScript(Engine::State& state, std::string_view text, const std::string& file) {
    if (text.size() > state.limits.textBytes) throw Error(file, {}, "this script is too long");
    const Running running(state.running);
    const NodePointer script = parsed(text, file);
    return Evaluator(state, std::make_shared<const std::string>(file)).run(*script);
}

Value Engine::run(std::string_view text, const std::string& file) {
    if (state_->running > 0) throw Error(file, {}, textOf(TextId::kScriptRuns));
    state_->steps = 0;
    state_->stack = static_cast<const char*>(__builtin_frame_address(0));
    try {
        const ScriptSteps::Whole whole(state_->script, file.substr(file.find_last_of("/\\") + 1));
        return runScript(*state_, text, file);
    } catch (const std::bad_alloc&) {
        throw Error(file, {}, textOf(TextId::kOutOfMemory));
    }
}

Value Engine::runFile(const std::string& path) {
    return run(readScript(path), path);
}

std::string readScript(const std::string& path) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    std::string text;
    if (base::readFile(path, text)) throw Failure(textOf(TextId::kScriptUnreadable, {path}));
    if (text.starts_with(kByteOrderMark)) text.erase(0, kByteOrderMark.size());
    return text;
}

bool Engine::betweenSteps(bool (*action)()) {
    return state_->script.between(action);
}

void Engine::setVariable(const std::string& name, Value value) {
    state_->variables[base::smallLetters(name)] = std::move(value);
}

std::optional<Value> Engine::variable(const std::string& name) const {
    const auto found = state_->variables.find(base::smallLetters(name));
    return found == state_->variables.end() ? std::nullopt : std::optional(found->second);
}

std::vector<std::string> Engine::verbs() const {
    std::map<std::string, std::shared_ptr<const Function>> all = state_->verbs;
    for (auto& function : publishedVerbs())
        all.emplace(base::smallLetters(function->name), function);
    std::vector<std::string> lines;
    for (const auto& [key, function] : all) {
        std::string line = function->name;
        for (std::size_t i = 0; i < function->parameters.size(); ++i)
            line += (i < function->required ? " " : " [") + function->parameters[i] +
                    (i < function->required ? "" : ":]");
        lines.push_back(std::move(line));
    }
    return lines;
}

void Arguments::refuse(std::size_t index, const char* expected) const {
    const std::string name = index < parameters_.size() ? " \"" + parameters_[index] + "\"" : "";
    throw Failure("argument " + std::to_string(index + 1) + name + " must be " + expected +
                  ", not " + values_[index].described());
}

double Arguments::number(std::size_t index) const {
    if (!values_[index].isNumber()) refuse(index, "a number");
    if (!std::isfinite(values_[index].number())) throw Failure("this number is infinite");
    return values_[index].number();
}

double Arguments::number(std::size_t index, double otherwise) const {
    return has(index) ? number(index) : otherwise;
}

int Arguments::integer(std::size_t index) const {
    const double value = number(index);
    if (std::trunc(value) != value || value < std::numeric_limits<int>::min() ||
        value > std::numeric_limits<int>::max())
        refuse(index, "an integer");
    return static_cast<int>(value);
}

const std::string& Arguments::text(std::size_t index) const {
    const std::string* const text = values_[index].text();
    if (!text) refuse(index, "a string");
    return *text;
}

bool Arguments::boolean(std::size_t index, bool otherwise) const {
    if (!has(index)) return otherwise;
    const auto* const boolean = values_[index].as<bool>();
    if (!boolean) refuse(index, "true or false");
    return *boolean;
}

Point3 Arguments::point(std::size_t index) const {
    const auto* const point = values_[index].as<Point3>();
    if (!point) refuse(index, "a point such as [1, 2, 3]");
    if (!std::isfinite(point->x) || !std::isfinite(point->y) || !std::isfinite(point->z))
        throw Failure("this point is infinite");
    return *point;
}

INode* Arguments::node(std::size_t index) const {
    const auto* const node = values_[index].as<NodeReference>();
    if (!node) refuse(index, "a node");
    return &livingNode(*node);
}

std::vector<INode*> Arguments::nodes(std::size_t index) const {
    const std::shared_ptr<Array> array = values_[index].array();
    if (!array) return {node(index)};
    std::vector<INode*> nodes;
    for (const Value& item : array->items) {
        const auto* const one = item.as<NodeReference>();
        if (!one) refuse(index, "a node or an array of nodes");
        nodes.push_back(&livingNode(*one));
    }
    return nodes;
}

std::shared_ptr<Array> Arguments::array(std::size_t index) const {
    std::shared_ptr<Array> array = values_[index].array();
    if (!array) refuse(index, "an array");
    return array;
}

}  // namespace script
