#include "../support/ownlog.h"

#include <diagnostics/log.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace {

using diagnostics::AviaryAssertion;
using diagnostics::guarded;
using diagnostics::log;

class LogTest : public testing::Test {
protected:
    std::string content() const { return log_.content(); }

    const OwnLog log_;
};

TEST_F(LogTest, AppendsEveryFailureAsOneLineAndKeepsWhatWasThere) {
    EXPECT_EQ(log("earlier %d\n", 7), 10);
    EXPECT_FALSE(
        guarded("avfltpanel", 523, false, []() -> bool { throw AviaryAssertion("fltgroup", 61); }));
    EXPECT_EQ(guarded("avfltpanel", 483, -1, []() -> int { throw std::runtime_error("no"); }), -1);
    EXPECT_EQ(guarded("avfltpanel", 483, -1, []() -> int { throw 5; }), -1);
    EXPECT_EQ(guarded("avfltpanel", 483, -1, [] { return 12; }), 12);
    EXPECT_EQ(content(),
              "earlier 7\n"
              "Assertion failed in fltgroup at 61\n"
              "Exception in avfltpanel at 483\n"
              "Exception in avfltpanel at 483\n");
}

TEST_F(LogTest, LosesTheLineSilentlyWhereNothingCanBeWritten) {
    OwnLog::setDrive((log_.folder() / "missing" / "deeper").string());
    EXPECT_EQ(log("lost\n"), 0);
    OwnLog::setDrive(log_.folder().string());
    std::filesystem::create_directory(log_.path());
    EXPECT_EQ(log("lost\n"), 0) << "something else has its name";
    EXPECT_EQ(guarded("avfltpanel", 523, -1, []() -> int { throw 5; }), -1);
}

TEST_F(LogTest, GoesToTheRootOfTheCurrentDriveWithoutASystemDrive) {
    const std::filesystem::path before = std::filesystem::current_path();
#ifdef _WIN32
    const std::filesystem::path root = "C:\\";
    std::filesystem::current_path(root / "windows");
#else
    const std::filesystem::path root = log_.folder();
    std::filesystem::current_path(root);  // a backslash is part of a name here
#endif
    OwnLog::setDrive({});
    EXPECT_EQ(log("driveless\n"), 10);
    std::ifstream file(root.string() + (root.has_root_name() ? "Aviary.log" : "/\\Aviary.log"));
    const std::string written{std::istreambuf_iterator<char>(file), {}};
    EXPECT_TRUE(written.ends_with("driveless\n")) << written;
    std::filesystem::current_path(before);
}

/// What the readers of node data do with a record that they refuse.
bool refuse(int line) {
    try {
        throw AviaryAssertion("fltgroup", line);
    } catch (...) {
        diagnostics::noteCurrentException();
        return false;
    }
}

TEST_F(LogTest, AnEntryPointThatGoesOnPastFailuresLogsTheFirst) {
    EXPECT_FALSE(refuse(60)) << "no entry point, no line";
    int steps = 0;
    EXPECT_EQ(guarded("avfltpanel", 483, -1,
                      [&] {
                          for (const int line : {61, 62}) {
                              refuse(line);
                              ++steps;
                          }
                          return 12;
                      }),
              -1);
    EXPECT_EQ(steps, 2);
    EXPECT_EQ(guarded("avfltpanel", 483, -1, [] { return 12; }), 12) << "forgotten afterwards";
    EXPECT_EQ(guarded("avfltpanel", 483, -1,
                      []() -> int {
                          refuse(63);
                          throw 5;
                      }),
              -1);
    EXPECT_EQ(content(),
              "Assertion failed in fltgroup at 61\n"
              "Exception in avfltpanel at 483\n");
}

TEST_F(LogTest, NestedEntryPointsLogAFailureOnceAtTheOutermost) {
    int inner = 0;
    EXPECT_FALSE(guarded("avfltpanel", 523, false, [&] {
        inner = guarded("avfltpanel", 483, -1, [] { return refuse(61) ? 1 : 2; });
        refuse(62);
        return true;
    })) << "its plain failure, whatever the body answers";
    EXPECT_EQ(inner, -1);
    EXPECT_EQ(content(), "Assertion failed in fltgroup at 61\n");
}

TEST_F(LogTest, AStepThatLogsItselfKeepsItsOwnLine) {
    const auto failing = []() -> bool {
        try {
            throw 5;
        } catch (...) {
            diagnostics::noteCurrentException();
            return false;
        }
    };
    EXPECT_TRUE(guarded("avfltpanel", 523, false, [&] {
        EXPECT_FALSE(guarded("avfltpanel", 717, false, failing, true));
        return true;
    })) << "it is dealt with";
    EXPECT_EQ(content(), "Exception in avfltpanel at 717\n");
}

TEST(AviaryAssertionTest, BoundsTheSourceName) {
    const AviaryAssertion assertion(std::string(1000, 'x').c_str(), 3);
    EXPECT_EQ(assertion.file, std::string(255, 'x'));
    EXPECT_EQ(assertion.line, 3);
}

}  // namespace
