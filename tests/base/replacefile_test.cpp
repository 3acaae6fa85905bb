#include <base/file.h>
#include <base/paths.h>
#include <base/replacefile.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <system_error>

#include "../support/temporaryfolder.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#endif

namespace {

namespace fs = std::filesystem;
using ::testing::StartsWith;

class ReplaceFileTest : public ::testing::Test {
protected:
    std::string contentOf(const std::string& path) const {
        std::string bytes;
        return base::readFile(path, bytes) ? "(unreadable)" : bytes;
    }

    std::string refusalOf(const std::string& path) const {
        try {
            base::replaceFile(path, "new");
        } catch (const std::system_error& error) {
            return error.what();
        }
        return "(replaced)";
    }

    const TemporaryFolder folder_;
    const std::string path_ = folder_.file("塔 1.kiln");
};

}  // namespace

TEST_F(ReplaceFileTest, LeavesTheOldOneUntilTheNewIsWhole) {
    base::replaceFile(path_, std::string("old\0\r\n", 6));
    EXPECT_EQ(contentOf(path_), std::string("old\0\r\n", 6));
    {
        base::FileReplacement given(path_);
        EXPECT_EQ(fs::path(base::pathFrom(given.name())).parent_path(), folder_.path());
        base::openFile(base::pathFrom(given.name()), true);
        EXPECT_EQ(contentOf(path_).size(), 6U);
    }
    EXPECT_EQ(folder_.fileCount(), 1U) << "one that did not take its place goes";
    base::replaceFile(path_, "");
    EXPECT_EQ(contentOf(path_), "");
    EXPECT_EQ(folder_.fileCount(), 1U);
}

// Whatever lies beside the file is the user's, also what looks like a program's own.
TEST_F(ReplaceFileTest, TouchesNothingElse) {
    for (const char* const name : {"塔 1.kiln.saving", "塔 1.kiln.tmp", "~.tmp"})
        base::replaceFile(folder_.file(name), name);
    base::FileReplacement first(path_), second(path_);
    EXPECT_NE(first.name(), second.name()) << "two programs may save at once";
    base::replaceFile(path_, "new");
    for (const char* const name : {"塔 1.kiln.saving", "塔 1.kiln.tmp", "~.tmp"})
        EXPECT_EQ(contentOf(folder_.file(name)), name);
}

TEST_F(ReplaceFileTest, RefusesWhatItMustNotReplace) {
    base::replaceFile(path_, "old");
    fs::permissions(base::pathFrom(path_), fs::perms::owner_read);
    EXPECT_THAT(refusalOf(path_), StartsWith("cannot write " + path_ + ": "));
    EXPECT_EQ(contentOf(path_), "old");
    // Protected while the new one was being written.
    fs::permissions(base::pathFrom(path_), fs::perms::owner_all);
    base::FileReplacement late(path_);
    fs::permissions(base::pathFrom(path_), fs::perms::owner_read);
    EXPECT_THROW(late.takePlace(), std::system_error);
    EXPECT_EQ(contentOf(path_), "old");
    fs::permissions(base::pathFrom(path_), fs::perms::owner_all);

    const std::string nowhere = folder_.file("none/scene.kiln");
    EXPECT_THAT(refusalOf(nowhere), StartsWith("cannot write " + nowhere + ": "));
    fs::create_directory(folder_.path() / "folder");
    const std::string noFile = folder_.file("folder");
    EXPECT_THAT(refusalOf(noFile), StartsWith("cannot write " + noFile + ": "));
    EXPECT_TRUE(fs::is_directory(folder_.path() / "folder"));
}

#ifdef _WIN32

TEST_F(ReplaceFileTest, KeepsTheAttributes) {
    base::replaceFile(path_, "old");
    const fs::path path = base::pathFrom(path_);
    ASSERT_TRUE(::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_HIDDEN));
    base::replaceFile(path_, "new");
    EXPECT_EQ(contentOf(path_), "new");
    EXPECT_TRUE(::GetFileAttributesW(path.c_str()) & FILE_ATTRIBUTE_HIDDEN);
}

