// One description of a record's layout, several uses of it.
//
// A layout is a function template over a codec that names the record's fields in file order:
//
//     void layout(auto& codec, auto& record) {
//         codec.field("relativePriority", record.relativePriority);
//         codec.reserved(2);
//         ...
//
// At its end a layout may have lists of as many items as the record holds, each with a layout of
// its own (`items`), and a rest of bytes or text (`rest`). All before that has one size.
//
// Each codec is an aggregate of inline functions, so that a layout compiles to straight-line code.
#pragma once

#include <diagnostics/assertion.h>
#include <quillon/fltbyteorder.h>
#include <quillon/fltfield.h>
#include <quillon/fltfloat.h>
#include <quillon/fltgeometry.h>
#include <quillon/fltheader.h>
#include <quillon/fltlistof.h>
#include <quillon/fltpackedcolor.h>
#include <quillon/fltstring.h>
#include <quillon/flttext.h>
#include <quillon/flttoken.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace quillon {

template <typename T>
concept FltIsColor3f = std::same_as<std::remove_cvref_t<T>, FltColor3f>;

/// For lists that may have any number of items.
inline constexpr std::size_t kAnyCount = std::numeric_limits<std::size_t>::max();

// The codecs belong to each source file alone, and what is made of a layout with them too: the
// compiler then inlines a layout whatever its size.
namespace {

/// What the codecs that move bytes share: everything is made of numbers, raw bytes and reserved
/// bytes, which `Codec` supplies.
template <typename Codec>
struct ByteCodec {
    /// Whether this codec changes the record.
    static constexpr bool kReads = false;

    template <FltNumber T>
    constexpr void field(const char*, T& value) {
        self().number(value);
    }
    /// Raw bytes, such as a name.
    template <std::size_t size>
    constexpr void field(const char*, char (&text)[size]) {
        self().bytes(text, size);
    }
    template <std::size_t size>
    constexpr void field(const char*, const char (&text)[size]) {
        self().bytes(text, size);
    }
    template <FltNumber T, std::size_t size>
    constexpr void field(const char*, T (&numbers)[size]) {
        for (T& value : numbers) self().number(value);
    }
    template <FltNumber T, std::size_t rows, std::size_t columns>
    constexpr void field(const char* name, T (&matrix)[rows][columns]) {
        for (auto& row : matrix) field(name, row);
    }
    /// As many numbers as the list has.
    void field(const char*, auto& list) requires requires { list.count(), *list.data(); }
    { self().numbers(list); }
    constexpr void field(const char*, auto& point) requires requires { point.x, point.y, point.z; }
    {
        self().number(point.x);
        self().number(point.y);
        self().number(point.z);
    }
    constexpr void field(const char*, auto& texture) requires requires { texture.u, texture.v; }
    {
        self().number(texture.u);
        self().number(texture.v);
    }
    constexpr void field(const char*, auto& color) requires FltIsColor3f<decltype(color)> {
        self().number(color.red);
        self().number(color.green);
        self().number(color.blue);
    }
    /// A packed color, which has the byte order of the file in memory, moved as one number.
    constexpr void field(const char*, auto& color) requires requires { color.alpha, color.red; }
    {
        auto packed = fltSwapToBigEndian(std::bit_cast<std::uint32_t>(color));
        self().number(packed);
        if constexpr (Codec::kReads)
            color = std::bit_cast<FltPackedColor>(fltSwapToBigEndian(packed));
    }
    void numbers(auto& list) {
        auto* each = list.data();
        for (std::int32_t i = list.count(); i > 0; --i) self().number(*each++);
    }
    /// A value that the layout holds a second time.
    constexpr void repeated(auto& value) { self().number(value); }
    /// A number of unknown meaning; shown as the whole number that its bits are.
    constexpr void word(const char*, auto& value) { self().number(value); }

private:
    constexpr Codec& self() { return static_cast<Codec&>(*this); }
};

/// Adds up the size of a layout.
struct MeasureCodec : ByteCodec<MeasureCodec> {
    std::uint32_t size = 0;

