// The form in which the attribute table is written down: constant data, checked by the compiler.
#pragma once

#include <fltkilnutil/fltattr.h>

#include <cstdint>
#include <span>
#include <type_traits>

namespace fltkilnutil {

/// One choice: a value and the caption that names it.
struct EnumRow {
    std::int32_t value;
    std::uint16_t caption;
};

/// The storage that a width stands for; 0 for text, which has any.
constexpr std::uint32_t widthSize(FltAttrWidth width) noexcept {
    switch (width) {
        case FltAttrWidth::Int32:
        case FltAttrWidth::Float32:
        case FltAttrWidth::Word32:
        case FltAttrWidth::Bool32:
            return 4;
        case FltAttrWidth::Int16:
        case FltAttrWidth::Uint16:
            return 2;
        case FltAttrWidth::Int8:
        case FltAttrWidth::Uint8:
            return 1;
        case FltAttrWidth::Float64:
            return 8;
        default:
            return 0;
    }
}

/// A field and the block it is in.
struct FieldRef {
    FltAttrTarget target;
    FltAttrField field;
    bool real;  ///< a floating-point member
};

template <typename Member>
struct MemberOf;
template <typename Class, typename Value>
struct MemberOf<Value Class::*> {
    using Owner = Class;
    using Type = Value;
};

/// Follows member pointers from `object` inwards.
template <auto first, auto... rest, typename Object>
constexpr auto& follow(Object& object) noexcept {
    if constexpr (sizeof...(rest) == 0)
        return object.*first;
    else
        return follow<rest...>(object.*first);
}

template <typename Base, auto first, auto... rest>
void* addressOf(void* block) noexcept {
    using Owner = typename MemberOf<decltype(first)>::Owner;
    return &follow<first, rest...>(static_cast<Owner&>(*static_cast<Base*>(block)));
}

template <typename Base, auto first, auto... rest>
consteval FieldRef fieldRef(FltAttrTarget target) {
    using Owner = typename MemberOf<decltype(first)>::Owner;
    using Type = std::remove_reference_t<decltype(follow<first, rest...>(std::declval<Owner&>()))>;
    return {
        target, {&addressOf<Base, first, rest...>, sizeof(Type)}, std::is_floating_point_v<Type>};
}

/// The field that a member pointer, or a chain of them, names in a record.
template <auto... path>
inline constexpr FieldRef record = fieldRef<FltRecord, path...>(FltAttrTarget::Record);

/// The same for an options block.
template <auto... path>
inline constexpr FieldRef options = fieldRef<FltNodeOptions, path...>(FltAttrTarget::Options);

/// The low 16 bits of a 32-bit options field; they come first in memory.
template <auto... path>
inline constexpr FieldRef optionsLow16 = [] {
    FieldRef field = options<path...>;
    field.field.size = 2;
    return field;
}();

/// One row of the table. A width that does not fit the field does not compile.
struct AttrRow {
    consteval AttrRow(std::uint16_t captionId, const char* rowKey, FieldRef rowField,
                      FltAttrType rowType, FltAttrWidth rowWidth, const char* rowDefault,
                      std::uint32_t rowMask = 0, std::span<const EnumRow> rowChoices = {},
                      bool isControlling = false)
        : key(rowKey),
          declaredDefault(rowDefault),
          choices(rowChoices),
          field(rowField),
          type(rowType),
          width(rowWidth),
          mask(rowMask),
          caption(captionId),
          controlling(isControlling) {
        const bool wantsReal = width == FltAttrWidth::Float32 || width == FltAttrWidth::Float64;
        if (widthSize(width) != 0 && widthSize(width) != field.field.size)
            throw "the width is not that of the field";
        if (wantsReal != field.real) throw "a real field needs a real width";
    }

    const char* key;  ///< empty: not addressable by scripts
    const char* declaredDefault;
    std::span<const EnumRow> choices;
    FieldRef field;
    FltAttrType type;
    FltAttrWidth width;
    std::uint32_t mask;
    std::uint16_t caption;
    bool controlling;
};

/// The rows of one kind, and how the objects of its blocks come about.
struct GroupRow {
    FltNodeKind kind;
    std::uint16_t caption;
    std::span<const AttrRow> rows;
    std::unique_ptr<FltRecord> (*makeRecord)();
    void (*resetRecord)(FltRecord&);                   ///< back to the defaults, keeping memory
    std::unique_ptr<FltNodeOptions> (*makeOptions)();  ///< null for kinds without options
    void (*resetOptions)(FltNodeOptions&);
};

template <typename Base, typename Class>
std::unique_ptr<Base> makeAs() {
    return std::make_unique<Class>();
}

template <typename Base, typename Class>
void resetAs(Base& object) {
    static_cast<Class&>(object) = Class();
}

/// The group of a record class, without options or with those of a class.
template <typename Record, typename Options = void>
consteval GroupRow groupRow(std::uint16_t caption, std::span<const AttrRow> rows) {
    GroupRow group{static_cast<FltNodeKind>(Record::kOpcode),
                   caption,
                   rows,
                   &makeAs<FltRecord, Record>,
                   &resetAs<FltRecord, Record>,
                   nullptr,
                   nullptr};
    if constexpr (!std::is_void_v<Options>) {
        group.makeOptions = &makeAs<FltNodeOptions, Options>;
        group.resetOptions = &resetAs<FltNodeOptions, Options>;
    }
    return group;
}

/// Rows beside those of the table, of one kind: for scripts and queries alone, so that they have no
/// captions.
struct FurtherRows {
    GroupRow own;
    /// A group of the table whose rows over records are there too; null for none.
    const GroupRow* also = nullptr;
    /// Whether the record is the one that is kept of the node's file; otherwise the scene's.
    bool isOfFile = false;
};
std::span<const FurtherRows> furtherRows() noexcept;

extern const GroupRow kBspGroup;
extern const GroupRow kClipRegionGroup;
extern const GroupRow kDofGroup;
extern const GroupRow kFaceGroup;
extern const GroupRow kGroupGroup;
extern const GroupRow kHeaderGroup;
extern const GroupRow kLightPointGroup;
extern const GroupRow kLightSourceGroup;
extern const GroupRow kLodGroup;
extern const GroupRow kObjectGroup;
extern const GroupRow kSwitchGroup;
extern const GroupRow kXRefGroup;
extern const GroupRow kInstanceRefGroup;
extern const GroupRow kInstanceDefGroup;

}  // namespace fltkilnutil
