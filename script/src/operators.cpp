#include "operators.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <unordered_set>

namespace script {

namespace {

[[noreturn]] void refuse(const std::string& sign, const Value& left, const Value& right) {
    std::string what =
        "\"" + sign + "\" cannot be applied to " + left.described() + " and " + right.described();
    if (sign == "+" && (left.text() || right.text())) what += "; write (value as string) to join";
    throw Failure(what);
}

bool fitsInteger(double value) {
    return value >= std::numeric_limits<std::int32_t>::min() &&
           value <= std::numeric_limits<std::int32_t>::max() && std::trunc(value) == value;
}

Value number(double value, bool wholeIsInteger) {
    if (std::isnan(value)) throw Failure("the result is not a number");
    if (wholeIsInteger && fitsInteger(value)) return Value(static_cast<std::int32_t>(value));
    return Value(value);
}

// Of two integers the result is an integer wherever it can be.
Value arithmetic(char sign, const Value& left, const Value& right) {
    const double a = left.number();
    const double b = right.number();
    const bool integers = left.as<std::int32_t>() && right.as<std::int32_t>();
    switch (sign) {
        case '+':
            return number(a + b, integers);
        case '-':
            return number(a - b, integers);
        case '*':
            return number(a * b, integers);
        case '/':
            if (b == 0) throw Failure("division by zero");
            return number(a / b, integers);
        default:
            return number(std::pow(a, b), integers);
    }
}

Value joined(const std::string& left, const std::string& right, const Limits& limits) {
    if (right.size() > limits.textBytes || left.size() > limits.textBytes - right.size())
        throw Failure("this string would be longer than " + std::to_string(limits.textBytes) +
                      " bytes");
    return Value(left + right);
}

Value concatenated(const Array& left, const Array& right, const Limits& limits) {
    if (left.items.size() + right.items.size() > limits.arrayItems)
        throw Failure("this array would have more than " + std::to_string(limits.arrayItems) +
                      " elements");
    std::vector<Value> items = left.items;
    items.insert(items.end(), right.items.begin(), right.items.end());
    return Value::ofArray(std::move(items));
}

Value onPoints(char sign, const Value& left, const Value& right) {
    const auto* a = left.as<Point3>();
    const auto* b = right.as<Point3>();
    if (a && b && sign == '+') return Value(*a + *b);
    if (a && b && sign == '-') return Value(*a - *b);
    if (a && right.isNumber() && sign == '*') return Value(*a * right.number());
    if (b && left.isNumber() && sign == '*') return Value(*b * left.number());
    if (a && right.isNumber() && sign == '/') {
        if (right.number() == 0) throw Failure("division by zero");
        return Value(Point3{a->x / right.number(), a->y / right.number(), a->z / right.number()});
    }
    refuse(std::string(1, sign), left, right);
}

template <typename T>
bool ordered(const std::string& sign, const T& left, const T& right) {
    if (sign == "<") return left < right;
    if (sign == "<=") return left <= right;
    return sign == ">" ? left > right : left >= right;
}

template <typename T>
Value read(const std::string& text) {
    T value{};
    const char* const end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && last == end ? Value(value) : Value();
}

}  // namespace

Value negated(const Value& value) {
    if (const auto* point = value.as<Point3>()) return Value(-*point);
    if (!value.isNumber()) throw Failure("\"-\" cannot be applied to " + value.described());
    return number(-value.number(), value.as<std::int32_t>() != nullptr);
}

Value combined(const std::string& sign, const Value& left, const Value& right,
               const Limits& limits) {
    if (sign == "==") return Value(left.equals(right));
    if (sign == "!=") return Value(!left.equals(right));
    const bool numbers = left.isNumber() && right.isNumber();
    if (sign[0] == '<' || sign[0] == '>') {
        if (numbers) return Value(ordered(sign, left.number(), right.number()));
        if (left.text() && right.text()) return Value(ordered(sign, *left.text(), *right.text()));
        refuse(sign, left, right);
    }
    if (numbers) return arithmetic(sign[0], left, right);
    if (left.as<Point3>() || right.as<Point3>()) return onPoints(sign[0], left, right);
    if (sign == "+" && left.text() && right.text())
        return joined(*left.text(), *right.text(), limits);
    if (sign == "+" && left.array() && right.array())
        return concatenated(*left.array(), *right.array(), limits);
    refuse(sign, left, right);
}

Value converted(const Value& value, const std::string& type) {
    if (type == "string") return Value(value.shown());
    if (type == "integer") {
        if (value.text()) return read<std::int32_t>(*value.text());
        if (const auto* boolean = value.as<bool>()) return Value(*boolean ? 1 : 0);
        const double whole = std::trunc(value.number());
        if (!value.isNumber() || !fitsInteger(whole))
            throw Failure(value.shown() + " cannot be made an integer");
        return Value(static_cast<std::int32_t>(whole));
    }
    if (type == "float") {
        if (value.text()) return read<double>(*value.text());
        if (!value.isNumber()) throw Failure(value.described() + " cannot be made a float");
        return Value(value.number());
    }
    throw Failure("\"" + type + "\" is no type; there are string, integer and float");
}

bool holds(const Value& value, const Array& array) {
    std::vector<const Array*> open;
    std::unordered_set<const Array*> seen;
    const auto visit = [&](const Value& one) {
        const auto* const inner = one.as<std::shared_ptr<Array>>();
        if (inner && seen.insert(inner->get()).second) open.push_back(inner->get());
    };
    visit(value);
    while (!open.empty()) {
        const Array* const next = open.back();
        open.pop_back();
        if (next == &array) return true;
        for (const Value& item : next->items) visit(item);
    }
    return false;
}

}  // namespace script
