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
#include <set>

namespace checks {

namespace {

namespace fs = std::filesystem;

fs::path wholePath(const fs::path& path) {
    std::error_code ignored;
    const fs::path found = fs::weakly_canonical(path, ignored);
    return found.empty() ? path : found;
}

/// The names of files that the database at `path` refers to; none when it cannot be read.
std::vector<std::string> namesIn(const fs::path& path) {
    constexpr std::uintmax_t kLargest = std::uintmax_t{256} << 20;
    std::vector<std::string> names;
    try {
        if (fs::file_size(path) > kLargest) return names;
        const FltFileBytes file = FltFileBytes::load(base::textOf(path));
        FltFileReader reader(file.bytes());
        FltXRef record;
        while (reader.next()) {
            if (reader.opcode() != kFltExternalRef) continue;
            record.readFromFile(&reader.token());
            names.push_back(fileOfReference(fltText(record.fileName)));
        }
    } catch (const std::exception&) {
        // What was read up to the damage counts.
    }
    return names;
}

/// Which files refer to which. Each is read once, however many refer to it.
class FileReferences {
public:
    /// One path for all names of a file. The way to a folder of many files is followed once.
    fs::path whole(const fs::path& path) {
        std::error_code unknown;
        if (fs::is_symlink(path, unknown)) return wholePath(path);
        const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
        const auto [entry, isNew] = folders_.try_emplace(folder);
        if (isNew) entry->second = wholePath(folder);
        return entry->second / path.filename();
    }

    /// Whether the file at `start`, or one that it refers to, refers to `home`.
    bool leadsTo(const fs::path& start, const fs::path& home) {
        constexpr std::size_t kMostFiles = 200;
        std::set<fs::path> seen{start};
        std::vector<fs::path> pending{start};
        while (!pending.empty() && seen.size() < kMostFiles) {
            const fs::path path = pending.back();
            pending.pop_back();
            if (path == home) return true;
            for (const fs::path& next : referencesOf(path))
                if (seen.insert(next).second) pending.push_back(next);
        }
        return seen.contains(home);
    }

private:
    const std::set<fs::path>& referencesOf(const fs::path& path) {
        const auto [entry, isNew] = known_.try_emplace(path);
        if (!isNew) return entry->second;
        const std::vector<std::string> folders{base::textOf(path.parent_path())};
        for (const std::string& name : namesIn(path)) {
            if (const fs::path next = findNamedFile(name, folders); !next.empty())
                entry->second.insert(whole(next));
        }
        return entry->second;
    }

    std::map<fs::path, std::set<fs::path>> known_;
    std::map<fs::path, fs::path> folders_;
};

void checkReferences(Gathered& all, const std::vector<std::string>& folders) {
    FileReferences references;
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
        if (references.leadsTo(references.whole(path), references.whole(base::pathFrom(home))))
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
