// Tasks in processes of their own, whatever they do there.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <workers.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <set>

namespace {

using kilnbatch::Ended;
using kilnbatch::Workers;
using How = Ended::How;

constexpr std::uint64_t kMegabyte = 1 << 20;

/// Uses memory and keeps it.
std::string fill(std::size_t megabytes) {
    const auto bytes = std::make_unique<char[]>(megabytes * kMegabyte);
    std::memset(bytes.get(), 1, megabytes * kMegabyte);
    for (volatile bool forever = true; forever;) {
    }
    return std::string(1, bytes[7]);
}

std::string workOf(const Workers::Task& task) {
    if (task.name == "crash") {
        std::signal(SIGSEGV, SIG_DFL);  // or the sanitizer would tell all about it
        std::raise(SIGSEGV);
    }
    if (task.name == "leave") std::_Exit(7);
    if (task.name == "throw") throw std::runtime_error("on purpose");
    if (task.name == "hang")
        for (volatile bool forever = true; forever;) {
        }
    if (task.name == "swell") return fill(1500);
    if (task.name == "talk") return std::string(5 * kMegabyte, 'x');
    return "did " + task.name;
}

struct Outcome {
    std::map<std::string, Ended> ended;
    unsigned most = 0;  ///< places that were used
};

Outcome runAll(std::vector<std::string> names, unsigned count, kilnbatch::TaskLimits limits) {
    Outcome run;
    std::ranges::reverse(names);
    const auto next = [&](Workers::Task& task) {
        if (names.empty()) return false;
        task.name = names.back();
        names.pop_back();
        return true;
    };
    const auto report = [&](const Workers::Task& task, const Ended& ended) {
        run.ended[task.name] = ended;
        run.most = std::max(run.most, task.place + 1);
    };
    Workers(count, limits).run(next, workOf, report, [] { return false; });
    return run;
}

TEST(WorkersTest, WhateverATaskDoesTheOthersAreDone) {
    testing::internal::CaptureStderr();
    const Outcome run =
        runAll({"a", "crash", "b", "leave", "hang", "throw", "talk", "c"}, 3, {3.0, 0});
    testing::internal::GetCapturedStderr();
    ASSERT_EQ(run.ended.size(), 8u);
    EXPECT_EQ(run.most, 3u);
    for (const char* name : {"a", "b", "c"}) {
        EXPECT_EQ(run.ended.at(name).how, How::kAnswered);
        EXPECT_EQ(run.ended.at(name).answer, std::string("did ") + name);
    }
    EXPECT_EQ(run.ended.at("talk").answer.size(), 5 * kMegabyte);
    EXPECT_GT(run.ended.at("a").peakBytes, kMegabyte);
    for (const char* name : {"crash", "leave", "throw"})
        EXPECT_EQ(run.ended.at(name).how, How::kCrashed) << name;
    EXPECT_THAT(run.ended.at("crash").reason, testing::HasSubstr("signal 11"));
    EXPECT_EQ(run.ended.at("leave").reason, "exit status 7");
    EXPECT_EQ(run.ended.at("hang").how, How::kTookTime);
    EXPECT_GE(run.ended.at("hang").seconds, 3.0);
}

TEST(WorkersTest, EndsWhatTakesTooMuchMemory) {
    const Outcome run = runAll({"a", "swell", "b"}, 2, {0, 600 * kMegabyte});
    ASSERT_EQ(run.ended.size(), 3u);
    EXPECT_EQ(run.ended.at("swell").how, How::kTookMemory);
    EXPECT_EQ(run.ended.at("b").how, How::kAnswered);
}

TEST(WorkersTest, AStopBeginsNothingMoreAndEndsWhatRuns) {
    int given = 0;
    std::set<std::string> ended;
    const auto next = [&](Workers::Task& task) {
        task.name = given == 0 ? "hang" : "a";
        return ++given <= 100;
    };
    std::signal(SIGINT, SIG_DFL);
    const auto report = [&](const Workers::Task& task, const Ended& how) {
        ended.insert(task.name);
        if (task.name == "hang") {
            EXPECT_EQ(how.how, How::kCrashed);
            EXPECT_THAT(how.reason, testing::HasSubstr("signal 2"));
        }
    };
    Workers(2, {}).run(next, workOf, report, [&] { return given > 10; });
    EXPECT_EQ(ended, (std::set<std::string>{"a", "hang"}));
    EXPECT_LT(given, 20);
}

}  // namespace