// Another program has it open and lets nobody replace it.
TEST_F(ReplaceFileTest, LeavesAFileThatIsInUse) {
    base::replaceFile(path_, "old");
    const HANDLE user = ::CreateFileW(base::pathFrom(path_).c_str(), GENERIC_READ, FILE_SHARE_READ,
                                      nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(user, INVALID_HANDLE_VALUE);
    EXPECT_THAT(refusalOf(path_), StartsWith("cannot write " + path_ + ": "));
    ::CloseHandle(user);
    EXPECT_EQ(contentOf(path_), "old");
    EXPECT_EQ(folder_.fileCount(), 1U);
}

#else

TEST_F(ReplaceFileTest, TakesTheLongestNameThereIs) {
    const std::string path = folder_.file(std::string(255, 'x').c_str());
    base::replaceFile(path, "new");
    EXPECT_EQ(contentOf(path), "new");
}

TEST_F(ReplaceFileTest, KeepsThePermissions) {
    const auto modeOf = [](const std::string& path) {
        struct ::stat status {};
        return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
    };
    const mode_t before = ::umask(022);
    base::replaceFile(path_, "old");
    EXPECT_EQ(modeOf(path_), 0644U) << "what any new file has";
    for (const mode_t mode : {0600U, 0664U, 0750U}) {
        ASSERT_EQ(::chmod(path_.c_str(), mode), 0);
        base::FileReplacement given(path_);
        EXPECT_EQ(modeOf(given.name()) & 077, 0U) << "nobody else reads what is not finished";
        given.takePlace();
        EXPECT_EQ(modeOf(path_), mode);
    }
    ::umask(before);
}

TEST_F(ReplaceFileTest, FollowsLinks) {
    fs::create_directory(folder_.path() / "shared");
    const std::string real = folder_.file("shared/real.kiln");
    base::replaceFile(real, "old");
    const fs::path near = folder_.path() / "near", far = folder_.path() / "far",
                   open = folder_.path() / "open", round = folder_.path() / "round";
    fs::create_symlink(fs::path("shared") / "real.kiln", near);
    fs::create_symlink(near, far);
    fs::create_symlink("shared/made.kiln", open);
    fs::create_symlink("round", round);
    base::replaceFile(far.string(), "new");
    EXPECT_EQ(contentOf(real), "new");
    EXPECT_TRUE(fs::is_symlink(far) && fs::is_symlink(near));
    base::replaceFile(open.string(), "made");
    EXPECT_EQ(contentOf(folder_.file("shared/made.kiln")), "made");
    EXPECT_TRUE(fs::is_symlink(open));
    EXPECT_THAT(refusalOf(round.string()), StartsWith("cannot write "));
    fs::permissions(real, fs::perms::owner_read);
    EXPECT_THAT(refusalOf(far.string()), StartsWith("cannot write "));
}

TEST_F(ReplaceFileTest, RefusesDevices) {
    ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
    EXPECT_THAT(refusalOf(path_), StartsWith("cannot write " + path_ + ": "));
    EXPECT_TRUE(fs::is_fifo(path_));
}

// As on a full disk: some of the bytes can be written.
TEST_F(ReplaceFileTest, LeavesTheOldOneWhenThereIsNoRoom) {
    base::replaceFile(path_, "old");
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto signalBefore = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{4096, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    std::string reason;
    try {
        base::replaceFile(path_, std::string(100'000, 'x'));
    } catch (const std::system_error& error) {
        reason = error.what();
    }
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, signalBefore);
    EXPECT_THAT(reason, StartsWith("cannot write " + path_ + ": "));
    EXPECT_EQ(contentOf(path_), "old");
    EXPECT_EQ(folder_.fileCount(), 1U);
}

#endif
