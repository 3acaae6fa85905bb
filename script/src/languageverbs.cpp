// Printing, arrays, texts and mathematics.
#include "operators.h"
#include "state.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace script {

namespace {

using Function1 = double (*)(double);

Value checked(double value) {
    if (std::isnan(value)) throw Failure("the result is not a number");
    return Value(value);
}

double radians(double degrees) {
    return degrees * std::numbers::pi / 180;
}

void addMathematics(Engine& engine) {
    static constexpr std::pair<const char*, Function1> kFunctions[] = {
        {"sqrt", [](double x) { return std::sqrt(x); }},
        {"sin", [](double x) { return std::sin(radians(x)); }},
        {"cos", [](double x) { return std::cos(radians(x)); }},
        {"floor", [](double x) { return std::floor(x); }},
        {"ceil", [](double x) { return std::ceil(x); }},
    };
    for (const auto& [name, function] : kFunctions)
        engine.addVerb(name, "x", [function = function](const Arguments& arguments) {
            return checked(function(arguments.number(0)));
        });
    engine.addVerb("abs", "x", [](const Arguments& arguments) {
        return arguments.number(0) < 0 ? negated(arguments[0]) : arguments[0];
    });
    engine.addVerb("min", "a b", [](const Arguments& arguments) {
        return arguments.number(0) <= arguments.number(1) ? arguments[0] : arguments[1];
    });
    engine.addVerb("max", "a b", [](const Arguments& arguments) {
        return arguments.number(0) >= arguments.number(1) ? arguments[0] : arguments[1];
    });
    engine.addVerb("mod", "a b", [](const Arguments& arguments) {
        if (arguments.number(1) == 0) throw Failure("division by zero");
        const double rest = std::fmod(arguments.number(0), arguments.number(1));
        const bool integers = arguments[0].as<std::int32_t>() && arguments[1].as<std::int32_t>();
        return integers ? Value(static_cast<std::int32_t>(rest)) : Value(rest);
    });
    engine.addVerb("bitAnd", "a b", [](const Arguments& arguments) {
        return Value(std::int32_t{arguments.integer(0) & arguments.integer(1)});
    });
    engine.addVerb("bitOr", "a b", [](const Arguments& arguments) {
        return Value(std::int32_t{arguments.integer(0) | arguments.integer(1)});
    });
}

// Characters start at the bytes that do not continue one.
std::size_t characterStart(const std::string& text, std::size_t index) {
    std::size_t at = 0;
    const auto continues = [&] { return (static_cast<unsigned char>(text[at]) & 0xC0u) == 0x80u; };
    for (std::size_t i = 0; i < index && at < text.size(); ++i) {
        ++at;
        while (at < text.size() && continues()) ++at;
    }
    return at;
}

Value substring(const Arguments& arguments) {
    const std::string& text = arguments.text(0);
    if (arguments.integer(1) < 1) throw Failure("the first character is 1");
    const std::size_t from =
        characterStart(text, static_cast<std::size_t>(arguments.integer(1)) - 1);
    const std::string rest = text.substr(from);
    if (!arguments.has(2)) return Value(rest);
    const int count = std::max(0, arguments.integer(2));
    return Value(rest.substr(0, characterStart(rest, static_cast<std::size_t>(count))));
}

// The position in characters; undefined when it is not there.
Value findString(const Arguments& arguments) {
    const std::size_t at = arguments.text(0).find(arguments.text(1));
    if (at == std::string::npos) return {};
    const auto begin = arguments.text(0).begin();
    return Value::ofCount(1 + static_cast<std::size_t>(std::count_if(
                                  begin, begin + static_cast<std::ptrdiff_t>(at), [](char c) {
                                      return (static_cast<unsigned char>(c) & 0xC0u) != 0x80u;
                                  })));
}

void addTexts(Engine& engine) {
    engine.addVerb("substring", "text from count?", substring);
    engine.addVerb("findString", "text part", findString);
    engine.addVerb("throw", "message", [](const Arguments& arguments) -> Value {
        throw Failure(arguments[0].shown());
    });
}

}  // namespace

void addLanguageVerbs(Engine& engine, Engine::State& state) {
    engine.addVerb("print", "values...", [&state](const Arguments& arguments) {
        std::string line;
        for (const Value& value : arguments.all()) {
            if (!line.empty()) line += ' ';
            line += value.shown();
        }
        if (state.output) state.output(line);
        return Value(Done{});
    });
    engine.addVerb("append", "array value", [&state](const Arguments& arguments) {
        const std::shared_ptr<Array> array = arguments.array(0);
        if (array->items.size() >= state.limits.arrayItems)
            throw Failure("this array would have too many elements");
        if (holds(arguments[1], *array)) throw Failure("an array cannot hold itself");
        array->items.push_back(arguments[1]);
        return arguments[0];
    });
    engine.addVerb("findItem", "array value", [](const Arguments& arguments) {
        const std::vector<Value>& items = arguments.array(0)->items;
        const auto found = std::ranges::find_if(
            items, [&](const Value& item) { return item.equals(arguments[1]); });
        return found == items.end()
                   ? Value(0)
                   : Value::ofCount(static_cast<std::size_t>(found - items.begin()) + 1);
    });
    addTexts(engine);
    addMathematics(engine);
}

}  // namespace script
