// Function publishing: how plug-ins offer functions to scripts and to each other.
#pragma once

#include <kiln/ids.h>
#include <kiln/platform.h>
#include <kiln/timevalue.h>

#include <algorithm>
#include <array>
#include <initializer_list>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

class ClassDesc;
class INode;
class Texmap;

/// Types of parameters and results. The numbers are the SDK's.
enum ParamType2 : int {
    TYPE_FLOAT = 0,
    TYPE_INT = 1,
    TYPE_BOOL = 4,
    TYPE_STRING = 8,
    TYPE_TEXMAP = 15,
    TYPE_INODE = 17,
    TYPE_VOID = 25,
    TYPE_DOUBLE = 26,
    TYPE_VALUE = 27,  ///< of a parameter: takes any value but void as it is; of a result: any
    TYPE_STRING_TAB = 0x800 + TYPE_STRING,  ///< a list of strings
};

/// The type's name as it stands in messages to script writers ("integer"); "value" if unknown.
KILNAPI const char* ParamTypeName(ParamType2 type) noexcept;

/// A function's number within its interface.
using FunctionID = int;
/// What a call came to: 1 is done; anything below 1 is a failure.
using FPStatus = int;

inline constexpr FPStatus FPS_OK = 1;
inline constexpr FPStatus FPS_FAIL = 0;
inline constexpr FPStatus FPS_NO_SUCH_FUNCTION = -1;
/// The function id of a setter that a read-only property does not have.
inline constexpr FunctionID FP_NO_FUNCTION = -1;
/// Interface flag: a core interface, found by `GetCOREInterface` and global to scripts.
inline constexpr unsigned FP_CORE = 4;
/// Interface flag, beside `FP_CORE`: scripts call the functions by their bare names too, and read
/// one that needs nothing but a node as a property of nodes.
inline constexpr unsigned FP_VERBS = 8;
/// Parameter option: the argument may be left out; it is void then.
inline constexpr unsigned FP_OPTIONAL = 1;

/// One argument or result.
///
/// A string is either borrowed (it stays its owner's and must outlive the value) or owned (a block
/// of the host allocator that the value frees). Nodes and texture maps are never owned.
class KILNAPI FPValue {
public:
    ParamType2 type = TYPE_VOID;
    union {
        float f;    ///< TYPE_FLOAT
        double d;   ///< TYPE_DOUBLE
        int i = 0;  ///< TYPE_INT and TYPE_BOOL
        /// TYPE_STRING, UTF-8; may be null. TYPE_STRING_TAB: the strings one behind the other, each
        /// with its terminator, and an empty one that ends the list.
        const char* s;
        INode* n;     ///< TYPE_INODE; may be null
        Texmap* tex;  ///< TYPE_TEXMAP; may be null
    };

    FPValue() noexcept = default;
    FPValue(const FPValue& other) noexcept;  ///< copies an owned string (null without memory)
    FPValue(FPValue&& other) noexcept;
    FPValue& operator=(FPValue other) noexcept;
    ~FPValue() { Clear(); }

    static FPValue Float(float value) noexcept;
    static FPValue Double(double value) noexcept;
    static FPValue Int(int value) noexcept;
    static FPValue Bool(bool value) noexcept;
    static FPValue Node(INode* value) noexcept;
    static FPValue Map(Texmap* value) noexcept;
    /// A borrowed string.
    static FPValue String(const char* value) noexcept;
    /// An owned copy of a string.
    static FPValue StringCopy(const char* value) noexcept;

    /// Frees an owned string and becomes void.
    void Clear() noexcept;
    void SetFloat(float value) noexcept;
    void SetDouble(double value) noexcept;
    void SetInt(int value) noexcept;
    void SetBool(bool value) noexcept;
    void SetNode(INode* value) noexcept;
    void SetTexmap(Texmap* value) noexcept;
    /// Borrows `value`.
    void SetString(const char* value) noexcept;
    /// Takes over `value`, a block of the host allocator (`KILN_strdup`) or null.
    void SetOwnedString(char* value) noexcept;
    /// An owned copy of `values`, none of which may be empty; void without memory.
    void SetStrings(std::span<const std::string> values) noexcept;
    /// The strings of a TYPE_STRING_TAB, empty for any other value.
    std::vector<std::string_view> Strings() const;
    /// Whether the string is freed by this value.
    bool OwnsString() const noexcept { return ownsString_; }

private:
    bool ownsString_ = false;
};

/// The arguments of one call, in the order of the function's parameters and of their types.
using FPParams = std::vector<FPValue>;

