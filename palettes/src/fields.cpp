#include <palettes/database.h>

#include <fltkilnutil/textencoding.h>
#include <quillon/fltfield.h>

#include <charconv>

namespace palettes {

namespace {

template <typename Number>
std::string textOf(Number value) {
    char text[40];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

class Collector final : public FltFieldVisitor {
public:
    std::vector<Field> fields;

    void integer(const char* name, int, std::int64_t value) override { add(name, textOf(value)); }
    void real(const char* name, int, double value) override { add(name, textOf(value)); }
    void single(const char* name, int, float value) override { add(name, textOf(value)); }
    void text(const char* name, std::string_view value) override {
        add(name, fltkilnutil::textOf(std::span<const char>(value)));
    }

private:
    /// The fields of a list's items come by turns.
    void add(const char* name, std::string value) {
        for (Field& field : fields) {
            if (field.name != name) continue;
            field.value += ' ';
            field.value += value;
            return;
        }
        fields.push_back({name, std::move(value)});
    }
};

}  // namespace

std::vector<Field> fieldsOf(const FltRecord& record) {
    Collector collector;
    record.visitFields(collector);
    return std::move(collector.fields);
}

}  // namespace palettes
