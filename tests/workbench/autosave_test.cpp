#include <base/paths.h>
#include <kiln/host/host.h>

#include <workbench/autosave.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <random>
#include <sstream>
#include <thread>

#include "../support/temporaryfolder.h"

#ifndef _WIN32
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace {

using namespace std::chrono_literals;
using workbench::AsidePlace;
using workbench::AutoSave;

std::string contentOf(const std::string& path) {
    std::ifstream file(base::pathFrom(path), std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

class AutoSaveTest : public ::testing::Test {
protected:
    void SetUp() override { core_.newScene(); }
    ~AutoSaveTest() override { kiln::Core::destroy(); }

    void change() { host_.CreateObjectNode(nullptr, "node"); }
    void fill(int count) {
        for (int i = 0; i < count; ++i) change();
    }
    /// Steps as often as it wants to be called, a few times more, and until the disk has what it
    /// has begun.
    void steps(AutoSave& save, AutoSave::Time now, AutoSave::Time sinceInput, bool engaged) {
        const auto end = std::chrono::steady_clock::now() + 60s;
        for (int i = 0; i < 5 || (save.isWriting() && std::chrono::steady_clock::now() < end);
             ++i) {
            while (save.step({now, sinceInput, engaged}, "scene")) {
            }
            std::this_thread::sleep_for(1ms);
        }
    }
    int scenes() const {
        int count = 0;
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path()))
            count += entry.path().extension() == ".kiln" ? 1 : 0;
        return count;
    }
    std::string onlyScene() const {
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path()))
            if (entry.path().extension() == ".kiln") return contentOf(base::textOf(entry.path()));
        return {};
    }

    const TemporaryFolder folder_;
    const std::string path_ = base::textOf(folder_.path());
    kiln::Core& core_ = kiln::Core::create();
    Interface& host_ = core_.hostInterface();
    AutoSave::Time now_{1'000'000};
};

TEST_F(AutoSaveTest, SavesWhenTheUserPauses) {
    AutoSave save(core_, path_);
    steps(save, now_, 10s, false);
    EXPECT_EQ(scenes(), 0) << "there is nothing unsaved";
    change();
    steps(save, now_, 10ms, false);
    steps(save, now_, 10s, true);
    EXPECT_EQ(scenes(), 0) << "while the user is at work";
    steps(save, now_, AutoSave::kPause, false);
    ASSERT_EQ(scenes(), 1);
    EXPECT_EQ(onlyScene(), core_.sceneText());
    EXPECT_TRUE(core_.isModified()) << "it is no saving by the user";

    // Again only after another change, and one place is enough.
    const std::string former = onlyScene();
    change();
    EXPECT_EQ(onlyScene(), former);
    steps(save, now_, AutoSave::kPause, false);
    EXPECT_EQ(onlyScene(), core_.sceneText());
    EXPECT_EQ(scenes(), 1);

    core_.setModified(false);
    steps(save, now_, 0ms, false);
    EXPECT_EQ(scenes(), 0) << "the user has saved it";
    EXPECT_TRUE(std::filesystem::is_empty(folder_.path()));
}