    constexpr void number(const FltNumber auto& value) { size += sizeof value; }
    void numbers(auto& list) {
        size += static_cast<std::uint32_t>(list.count()) * std::uint32_t{sizeof *list.data()};
    }
    constexpr void bytes(const char*, std::uint32_t n) { size += n; }
    constexpr void reserved(std::uint32_t n) { size += n; }
    constexpr void narrowed(const char*, double) { size += sizeof(float); }
    constexpr void readOnly(const char*, const FltPackedColor& color) { size += sizeof color; }
    template <typename T>
    constexpr void stored(const char*, const auto&) {
        size += sizeof(T);
    }
    template <typename Item>
    constexpr void items(const std::vector<Item>& list, auto&& layoutItem,
                         std::size_t = kAnyCount) {
        size += static_cast<std::uint32_t>(list.size()) * sizeOfItem<Item>(layoutItem);
    }
    constexpr void rest(const char*, const std::vector<std::uint8_t>& bytes) {
        size += static_cast<std::uint32_t>(bytes.size());
    }
    void rest(const char*, const std::string& text) {
        size += static_cast<std::uint32_t>(fltText(text).size()) + 1;
    }
    void rest(const char*, const FltString& text) {
        size += static_cast<std::uint32_t>(std::strlen(text.text())) + 1;
    }

    template <typename Item>
    static constexpr std::uint32_t sizeOfItem(auto&& layoutItem) {
        MeasureCodec measure;
        const Item item{};
        layoutItem(measure, item);
        return measure.size;
    }
};

/// Adds up what a layout needs to be read, which is its size without lists and rest.
struct FixedSizeCodec : MeasureCodec {
    constexpr void items(auto&, auto&&, std::size_t = kAnyCount) {}
    constexpr void rest(const char*, auto&) {}
};

/// Finds where the field that lives at `wanted` stands in a layout.
struct PlaceCodec : MeasureCodec {
    const void* wanted;
    std::uint32_t begin = 0;  ///< in bytes from the start of the body
    std::uint32_t end = 0;

    constexpr explicit PlaceCodec(const void* field) : wanted(field) {}

    constexpr void field(const char* name, auto& value) {
        const std::uint32_t start = size;
        MeasureCodec::field(name, value);
        if (static_cast<const void*>(&value) != wanted) return;
        begin = start;
        end = size;
    }
    void readOnly(const char* name, const FltPackedColor& color) { field(name, color); }
};

/// Stores fields where there is room for all of them.
struct StoreCodec : ByteCodec<StoreCodec> {
    std::uint8_t* place;
    std::uint8_t* end;  ///< of the record

    StoreCodec(std::uint8_t* start, std::uint32_t size) : place(start), end(start + size) {}

    void number(const FltNumber auto& value) {
        fltStoreBigEndian(place, value);
        place += sizeof value;
    }
    void bytes(const char* text, std::uint32_t n) {
        std::memcpy(place, text, n);
        place += n;
    }
    void reserved(std::uint32_t n) {
        std::memset(place, 0, n);
        place += n;
    }
    /// A value that the file holds with fewer bits than memory does.
    void narrowed(const char*, double value) { number(fltNarrow(value)); }
    /// A value that is kept as read but leaves only zeros in the file.
    void readOnly(const char*, const FltPackedColor& color) { reserved(sizeof color); }
    /// A whole number that the file holds as a `T`, which may have fewer bits.
    template <typename T>
    void stored(const char*, const auto& value) {
        number(static_cast<T>(value));
    }
    void items(const auto& list, auto&& layoutItem, std::size_t = kAnyCount) {
        for (const auto& item : list) layoutItem(*this, item);
    }
    void rest(const char*, const std::vector<std::uint8_t>& data) {
        if (!data.empty()) std::memcpy(place, data.data(), data.size());
        place += data.size();
    }
    void rest(const char*, const std::string& text) {
        const std::string_view shown = fltText(text);
        bytes(shown.data(), static_cast<std::uint32_t>(shown.size()));
        *place++ = 0;
    }
    /// Up to the first terminator: padding that was read along with the text is not text.
    void rest(const char*, const FltString& text) {
        bytes(text.text(), static_cast<std::uint32_t>(end - place));
    }
};

/// Stores for a file what is only read otherwise.
struct FileStoreCodec : StoreCodec {
    using StoreCodec::StoreCodec;
    void readOnly(const char* name, const FltPackedColor& color) { field(name, color); }
};

/// Loads fields that are known to be there.
struct LoadCodec : ByteCodec<LoadCodec> {
    static constexpr bool kReads = true;
    const std::uint8_t* place;
    const std::uint8_t* end;  ///< of the record

    LoadCodec(const std::uint8_t* start, const std::uint8_t* recordEnd)
        : place(start), end(recordEnd) {}