/// One parameter of a published function.
struct FPParamDesc {
    const char* name = "";  ///< the keyword; matched exactly
    ParamType2 type = TYPE_VOID;
    int description = 0;   ///< string resource, 0 for none
    unsigned options = 0;  ///< parameter options, 0 for none
};

/// One published function. Written as a constant:
/// `{20, "PutComment", -1, TYPE_BOOL, 0, {{"Node", TYPE_INODE}, {"String", TYPE_STRING}}}`.
class FPFunctionDesc {
public:
    static constexpr std::size_t kMaxParams = 8;

    /// Texts are not copied and must outlive the interface. More than `kMaxParams` parameters do
    /// not compile in a constant and throw `std::length_error` elsewhere.
    constexpr FPFunctionDesc(FunctionID functionId, const char* functionName, int descriptionId,
                             ParamType2 resultType, unsigned functionFlags = 0,
                             std::initializer_list<FPParamDesc> params = {})
        : id(functionId),
          description(descriptionId),
          name(functionName),
          result(resultType),
          flags(functionFlags),
          count_(params.size()) {
        if (params.size() > kMaxParams) throw std::length_error("too many parameters");
        std::copy(params.begin(), params.end(), params_.begin());
    }

    FunctionID id;
    int description;  ///< string resource, -1 or 0 for none
    const char* name;
    ParamType2 result;
    unsigned flags;

    constexpr std::span<const FPParamDesc> params() const noexcept {
        return {params_.data(), count_};
    }

private:
    std::array<FPParamDesc, kMaxParams> params_{};
    std::size_t count_;
};

/// One published property: a getter, and a setter unless it is read-only.
struct FPPropertyDesc {
    FunctionID getter;
    FunctionID setter;  ///< `FP_NO_FUNCTION` for a read-only property
    const char* name;
    int description;  ///< string resource, 0 for none
    ParamType2 type;
};

class FPInterfaceDesc;

/// A set of published functions.
class KILNAPI FPInterface {
public:
    virtual ~FPInterface() = default;

    virtual const FPInterfaceDesc& GetDesc() const = 0;

    /// Calls function `id` with `params` (already of the parameters' types; null for none) and
    /// loads `result`, which is void before the call and stays so when the function returns
    /// nothing. A function that fails may load a string that says why. No exception leaves it: one
    /// that does becomes `FPS_FAIL`.
    FPStatus Invoke(FunctionID id, TimeValue t, FPValue& result, FPParams* params) noexcept;

protected:
    /// Does the call. Implemented by the publisher.
    virtual FPStatus _dispatch_fn(FunctionID id, TimeValue t, FPValue& result,
                                  FPParams* params) = 0;
};

/// What an interface publishes: its identity, functions and properties.
class KILNAPI FPInterfaceDesc : public FPInterface {
public:
    /// Copies the tables; texts are not copied and must outlive the interface.
    FPInterfaceDesc(const Interface_ID& id, const char* name, int description, ClassDesc* owner,
                    unsigned flags, std::span<const FPFunctionDesc> functions,
                    std::span<const FPPropertyDesc> properties = {});

    const FPInterfaceDesc& GetDesc() const override { return *this; }

    const Interface_ID& GetID() const noexcept { return id_; }
    const char* Name() const noexcept { return name_; }
    int Description() const noexcept { return description_; }  ///< string resource, 0 for none
    ClassDesc* Owner() const noexcept { return owner_; }       ///< null for none
    unsigned Flags() const noexcept { return flags_; }
    /// In the order they were published.
    std::span<const FPFunctionDesc> Functions() const noexcept { return functions_; }
    std::span<const FPPropertyDesc> Properties() const noexcept { return properties_; }
    /// By name without regard to case, as scripts do; an exact match wins. Null for none.
    const FPFunctionDesc* FindFunction(const char* name) const noexcept;
    const FPPropertyDesc* FindProperty(const char* name) const noexcept;

private:
    Interface_ID id_;
    const char* name_;
    int description_;
    ClassDesc* owner_;
    unsigned flags_;
    std::vector<FPFunctionDesc> functions_;
    std::vector<FPPropertyDesc> properties_;
};

/// An interface that is one static object of its module. One with the flag `FP_CORE` is registered
/// by its constructor and taken back by its destructor.
class KILNAPI FPStaticInterface : public FPInterfaceDesc {
public:
    FPStaticInterface(const Interface_ID& id, const char* name, int description, ClassDesc* owner,
                      unsigned flags, std::span<const FPFunctionDesc> functions,
                      std::span<const FPPropertyDesc> properties = {});
    ~FPStaticInterface() override;
};
