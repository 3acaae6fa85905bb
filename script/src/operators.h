// What operators do to values. All of them throw `Failure` for values that they do not take.
#pragma once

#include <script/engine.h>

#include <string>

namespace script {

Value negated(const Value& value);
/// `sign` is one of + - * / ^ == != < <= > >=.
Value combined(const std::string& sign, const Value& left, const Value& right,
               const Limits& limits);
/// `value as type`.
Value converted(const Value& value, const std::string& type);
/// Whether `value` is `array` or has it among its elements, at any depth.
bool holds(const Value& value, const Array& array);

}  // namespace script