    void number(FltNumber auto& value) {
        fltLoadBigEndian(place, value);
        place += sizeof value;
    }
    void bytes(char* text, std::uint32_t n) {
        std::memcpy(text, place, n);
        place += n;
    }
    void reserved(std::uint32_t n) { place += n; }
    void narrowed(const char*, double& value) {
        float narrow = 0;
        number(narrow);
        value = narrow;
    }
    void readOnly(const char* name, FltPackedColor& color) { field(name, color); }
    template <typename T>
    void stored(const char*, auto& value) {
        T narrow = 0;
        number(narrow);
        value = narrow;
    }
    /// As many whole items as the record has left, up to `most`.
    template <typename Item>
    void items(std::vector<Item>& list, auto&& layoutItem, std::size_t most = kAnyCount) {
        const std::size_t size = MeasureCodec::sizeOfItem<Item>(layoutItem);
        list.resize(size == 0 ? 0 : std::min(most, left() / size));
        for (Item& item : list) layoutItem(*this, item);
    }
    void rest(const char*, std::vector<std::uint8_t>& data) {
        data.assign(place, end);
        place = end;
    }
    void rest(const char*, std::string& text) {
        text = fltText({reinterpret_cast<const char*>(place), left()});
        place = end;
    }
    /// Everything, whatever terminators are in it, and a terminator.
    void rest(const char*, FltString& text) {
        const auto length = static_cast<std::uint32_t>(left());
        text.setSize(static_cast<std::int32_t>(length) + 1);
        bytes(text.text(), length);
    }
    std::size_t left() const { return static_cast<std::size_t>(end - place); }
};

/// Reads fields from a record that may end before its layout does.
struct ShortLoadCodec : ByteCodec<ShortLoadCodec> {
    static constexpr bool kReads = true;
    FltToken& token;

    explicit ShortLoadCodec(FltToken& source) : token(source) {}

    template <FltNumber T>
    void number(T& value) {
        if constexpr (sizeof(T) == 1) token.readInt8(value);
        if constexpr (sizeof(T) == 2) token.readInt16(value);
        if constexpr (sizeof(T) == 4) token.readInt32(value);
        if constexpr (sizeof(T) == 8) token.readInt64(value);
    }
    void bytes(char* text, std::uint32_t n) { token.readBytes(n, text); }
    void reserved(std::uint32_t n) { token.skip(n); }
    void narrowed(const char*, double& value) {
        float narrow = 0;
        number(narrow);
        value = narrow;
    }
    void readOnly(const char* name, FltPackedColor& color) { field(name, color); }
    template <typename T>
    void stored(const char*, auto& value) {
        T narrow = 0;
        number(narrow);
        value = narrow;
    }
    // The record has ended before these.
    void items(auto& list, auto&&, std::size_t = kAnyCount) { list.clear(); }
    void rest(const char*, auto& data) requires requires { data.clear(); }
    { data.clear(); }
    void rest(const char*, FltString& text) { text.setSize(0); }
};

/// Shows fields to a visitor.
struct ShowCodec {
    static constexpr bool kReads = false;
    FltFieldVisitor& visitor;
    int item = -1;  ///< place in the list whose item is shown

