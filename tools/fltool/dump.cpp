#include "commands.h"
#include "progress.h"

#include <diagnostics/assertion.h>
#include <quillon/fltfield.h>
#include <quillon/fltfilereader.h>
#include <quillon/fltrecordtype.h>
#include <nlohmann/json.hpp>

#include <charconv>
#include <cmath>
#include <memory>
#include <ostream>

namespace fltool {

namespace {

using Json = nlohmann::ordered_json;

/// A number that JSON has no form for becomes a text.
Json numberOf(double value) {
    if (std::isnan(value)) return "NaN";
    if (std::isinf(value)) return value > 0 ? "Infinity" : "-Infinity";
    return value;
}

/// The number with the shortest text that still names `value`: 0.1, not 0.10000000149011612.
double shortest(float value) {
    char text[32];
    const auto written = std::to_chars(text, text + sizeof text, value);
    double result = value;
    std::from_chars(text, written.ptr, result);
    return result;
}

/// Collects the fields of a record in file order; one with several values becomes an array.
class FieldCollector final : public FltFieldVisitor {
public:
    Json fields = Json::object();

    void integer(const char* name, int index, std::int64_t value) override {
        add(name, index, value);
    }
    void real(const char* name, int index, double value) override {
        add(name, index, numberOf(value));
    }
    void single(const char* name, int index, float value) override {
        add(name, index, numberOf(std::isfinite(value) ? shortest(value) : value));
    }
    void text(const char* name, std::string_view value) override { fields[name] = value; }

private:
    void add(const char* name, int index, Json value) {
        if (index < 0)
            fields[name] = std::move(value);
        else
            fields[name].push_back(std::move(value));
    }
};

/// JSON as bytes; what is no UTF-8 in the file becomes replacement characters.
std::string bytesOf(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

/// The fields of the reader's current record; null for a class that is not known. Sets `error` for
/// bytes that the class refuses.
Json fieldsOf(FltFileReader& reader, std::string& error) {
    const FltRecordType* const type = fltRecordType(reader.opcode());
    if (type == nullptr || type->create == nullptr) return nullptr;
    const std::unique_ptr<FltRecord> record = type->create();
    try {
        record->readFromFile(&reader.token());
    } catch (const diagnostics::AviaryAssertion&) {
        error = "counts that cannot be right";
        return nullptr;
    }
    FieldCollector collector;
    record->visitFields(collector);
    return std::move(collector.fields);
}

class Printer {
public:
    explicit Printer(std::ostream& out) : out_(out) {}
    virtual ~Printer() = default;

    virtual void record(FltFileReader& reader) = 0;
    virtual void end() {}

protected:
    std::ostream& out_;
};

/// One line per record, one more for each of its fields.
class TextPrinter final : public Printer {
public:
    explicit TextPrinter(std::ostream& out) : Printer(out) {
        out_ << "    offset level opcode name                             length\n";
    }

    void record(FltFileReader& reader) override {
        char line[128];
        std::snprintf(line, sizeof line, "%10zu %5d %6u %-32s %6u\n", reader.offset(),
                      reader.level(), static_cast<unsigned>(reader.opcode()),
                      fltRecordName(reader.opcode()), static_cast<unsigned>(reader.length()));
        out_ << line;
        std::string error;
        const Json fields = fieldsOf(reader, error);
        for (const auto& [name, value] : fields.items())
            out_ << kIndent << name << " = " << bytesOf(value) << '\n';
        if (!error.empty()) out_ << kIndent << "unreadable: " << error << '\n';
    }

private:
    static constexpr const char* kIndent = "                        ";
};

/// One array, one record a line.
class JsonPrinter final : public Printer {
public:
    explicit JsonPrinter(std::ostream& out) : Printer(out) { out_ << '['; }

    void record(FltFileReader& reader) override {
        Json object{{"offset", reader.offset()},
                    {"level", reader.level()},
                    {"opcode", reader.opcode()},
                    {"name", fltRecordName(reader.opcode())},
                    {"length", reader.length()}};
        std::string error;
        Json fields = fieldsOf(reader, error);
        if (!fields.is_null()) object["fields"] = std::move(fields);
        if (!error.empty()) object["error"] = error;
        out_ << separator_ << bytesOf(object);
        separator_ = ",\n";
    }

    void end() override { out_ << "\n]\n"; }

private:
    const char* separator_ = "\n";
};

std::unique_ptr<Printer> makePrinter(bool json, std::ostream& out) {
    if (json) return std::make_unique<JsonPrinter>(out);
    return std::make_unique<TextPrinter>(out);
}

}  // namespace

void dump(const DumpOptions& options, std::ostream& out, std::ostream& notes) {
    const FltFileBytes file = FltFileBytes::load(options.file);
    FltFileReader reader(file.bytes());
    Progress progress(file.bytes().size(), true);
    const std::unique_ptr<Printer> printer = makePrinter(options.json, out);
    try {
        while (reader.next()) {
            progress.reached(reader.offset());
            if (options.opcodes.empty() || options.opcodes.contains(reader.opcode()))
                printer->record(reader);
            if (!out) return;  // nobody reads on
        }
    } catch (const FltFileError&) {
        printer->end();  // what was shown stays a whole document
        throw;
    }
    printer->end();
    noteStrayBytes(reader.strayBytes(), notes);
}

}  // namespace fltool
