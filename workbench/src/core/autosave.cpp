#include <base/paths.h>
#include <workbench/autosave.h>
#include <workbench/userfile.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <random>
#include <string_view>
#include <system_error>
#include <utility>

namespace workbench {

namespace {

constexpr std::size_t kPiece = std::size_t{1} << 14;
constexpr std::size_t kMostPending = std::size_t{64} << 20;

// What these lines begin with; that of the name is any other.
constexpr std::string_view kImportFolder = "import folder: ", kSceneFolder = "scene folder: ";

std::string newStem(const std::string& folder) {
    std::random_device random;
    char name[24];
    std::snprintf(name, sizeof name, "%08x%08x", random(), random());
    return folder + "/" + name;
}

void removeFile(const std::string& path) {
    std::error_code ignored;
    std::filesystem::remove(base::pathFrom(path), ignored);
}

}  // namespace

// ---------------------------------------------------------------- places

std::optional<AsidePlace> AsidePlace::make(const std::string& folder) {
    std::error_code ignored;
    std::filesystem::create_directories(base::pathFrom(folder), ignored);
    std::string stem = newStem(folder);
    auto lock = base::FileLock::take(stem + ".lock");
    if (!lock) return std::nullopt;
    return AsidePlace(std::move(stem), std::move(*lock));
}

std::vector<AsidePlace> AsidePlace::left(const std::string& folder) {
    constexpr auto kLongAgo = std::chrono::hours(24);
    std::vector<AsidePlace> places;
    std::error_code error, ignored;
    const auto now = std::filesystem::file_time_type::clock::now();
    for (std::filesystem::directory_iterator entry(base::pathFrom(folder), error), end;
         !error && entry != end; entry.increment(error)) {
        // What a program was writing when it ended.
        if (entry->path().extension() == ".tmp" && now - entry->last_write_time(ignored) > kLongAgo)
            removeFile(base::textOf(entry->path()));
        if (entry->path().extension() != ".kiln") continue;
        std::string stem = base::textOf(std::filesystem::path(entry->path()).replace_extension());
        if (auto lock = base::FileLock::take(stem + ".lock"))
            places.push_back(AsidePlace(std::move(stem), std::move(*lock)));
    }
    // Its program may have removed a scene before the lock was had.
    std::erase_if(places, [](AsidePlace& place) {
        const bool gone = !place.hasScene();
        if (gone) place.remove();
        return gone;
    });
    std::ranges::sort(places, std::greater(), &AsidePlace::time);
    return places;
}

bool AsidePlace::hasScene() const {
    std::error_code ignored;
    return std::filesystem::exists(base::pathFrom(scene()), ignored);
}

std::chrono::system_clock::time_point AsidePlace::time() const {
    std::error_code error;
    const auto time = std::filesystem::last_write_time(base::pathFrom(scene()), error);
    if (error) return {};
    const auto ago = std::filesystem::file_time_type::clock::now() - time;
    return std::chrono::system_clock::now() -
           std::chrono::duration_cast<std::chrono::system_clock::duration>(ago);
}

AsideOrigin AsidePlace::origin() const {
    AsideOrigin origin;
    for (const std::string& line : readUserFile(stem_ + ".txt")) {
        if (line.starts_with(kImportFolder))
            origin.importFolder = line.substr(kImportFolder.size());
        else if (line.starts_with(kSceneFolder))
            origin.sceneFolder = line.substr(kSceneFolder.size());
        else
            origin.name = line;
    }
    return origin;
}

void AsidePlace::setOrigin(const AsideOrigin& origin) const {
    writeUserFile(stem_ + ".txt", {origin.name, std::string(kImportFolder) + origin.importFolder,
                                   std::string(kSceneFolder) + origin.sceneFolder});
}

void AsidePlace::clear() const {
    removeFile(scene());
    removeFile(stem_ + ".txt");
}

void AsidePlace::remove() {
    clear();
    // Some systems do not delete a file that is open.
    lock_.reset();
    removeFile(stem_ + ".lock");
}

// ---------------------------------------------------------------- saving

bool AutoSave::step(const Moment& moment, const std::string& name) {
    if (folder_.empty()) return false;
    noteWritten();
    if (!core_.isModified()) {
        discard();
        return false;
    }
    if (isCurrent() || failed_ == kiln::sceneChanges()) {
        unsavedSince_.reset();
        return false;
    }
    if (!unsavedSince_) unsavedSince_ = moment.now;
    const Time waited = moment.now - *unsavedSince_;
    if (moment.engaged) return false;
    if (waited >= kOverdue) {
        finish(name);
        return false;
    }
    if (moment.sinceInput < kPause && waited < kLatest) return false;
    if (!text_ && file_) return false;  // the disk is at work
    return writeSlice(name);
}

void AutoSave::begin(const std::string& name) {
    if (!place_) place_ = AsidePlace::make(folder_);
    if (!place_) return;
    auto text = std::make_unique<kiln::SceneText>();
    Interface& host = core_.hostInterface();
    place_->setOrigin({name, host.GetDir(KILN_IMPORT_DIR), host.GetDir(KILN_SCENE_DIR)});
    file_ = std::make_unique<BackgroundFile>(place_->scene());
    writing_ = text->changes();
    text_ = std::move(text);
}

// Whether there is more to do at once. Where there is no memory, or no thread, it waits for the
// next change: a text that a piece was lost of must not go on.
bool AutoSave::writeSlice(const std::string& name) try {
    if (!text_) begin(name);
    return text_ && writePieces();
} catch (const std::exception&) {
    text_.reset();
    file_.reset();
    failed_ = kiln::sceneChanges();
    return false;
}

bool AutoSave::writePieces() {
    using Clock = std::chrono::steady_clock;
    using Progress = kiln::SceneText::Progress;
    const auto end = Clock::now() + kSlice;
    std::string piece;
    Progress progress = Progress::kMore;
    while (progress == Progress::kMore && Clock::now() < end) {
        if (file_->state() == BackgroundFile::State::kFailed) {
            text_.reset();
            return false;
        }
        if (file_->pending() > kMostPending) break;
        while (progress == Progress::kMore && piece.size() < kPiece && Clock::now() < end)
            progress = text_->next(piece);
        file_->write(std::exchange(piece, {}));
    }
    if (progress == Progress::kMore) return true;
    text_.reset();
    if (progress == Progress::kOutdated) {
        file_.reset();
        if (writing_ == kiln::sceneChanges()) failed_ = writing_;  // it cannot be written at all
    } else {
        file_->end();
    }
    return false;
}

void AutoSave::noteWritten() {
    if (text_ || !file_ || file_->state() == BackgroundFile::State::kWriting) return;
    if (file_->state() == BackgroundFile::State::kWritten) {
        saved_ = writing_;
        // Changes since then have their own time.
        unsavedSince_.reset();
    } else {
        failed_ = writing_;
    }
    file_.reset();
}

void AutoSave::finish(const std::string& name) {
    if (folder_.empty() || !core_.isModified()) return;
    if (!text_ && file_) {
        file_->wait();
        noteWritten();
    }
    if (isCurrent()) return;
    if (!text_ || text_->changes() != kiln::sceneChanges()) {
        text_.reset();
        file_.reset();
    }
    while (writeSlice(name)) {
    }
    if (!file_) return;
    file_->wait();
    noteWritten();
}

void AutoSave::adopt(AsidePlace place) {
    discard();
    if (place_) place_->remove();
    place_ = std::move(place);
    saved_ = kiln::sceneChanges();
}

void AutoSave::discard() {
    text_.reset();
    file_.reset();
    unsavedSince_.reset();
    saved_.reset();
    if (std::optional<AsidePlace> place = std::exchange(place_, std::nullopt)) place->remove();
}

}  // namespace workbench
