#include "dialog_template.h"

#include <cstring>
#include <stdexcept>

#include "builtfiles.h"

namespace {

class Reader {
public:
    explicit Reader(std::span<const std::byte> bytes) : bytes_(bytes) {}

    template <typename T>
    T take() {
        if (bytes_.size() - at_ < sizeof(T)) throw std::out_of_range("dialog template ends early");
        T value;
        std::memcpy(&value, bytes_.data() + at_, sizeof value);
        at_ += sizeof value;
        return value;
    }

    std::size_t at() const { return at_; }
    void alignTo4() { at_ = (at_ + 3) & ~std::size_t{3}; }

    // A text, or a number after 0xFFFF, which is given back as "#number".
    std::string textOrNumber() {
        std::wstring text;
        for (auto unit = take<std::uint16_t>(); unit != 0; unit = take<std::uint16_t>()) {
            if (unit == 0xFFFF && text.empty()) {
                return std::string("#").append(std::to_string(take<std::uint16_t>()));
            }
            text.push_back(static_cast<wchar_t>(unit));
        }
        return utf8(text);
    }

private:
    std::span<const std::byte> bytes_;
    std::size_t at_ = 0;
};

std::string className(const std::string& stored) {
    static constexpr const char* kBuiltIn[][2] = {{"#128", "Button"},    {"#129", "Edit"},
                                                  {"#130", "Static"},    {"#131", "ListBox"},
                                                  {"#132", "ScrollBar"}, {"#133", "ComboBox"}};
    for (const auto& [number, name] : kBuiltIn) {
        if (stored == number) return name;
    }
    return stored;
}

DialogTemplate::Control parseControl(Reader& reader) {
    DialogTemplate::Control control{};
    reader.alignTo4();
    reader.take<std::uint32_t>();  // help id
    reader.take<std::uint32_t>();  // extended style
    control.style = reader.take<std::uint32_t>();
    control.x = reader.take<std::int16_t>();
    control.y = reader.take<std::int16_t>();
    control.width = reader.take<std::int16_t>();
    control.height = reader.take<std::int16_t>();
    control.id = reader.take<std::int32_t>();
    control.className = className(reader.textOrNumber());
    control.caption = reader.textOrNumber();
    const auto extra = reader.take<std::uint16_t>();
    for (int i = 0; i < extra; ++i) reader.take<std::byte>();
    return control;
}

}  // namespace

const DialogTemplate::Control& DialogTemplate::control(std::int32_t id) const {
    for (const Control& control : controls) {
        if (control.id == id) return control;
    }
    throw std::out_of_range("no control " + std::to_string(id));
}

namespace {

// The template's own fields up to the size of its font; the number of its controls in `count`.
DialogTemplate parseHead(Reader& reader, int& count) {
    const auto version = reader.take<std::uint16_t>();
    const auto signature = reader.take<std::uint16_t>();
    if (version != 1 || signature != 0xFFFF) throw std::invalid_argument("not an extended dialog");
    DialogTemplate dialog{};
    reader.take<std::uint32_t>();  // help id
    reader.take<std::uint32_t>();  // extended style
    dialog.style = reader.take<std::uint32_t>();
    count = reader.take<std::uint16_t>();
    reader.take<std::int16_t>();
    reader.take<std::int16_t>();
    dialog.width = reader.take<std::int16_t>();
    dialog.height = reader.take<std::int16_t>();
    reader.textOrNumber();  // menu
    reader.textOrNumber();  // window class
    dialog.caption = reader.textOrNumber();
    return dialog;
}

}  // namespace

std::vector<std::byte> scaledDialog(std::span<const std::byte> bytes, int percent) {
    Reader reader(bytes);
    int count = 0;
    parseHead(reader, count);
    const std::size_t at = reader.at();
    const auto points = static_cast<std::uint16_t>(reader.take<std::uint16_t>() * percent / 100);
    std::vector<std::byte> scaled(bytes.begin(), bytes.end());
    std::memcpy(scaled.data() + at, &points, sizeof points);
    return scaled;
}

DialogTemplate parseDialog(std::span<const std::byte> bytes) {
    Reader reader(bytes);
    int count = 0;
    DialogTemplate dialog = parseHead(reader, count);
    dialog.pointSize = reader.take<std::int16_t>();
    reader.take<std::uint16_t>();  // weight
    reader.take<std::uint16_t>();  // italic, character set
    dialog.font = reader.textOrNumber();
    for (int i = 0; i < count; ++i) dialog.controls.push_back(parseControl(reader));
    return dialog;
}