TEST_F(AutoSaveTest, SavesInTimeThoughTheUserNeverPauses) {
    AutoSave save(core_, path_);
    AutoSave::Time now = now_;
    for (; now < now_ + AutoSave::kLatest; now += 1s) {
        change();
        save.step({now, 10ms, false}, "scene");
    }
    EXPECT_EQ(scenes(), 0);
    // Changes between the slices of every try: at last it is done in one go.
    fill(30'000);
    for (; now < now_ + AutoSave::kOverdue; now += 1s) {
        change();
        save.step({now, 10ms, false}, "scene");
    }
    change();
    save.step({now, 10ms, false}, "scene");
    ASSERT_EQ(scenes(), 1);
    EXPECT_EQ(onlyScene(), core_.sceneText());
    EXPECT_LE(now, now_ + 120s);
}

TEST_F(AutoSaveTest, SlicesAreOneScene) {
    AutoSave save(core_, path_);
    fill(200'000);
    int slices = 0;
    while (save.step({now_, AutoSave::kPause, false}, "scene") && ++slices < 2) {
    }
    ASSERT_EQ(slices, 2) << "it takes more than one";
    INode* const first = host_.GetRootNode()->GetChildNode(0);
    host_.DeleteNode(first);
    host_.GetRootNode()->GetChildNode(40'000)->SetName("changed");
    steps(save, now_, AutoSave::kPause, false);
    ASSERT_EQ(scenes(), 1);
    EXPECT_EQ(onlyScene(), core_.sceneText());
    // Another scene in place of this one is a change too.
    change();
    static_cast<void>(save.step({now_, AutoSave::kPause, false}, "scene"));
    const std::string other = core_.sceneText();
    core_.newScene();
    ASSERT_TRUE(core_.loadSceneText(other, "other"));
    core_.setModified(true);
    steps(save, now_, AutoSave::kPause, false);
    EXPECT_EQ(onlyScene(), core_.sceneText());
}

TEST_F(AutoSaveTest, OffersWhatAProgramLeftAndNothingElse) {
    const std::string imports = base::textOf(folder_.path() / u8"导入"), sceneFolder = path_;
    core_.setDirectory(KILN_IMPORT_DIR, imports);
    core_.setDirectory(KILN_SCENE_DIR, sceneFolder);
    std::string text;
    {
        AutoSave save(core_, path_);
        change();
        steps(save, now_, AutoSave::kPause, false);
        EXPECT_TRUE(AsidePlace::left(path_).empty()) << "its program is running";
        text = core_.sceneText();
    }  // as after a crash
    std::vector<AsidePlace> left = AsidePlace::left(path_);
    ASSERT_EQ(left.size(), 1u);
    EXPECT_EQ(left[0].origin().name, "scene");
    EXPECT_EQ(left[0].origin().importFolder, imports);
    EXPECT_EQ(left[0].origin().sceneFolder, sceneFolder);
    EXPECT_EQ(contentOf(left[0].scene()), text);
    const auto age = std::chrono::system_clock::now() - left[0].time();
    EXPECT_GE(age, -2s);
    EXPECT_LT(age, 60s);
    EXPECT_TRUE(AsidePlace::left(path_).empty()) << "who asks has it";
    left.clear();

    // Kept until the user has decided.
    left = AsidePlace::left(path_);
    ASSERT_EQ(left.size(), 1u);
    AutoSave save(core_, path_);
    ASSERT_TRUE(core_.loadScene(left[0].scene()));
    core_.setModified(true);
    save.adopt(std::move(left[0]));
    steps(save, now_, AutoSave::kPause, false);
    EXPECT_EQ(scenes(), 1);
    change();
    steps(save, now_, AutoSave::kPause, false);
    EXPECT_EQ(scenes(), 1) << "the same place";
    EXPECT_EQ(onlyScene(), core_.sceneText());
    save.discard();
    EXPECT_TRUE(std::filesystem::is_empty(folder_.path()));
}

TEST_F(AutoSaveTest, FinishesAtOnceWhenTheSessionEnds) {
    fill(20'000);
    AutoSave save(core_, path_);
    static_cast<void>(save.step({now_, AutoSave::kPause, false}, "scene"));
    save.finish("scene");
    EXPECT_EQ(onlyScene(), core_.sceneText());
    change();
    save.finish("scene");
    EXPECT_EQ(onlyScene(), core_.sceneText());
}

TEST_F(AutoSaveTest, AFolderThatCannotBeWrittenHurtsNobody) {
    const std::string file = folder_.file("file");
    std::ofstream(base::pathFrom(file)) << "x";
    AutoSave save(core_, file);
    change();
    steps(save, now_, AutoSave::kPause, false);
    save.finish("scene");
    EXPECT_EQ(scenes(), 0);
}

TEST_F(AutoSaveTest, ADiskThatTakesNothingEndsIt) {
    AutoSave save(core_, path_);
    change();
    save.finish("scene");
    ASSERT_EQ(scenes(), 1);
    for (const auto& entry : std::filesystem::directory_iterator(folder_.path())) {
        if (entry.path().extension() != ".kiln") continue;
        const std::filesystem::path scene = entry.path();
        std::filesystem::remove(scene);
        std::filesystem::create_directory(scene);
        break;
    }
    // More than is kept for a slow disk, and something behind it.
    constexpr DWORD kBytes = 52 << 20;
    host_.GetRootNode()->GetChildNode(0)->AddAppDataChunk({1, 1}, 1, 1, kBytes,
                                                          KILN_malloc(kBytes));
    change();
    save.finish("scene");
    EXPECT_FALSE(save.step({now_, AutoSave::kPause, false}, "scene")) << "until the next change";
}

#ifndef _WIN32

// A program that changes every node of its scene, saves aside without end, and is killed.
[[noreturn]] void changeAndSaveAside(kiln::Core& core, const std::string& folder, int tell) {
    AutoSave save(core, folder);
    Interface& host = core.hostInterface();
    for (COLORREF generation = 1;; ++generation) {
        for (int i = 0; i < host.GetRootNode()->NumberOfChildren(); ++i)
            host.GetRootNode()->GetChildNode(i)->SetWireColor(generation);
        // Now it is saved aside whole, now the next change comes in between.
        for (unsigned i = 0; i < generation % 3 * 4; ++i)
            static_cast<void>(
                save.step({AutoSave::Time(generation), AutoSave::kPause, false}, "s"));
        if (generation % 3 == 2) {
            save.finish("s");
            if (write(tell, &generation, sizeof generation) != sizeof generation) _exit(1);
        }
    }
}

TEST_F(AutoSaveTest, KilledAtAnyMomentLeavesOneWholeScene) {
    fill(3'000);
    std::minstd_rand random(17);
    int found = 0;
    for (int round = 0; round < 25; ++round) {
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) changeAndSaveAside(core_, path_, ends[1]);
        close(ends[1]);
        usleep(static_cast<useconds_t>(1'000 * (20 + random() % 300)));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        COLORREF told = 0, last = 0;
        while (read(ends[0], &last, sizeof last) == sizeof last) told = last;
        close(ends[0]);

        std::vector<AsidePlace> left = AsidePlace::left(path_);
        ASSERT_LE(left.size(), 1u);
        EXPECT_TRUE(told == 0 || left.size() == 1) << "what was saved is there";
        for (AsidePlace& place : left) {
            ++found;
            ASSERT_TRUE(core_.loadScene(place.scene()));
            INode* const root = core_.hostInterface().GetRootNode();
            ASSERT_EQ(root->NumberOfChildren(), 3'000);
            const COLORREF generation = root->GetChildNode(0)->GetWireColor();
            EXPECT_GE(generation, told);
            for (int i = 0; i < root->NumberOfChildren(); ++i)
                ASSERT_EQ(root->GetChildNode(i)->GetWireColor(), generation);
            place.remove();
        }
    }
    EXPECT_GT(found, 5);
}

#endif

}  // namespace
