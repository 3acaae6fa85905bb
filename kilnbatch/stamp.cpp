#include "stamp.h"

#include <base/file.h>
#include <base/filestamp.h>
#include <base/paths.h>
#include <base/replacefile.h>

#include <cstdio>

namespace kilnbatch {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

std::string textOf(const base::ContentHash& hash) {
    char text[20];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(hash.value()));
    return text;
}

fs::path absoluteOf(const fs::path& path) {
    return fs::absolute(path).lexically_normal();
}

std::string nameOf(const fs::path& path, const fs::path& above) {
    const fs::path relative = path.lexically_relative(above);
    const bool isBelow = !relative.empty() && *relative.begin() != "..";
    return base::genericTextOf(isBelow ? relative : path);
}

Json jsonOf(const std::optional<std::string>& hash) {
    return hash ? Json(*hash) : Json();
}

std::optional<std::string> hashIn(const Json& json) {
    return json.is_null() ? std::nullopt : std::optional(json.get<std::string>());
}

}  // namespace

std::string hashOfText(std::string_view text) {
    base::ContentHash hash;
    hash.add(text);
    return textOf(hash);
}

std::optional<std::string> hashOf(const fs::path& path) {
    std::error_code ignored;
    if (!fs::is_regular_file(path, ignored)) return std::nullopt;
    const base::File file = base::openFile(path, false);
    if (!file) return std::nullopt;
    base::ContentHash hash;
    char piece[1 << 16];
    while (const std::size_t count = std::fread(piece, 1, sizeof piece, file.get()))
        hash.add({piece, count});
    if (std::ferror(file.get())) return std::nullopt;
    return textOf(hash);
}

std::vector<std::string> namesOf(const base::FileReads& reads, const fs::path& root) {
    const fs::path above = absoluteOf(root / "");
    std::vector<std::string> names;
    for (const auto& [path, time] : reads.files()) names.push_back(nameOf(path, above));
    return names;
}

std::optional<Stamp> Stamp::of(const base::FileReads& reads, const fs::path& root) {
    if (!reads.areComplete()) return std::nullopt;
    const fs::path above = absoluteOf(root / "");
    Stamp stamp;
    // Hashing reads the files too, and what is listened to is not to change meanwhile.
    const std::vector files(reads.files().begin(), reads.files().end());
    for (const auto& [path, time] : files) {
        std::error_code missing;
        const auto now = fs::last_write_time(path, missing);
        if (missing ? time.has_value() : time != now) return std::nullopt;
        stamp.files[nameOf(path, above)] = hashOf(path);
    }
    return stamp;
}

std::optional<Stamp> Stamp::read(const fs::path& path) {
    std::string text;
    if (base::readFile(base::textOf(path), text)) return std::nullopt;
    try {
        const Json json = Json::parse(text);
        Stamp stamp;
        json.at("options").get_to(stamp.options);
        stamp.output = hashIn(json.at("output"));
        stamp.result = json.at("result");
        for (const auto& [name, hash] : json.at("files").items()) stamp.files[name] = hashIn(hash);
        return stamp;
    } catch (const Json::exception&) {
        return std::nullopt;
    }
}

void Stamp::write(const fs::path& path) const {
    Json json{{"options", options}, {"output", jsonOf(output)}, {"result", result}};
    Json& entries = json["files"] = Json::object();
    for (const auto& [name, hash] : files) entries[name] = jsonOf(hash);
    const std::string text = json.dump(-1, ' ', false, Json::error_handler_t::replace);
    // A stamp that a stop of the machine tears is none, and its file is done again.
    base::File file = base::openFile(path, true);
    const bool isWritten =
        file && std::fwrite(text.data(), 1, text.size(), file.get()) == text.size();
    if (!isWritten || std::fclose(file.release()) != 0)
        throw std::system_error(std::make_error_code(std::errc::io_error), base::textOf(path));
}

bool Stamp::isUpToDate(const std::string& optionsNow, const fs::path& root,
                       const fs::path& made) const {
    if (options != optionsNow) return false;
    for (const auto& [name, hash] : files)
        if (hashOf(root / base::pathFrom(name)) != hash) return false;
    return hashOf(made) == output;
}

}  // namespace kilnbatch
