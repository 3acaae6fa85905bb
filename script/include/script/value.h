// The values of the script language.
#pragma once

#include <kiln/geometry.h>
#include <kiln/platform.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

class FPInterfaceDesc;
class INode;
class Texmap;

namespace script {

class Value;
struct Function;  // a function of the script, or a verb of the host

/// A node by its handle, so that a value outlives the node that it names.
struct NodeReference {
    DWORD handle = 0;
    bool operator==(const NodeReference&) const = default;
};

/// The result of what has none; prints as "ok".
struct Done {
    bool operator==(const Done&) const = default;
};

struct Undefined {
    bool operator==(const Undefined&) const = default;
};

/// The elements of an array, shared by all values that name it.
struct Array {
    std::vector<Value> items;

    Array() = default;
    ~Array();  // arrays within arrays go one by one, however deep they lie
    Array(const Array&) = delete;
    Array& operator=(const Array&) = delete;
};

/// One value. Copying is cheap: texts are shared and never change, arrays are shared and do.
class Value {
public:
    using Text = std::shared_ptr<const std::string>;
    using Map = std::shared_ptr<Texmap>;  // holds a reference to the map

    Value() = default;  ///< undefined
    Value(Done done) : data_(done) {}
    Value(bool boolean) : data_(boolean) {}
    Value(std::int32_t integer) : data_(integer) {}
    Value(double number) : data_(number) {}
    Value(std::string text) : data_(std::make_shared<const std::string>(std::move(text))) {}
    Value(const char* text) : Value(std::string(text)) {}
    Value(Point3 point) : data_(point) {}
    Value(NodeReference node) : data_(node) {}
    Value(std::shared_ptr<Array> array) : data_(std::move(array)) {}
    Value(std::shared_ptr<const Function> function) : data_(std::move(function)) {}
    Value(FPInterfaceDesc* interface) : data_(interface) {}
    /// A node, undefined for null.
    static Value ofNode(INode* node);
    /// A texture map, undefined for null.
    static Value ofMap(Texmap* map);
    /// A new array.
    static Value ofArray(std::vector<Value> items);
    /// A count or an index: an integer, a float when it is too large for one.
    static Value ofCount(std::size_t count);

    /// The alternative of type `T`, or null.
    template <typename T>
    const T* as() const noexcept {
        return std::get_if<T>(&data_);
    }
    bool isUndefined() const noexcept { return as<Undefined>() != nullptr; }
    bool isNumber() const noexcept { return as<std::int32_t>() || as<double>(); }
    /// The number, 0 for anything else.
    double number() const noexcept;
    const std::string* text() const noexcept;
    std::shared_ptr<Array> array() const noexcept;

    /// "an integer", "a string": for messages.
    std::string described() const;
    /// As a listing shows it, strings in quotes: "text", $name, #(1, 2). Very long arrays and
    /// arrays deep within arrays end in "...".
    std::string printed() const;
    /// The same, but a string is its bare text.
    std::string shown() const;
    /// Whether both are the same: numbers by value, texts by their bytes, arrays by their elements.
    /// Throws `Failure` for arrays that lie too deep within each other.
    bool equals(const Value& other) const;

private:
    friend struct Array;
    std::variant<Undefined, Done, bool, std::int32_t, double, Text, Point3, NodeReference,
                 std::shared_ptr<Array>, std::shared_ptr<const Function>, FPInterfaceDesc*, Map>
        data_;
};

}  // namespace script