    template <FltNumber T>
    void field(const char* name, const T& value) {
        show(name, item, value);
    }
    template <FltNumber T, std::size_t size>
    void field(const char* name, const T (&numbers)[size]) {
        for (std::size_t i = 0; i < size; ++i) show(name, static_cast<int>(i), numbers[i]);
    }
    template <FltNumber T, std::size_t rows, std::size_t columns>
    void field(const char* name, const T (&matrix)[rows][columns]) {
        for (std::size_t i = 0; i < rows * columns; ++i)
            show(name, static_cast<int>(i), matrix[i / columns][i % columns]);
    }
    template <std::size_t size>
    void field(const char* name, const char (&text)[size]) {
        visitor.text(name, fltText(text));
    }
    template <FltNumber T>
    void field(const char* name, const FltListOf<T>& list) {
        for (std::int32_t i = 0; i < list.count(); ++i) show(name, i, *list.at(i));
    }
    void field(const char* name, const auto& point) requires requires { point.x, point.y, point.z; }
    { showAll(name, point.x, point.y, point.z); }
    void field(const char* name, const auto& texture) requires requires { texture.u, texture.v; }
    { showAll(name, texture.u, texture.v); }
    void field(const char* name, const FltColor3f& color) {
        showAll(name, color.red, color.green, color.blue);
    }
    void field(const char* name, const FltPackedColor& color) {
        showAll(name, color.alpha, color.blue, color.green, color.red);
    }
    void readOnly(const char* name, const FltPackedColor& color) { field(name, color); }
    template <typename T>
    void stored(const char* name, const auto& value) {
        field(name, value);
    }
    /// Each field of the items is shown as a list.
    void items(const auto& list, auto&& layoutItem, std::size_t = kAnyCount) {
        ShowCodec show{visitor, 0};
        for (const auto& each : list) {
            layoutItem(show, each);
            ++show.item;
        }
    }
    void rest(const char* name, const std::vector<std::uint8_t>& data) {
        for (std::size_t i = 0; i < data.size(); ++i) show(name, static_cast<int>(i), data[i]);
    }
    void rest(const char* name, const std::string& text) { visitor.text(name, fltText(text)); }
    void rest(const char* name, const FltString& text) { visitor.text(name, text.text()); }
    void repeated(const auto&) {}
    void word(const char* name, const auto& value) {
        visitor.integer(name, -1, std::bit_cast<FltBitsOf<std::decay_t<decltype(value)>>>(value));
    }
    void reserved(std::uint32_t) {}
    void narrowed(const char* name, double value) { show(name, -1, value); }

    /// Several numbers of one field; in an item they continue those of the items before.
    template <typename... Numbers>
    void showAll(const char* name, Numbers... values) {
        int index = std::max(item, 0) * static_cast<int>(sizeof...(values));
        (show(name, index++, values), ...);
    }
    template <FltNumber T>
    void show(const char* name, int index, T value) {
        if constexpr (std::is_same_v<T, float>)
            visitor.single(name, index, value);
        else if constexpr (std::is_floating_point_v<T>)
            visitor.real(name, index, value);
        else
            visitor.integer(name, index, static_cast<std::int64_t>(value));
    }
};

}  // namespace

// The common case of writing and reading is straight-line code without a call, in one function
// ("flatten") whatever the compiler thinks of its size: a codec that is passed to a function keeps
// its place in memory, which takes twice as long. What is rare stands in functions of its own,
// which are left to as the last step, so that the common case has nothing to keep for them.

template <typename Store, typename Layout>
[[gnu::noinline]] void writeFieldsInNewRoom(Layout layout, FltToken& token, std::uint16_t opcode,
                                            std::uint32_t size) {
    Store store(token.begin(opcode, size), size);
    layout(store);
}

/// Puts a record of `opcode` with the fields that `layout`, called with a codec, names into
/// `token`.
template <typename Store = StoreCodec, typename Layout>
[[gnu::flatten]] inline void writeFields(FltToken& token, std::uint16_t opcode, Layout layout) {
    MeasureCodec measure;
    layout(measure);
    if (token.lacksRoomForBody(opcode, measure.size)) [[unlikely]]
        return writeFieldsInNewRoom<Store>(layout, token, opcode, measure.size);
    Store store(token.begin(opcode, measure.size), measure.size);
    layout(store);
}

template <typename Layout>
[[gnu::noinline]] void readShortBody(Layout layout, FltToken& token, std::uint16_t offset) {
    token.rewind(offset);
    ShortLoadCodec load(token);
    layout(load);
}

/// Reads the fields that `layout` names from the body's byte `offset` on, wherever the cursor is.
/// The record may be short. The cursor is of no use afterwards.
template <typename Layout>
[[gnu::flatten]] inline void readBody(FltToken& token, Layout layout, std::uint16_t offset = 0) {
    FixedSizeCodec measure;
    layout(measure);
    const std::uint8_t* place = token.body(measure.size, offset);
    if (place == nullptr) [[unlikely]]
        return readShortBody(layout, token, offset);
    LoadCodec load(place, token.data() + token.length());
    layout(load);
}

/// Shows the fields that `layout` names to `visitor`.
template <typename Layout>
void showFields(FltFieldVisitor& visitor, Layout&& layout) {
    ShowCodec show{visitor};
    layout(show);
}

/// A default name: the prefix, one or two letters, and the number that the header's counter has.
struct DefaultName {
    std::string_view prefix;
    std::int16_t FltHeader::*counter;
};

/// Gives a record the next name of its kind; the counter in the header of `stream` moves on.
void giveName(char (&id)[8], const DefaultName& name, FltStream& stream);

}  // namespace quillon
