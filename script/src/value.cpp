#include "function.h"

#include <script/error.h>
#include <script/value.h>

#include <kiln/fp.h>
#include <kiln/host/script.h>
#include <kiln/interface.h>
#include <kiln/texmap.h>

#include <charconv>
#include <cmath>
#include <limits>

namespace script {

namespace {

constexpr std::size_t kMaxPrinted = std::size_t{64} * 1024;
constexpr int kMaxPrintedDepth = 8;
constexpr int kMaxComparedDepth = 16;

// A number that is one of the host's 32-bit floats prints as that.
std::string printedNumber(double value) {
    char text[40];
    const auto single = static_cast<float>(value);
    const auto end =
        std::abs(value) <= std::numeric_limits<float>::max() && static_cast<double>(single) == value
            ? std::to_chars(text, text + sizeof text, single).ptr
            : std::to_chars(text, text + sizeof text, value).ptr;
    std::string number(text, end);
    if (std::isfinite(value) && number.find_first_of(".e") == number.npos) number += ".0";
    return number;
}

std::string printedPoint(const Point3& point) {
    std::string text = "[";
    for (const double value : {point.x, point.y, point.z}) {
        char number[40];
        const auto end = std::to_chars(number, number + sizeof number, value).ptr;
        if (text.size() > 1) text += ',';
        text.append(number, end);
    }
    return text + "]";
}

std::string printedNode(const NodeReference& reference) {
    Interface* const host = GetCOREInterface();
    const INode* const node = host ? host->GetINodeByHandle(reference.handle) : nullptr;
    return node ? std::string("$") + node->GetName() : "<deleted node>";
}

struct Printer {
    std::string text;
    int depth = 0;

    bool isFull() const { return text.size() > kMaxPrinted; }

    void array(const Array& array);

    void value(const Value& value) {
        if (const std::shared_ptr<Array> items = value.array())
            array(*items);
        else if (value.text())
            text += '"' + *value.text() + '"';
        else
            text += value.shown();
    }
};

void Printer::array(const Array& array) {
    if (++depth > kMaxPrintedDepth) {
        text += "#(...)";
    } else {
        text += "#(";
        for (std::size_t i = 0; i < array.items.size(); ++i) {
            if (i) text += ", ";
            if (isFull()) {
                text += "...";
                break;
            }
            value(array.items[i]);
        }
        text += ')';
    }
    --depth;
}

bool equalArrays(const Array& left, const Array& right, int depth);

bool equalValues(const Value& left, const Value& right, int depth) {
    const std::shared_ptr<Array> a = left.array();
    const std::shared_ptr<Array> b = right.array();
    return a && b ? equalArrays(*a, *b, depth) : !a && !b && left.equals(right);
}

bool equalArrays(const Array& left, const Array& right, int depth) {
    if (&left == &right) return true;
    if (left.items.size() != right.items.size()) return false;
    if (depth > kMaxComparedDepth)
        throw Failure("these arrays lie too deep within each other to be compared");
    for (std::size_t i = 0; i < left.items.size(); ++i)
        if (!equalValues(left.items[i], right.items[i], depth + 1)) return false;
    return true;
}

}  // namespace

Array::~Array() {
    std::vector<Value> going = std::move(items);
    while (!going.empty()) {
        const Value last = std::move(going.back());
        going.pop_back();
        const auto* inner = last.as<std::shared_ptr<Array>>();
        if (!inner || inner->use_count() != 1) continue;
        std::vector<Value>& more = (*inner)->items;
        going.insert(going.end(), std::make_move_iterator(more.begin()),
                     std::make_move_iterator(more.end()));
        more.clear();
    }
}

Value Value::ofNode(INode* node) {
    return node ? Value(NodeReference{node->GetHandle()}) : Value();
}

Value Value::ofMap(Texmap* map) {
    Value value;
    if (!map) return value;
    map->AddReference();
    value.data_ = Map(map, [](Texmap* one) { one->ReleaseReference(); });
    return value;
}

Value Value::ofArray(std::vector<Value> items) {
    auto array = std::make_shared<Array>();
    array->items = std::move(items);
    return Value(std::move(array));
}

Value Value::ofCount(std::size_t count) {
    if (count > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
        return Value(static_cast<double>(count));
    return Value(static_cast<std::int32_t>(count));
}

double Value::number() const noexcept {
    if (const auto* integer = as<std::int32_t>()) return *integer;
    if (const auto* real = as<double>()) return *real;
    return 0;
}

const std::string* Value::text() const noexcept {
    const Text* const text = as<Text>();
    return text ? text->get() : nullptr;
}

std::shared_ptr<Array> Value::array() const noexcept {
    const auto* const array = as<std::shared_ptr<Array>>();
    return array ? *array : nullptr;
}

std::string Value::described() const {
    static constexpr const char* kNames[] = {
        "undefined", "nothing", "a boolean", "an integer", "a float",      "a string",
        "a point",   "a node",  "an array",  "a function", "an interface", "a texture map"};
    return kNames[data_.index()];
}

std::string Value::printed() const {
    Printer printer;
    printer.value(*this);
    return std::move(printer.text);
}

std::string Value::shown() const {
    if (text()) return *text();
    if (array()) return printed();
    if (const auto* boolean = as<bool>()) return *boolean ? "true" : "false";
    if (const auto* integer = as<std::int32_t>()) return std::to_string(*integer);
    if (const auto* real = as<double>()) return printedNumber(*real);
    if (const auto* point = as<Point3>()) return printedPoint(*point);
    if (const auto* node = as<NodeReference>()) return printedNode(*node);
    if (const auto* function = as<std::shared_ptr<const Function>>())
        return (*function)->name + "()";
    if (const auto* interface = as<FPInterfaceDesc*>()) {
        std::string lines;
        for (const FPFunctionDesc& one : (*interface)->Functions())
            lines += kiln::signatureOf(**interface, one) + "\n";
        for (const FPPropertyDesc& one : (*interface)->Properties())
            lines += std::string((*interface)->Name()) + "." + one.name + " : " +
                     ParamTypeName(one.type) + "\n";
        if (!lines.empty()) lines.pop_back();
        return lines;
    }
    if (const auto* map = as<Map>()) return std::string("\"") + (*map)->GetName() + "\"";
    return as<Done>() ? "ok" : "undefined";
}

bool Value::equals(const Value& other) const {
    if (isNumber() && other.isNumber()) return number() == other.number();
    if (text() && other.text()) return *text() == *other.text();
    if (array() && other.array()) return equalArrays(*array(), *other.array(), 1);
    return data_ == other.data_;
}

}  // namespace script
