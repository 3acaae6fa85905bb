// Files that databases name: other databases and pictures.
#include "gathered.h"

#include <base/paths.h>
#include <checks/namedfile.h>
#include <quillon/fltfilereader.h>
#include <quillon/flttext.h>
#include <quillon/fltxref.h>

#include <algorithm>
#include <bit>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <unordered_map>

namespace checks {

namespace {

namespace fs = std::filesystem;

fs::path wholePath(const fs::path& path) {
    std::error_code ignored;
    const fs::path found = fs::weakly_canonical(path, ignored);
    return found.empty() ? path : found;
}

/// As `KnownReferences` keeps them.
std::string readNamesIn(const std::string& path) {
    constexpr std::uintmax_t kLargest = std::uintmax_t{256} << 20;
    std::string names;
    try {
        if (fs::file_size(base::pathFrom(path)) > kLargest) return names;
        const FltFileBytes file = FltFileBytes::load(path);
        FltFileReader reader(file.bytes());
        FltXRef record;
        while (reader.next()) {
            if (reader.opcode() != kFltExternalRef) continue;
            record.readFromFile(&reader.token());
            names.append(fileOfReference(fltText(record.fileName))).push_back('\0');
        }
    } catch (const std::exception&) {
        // What was read up to the damage counts.
    }
    return names;
}

/// Which files refer to which. Each is read once, however many refer to it, and has a number: the
/// root of a database leads to all of its files.
class FileReferences {
public:
    using Number = std::uint32_t;

    explicit FileReferences(KnownReferences& names) : names_(names) {}

    /// One number for all names of a file.
    Number numberOf(const fs::path& path) {
        const auto [entry, isNew] =
            numbers_.try_emplace(base::textOf(whole(path)), static_cast<Number>(files_.size()));
        if (isNew) files_.push_back({&entry->first, {}});
        return entry->second;
    }

    /// Whether the file `start`, or one that it refers to, refers to `home`.
    bool leadsTo(Number start, Number home) {
        constexpr std::size_t kMostFiles = 200;
        std::set<Number> seen{start};
        std::vector<Number> pending{start};
        while (!pending.empty() && seen.size() < kMostFiles) {
            const Number file = pending.back();
            pending.pop_back();
            if (file == home) return true;
            for (const Number next : referencesOf(file))
                if (seen.insert(next).second) pending.push_back(next);
        }
        return seen.contains(home);
    }

private:
    struct File {
        const std::string* path;
        std::optional<std::vector<Number>> references;  // once somebody has asked
    };

    /// The way to a folder of many files is followed once.
    fs::path whole(const fs::path& path) {
        std::error_code unknown;
        if (fs::is_symlink(path, unknown)) return wholePath(path);
        const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
        const auto [entry, isNew] = folders_.try_emplace(folder);
        if (isNew) entry->second = wholePath(folder);
        return entry->second / path.filename();
    }

    const std::vector<Number>& referencesOf(Number file) {
        if (!files_[file].references) {
            const std::string& path = *files_[file].path;
            const std::vector<std::string> folders{
                base::textOf(base::pathFrom(path).parent_path())};
            std::vector<Number> found;
            for (const std::string& name : names_.namesIn(path))
                if (const fs::path next = findNamedFile(name, folders); !next.empty())
                    found.push_back(numberOf(next));
            files_[file].references = std::move(found);
        }
        return *files_[file].references;
    }

    KnownReferences& names_;
    std::unordered_map<std::string, Number> numbers_;  // by path
    std::vector<File> files_;
    std::map<fs::path, fs::path> folders_;
};

void checkReferences(Gathered& all, const std::vector<std::string>& folders) {
    FileReferences references(all.known);
    for (const KeptReference& reference : all.references) {
        const std::string name = fileOfReference(reference.file);
        if (isAbsoluteName(name)) all.found(Rule::PATH_ABSOLUTE, reference.node, name);
        if (folders.empty() || isOnOtherComputer(name)) continue;
        const fs::path path = findNamedFile(name, folders);
        if (path.empty()) {
            all.found(Rule::XREF_MISSING, reference.node, name);
            continue;
        }
        if (!all.isOn(Rule::XREF_CYCLE)) continue;
        const Database& database = all.databaseOf(reference.node);
        if (database.node == kNone) continue;
        const std::string home = all.source.fileOf(all.nodes[database.node].place);
        if (home.empty()) continue;
        if (references.leadsTo(references.numberOf(path),
                               references.numberOf(base::pathFrom(home))))
            all.found(Rule::XREF_CYCLE, reference.node, name);
    }
}

void checkTexture(Gathered& all, std::int32_t index, const PaletteEntry& texture,
                  const std::vector<std::string>& folders) {
    if (isAbsoluteName(texture.name))
        all.foundDetail(Rule::PATH_ABSOLUTE, texture.node, index, texture.name);
    if (folders.empty() || isOnOtherComputer(texture.name) || texture.name.empty()) return;
    const fs::path path = findNamedFile(texture.name, folders);
    if (path.empty()) return all.found(Rule::TEX_MISSING, texture.node, texture.name);
    const std::optional<PictureSize> size = pictureSizeOf(path);
    if (!size) return;
    constexpr std::uint64_t kTexel = 4;
    all.report.statistics.textureBytes += kTexel * size->width * size->height;
    const std::uint32_t most = all.target.limits.textureSide;
    if (!std::has_single_bit(size->width) || !std::has_single_bit(size->height) ||
        std::max(size->width, size->height) > most)
        all.foundDetail(Rule::TEX_SIZE, texture.node, index, texture.name, size->width,
                        size->height);
}

}  // namespace

std::vector<std::string> KnownReferences::namesIn(const std::string& path) {
    const auto [entry, isNew] = files_.try_emplace(path);
    Known& known = entry->second;
    if (isNew || !known.stamp || known.stamp->isOutdated(path)) {
        known.stamp = base::FileStamp::of(path);
        known.names = readNamesIn(path);
    }
    std::vector<std::string> names;
    for (const char* at = known.names.data(); at != known.names.data() + known.names.size();
         at += names.back().size() + 1)
        names.emplace_back(at);
    return names;
}

void checkFiles(Gathered& all) {
    const std::vector<std::string> folders = all.source.folders();
    checkReferences(all, folders);
    for (const Database& database : all.databases)
        for (const auto& [index, texture] :
             database.palettes[static_cast<std::size_t>(Palette::kTexture)])
            checkTexture(all, index, texture, folders);
    constexpr std::uint64_t kMegabyte = 1 << 20;
    const std::uint64_t bytes = all.report.statistics.textureBytes;
    if (bytes > all.target.limits.textureMegabytes * kMegabyte)
        all.found(Rule::BUDGET, kNone, "megabytes of textures", (bytes + kMegabyte - 1) / kMegabyte,
                  all.target.limits.textureMegabytes);
}

}  // namespace checks
