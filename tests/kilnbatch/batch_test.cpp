// Whole batches: what is done, left alone, reported and survived.
#include <airport.h>
#include <base/file.h>
#include <base/paths.h>
#include <commands.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kiln/fptable.h>
#include <sys/wait.h>
#include <unistd.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <csignal>
#include <map>
#include <thread>

#include "../support/temporaryfolder.h"

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;
using testing::HasSubstr;

void crash(const FPParams&, FPValue&) {
    std::signal(SIGABRT, SIG_DFL);
    std::abort();
}
constexpr FPTableRow kRows[] = {{0, "crash", TYPE_VOID, crash}};
FPTableInterface theTrouble(Interface_ID(0x10A7, 0x20B8), "Trouble", FP_CORE, kRows);

class BatchTest : public testing::Test {
protected:
    BatchTest() { fs::create_directory(folder_.path() / "in"); }

    void model(const std::string& name) const {
        const fs::path path = folder_.path() / "in" / name;
        fs::create_directories(path.parent_path());
        ASSERT_TRUE(samples::writeScene(samples::makeAirport(), base::textOf(path)));
    }
    std::string file(const std::string& name, const std::string& text) const {
        const fs::path path = folder_.path() / name;
        fs::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << text;
        return base::textOf(path);
    }
    std::string textOf(const std::string& name) const {
        std::string bytes;
        if (base::readFile(folder_.file(name.c_str()), bytes)) return "(no file)";
        return bytes;
    }
    /// The lines of the report by file, and the exit status under "".
    std::map<std::string, Json> run(std::vector<std::string> more = {}, const char* out = "out") {
        std::vector<std::string> words{folder_.file("in"), folder_.file(out), "--report",
                                       folder_.file("report.jsonl")};
        words.insert(words.end(), more.begin(), more.end());
        testing::internal::CaptureStdout();
        const int status = kilnbatch::runBatchCommand(words);
        printed_ = testing::internal::GetCapturedStdout();
        std::map<std::string, Json> lines{{"", status}};
        std::ifstream report(folder_.path() / "report.jsonl");
        for (std::string line; std::getline(report, line);) {
            const Json json = Json::parse(line);
            lines[json["file"]] = json;
        }
        return lines;
    }
    static std::map<std::string, std::string> resultsOf(const std::map<std::string, Json>& lines) {
        std::map<std::string, std::string> results;
        for (const auto& [name, line] : lines)
            if (!name.empty()) results[name] = line["result"];
        return results;
    }
    /// Relative paths and contents of the results, without what the batch keeps for itself.
    std::map<std::string, std::string> contentsOf(const char* out) const {
        std::map<std::string, std::string> contents;
        const fs::path root = folder_.path() / out;
        for (const auto& entry : fs::recursive_directory_iterator(root)) {
            const std::string name = base::genericTextOf(entry.path().lexically_relative(root));
            if (entry.is_regular_file() && !name.starts_with(".kilnbatch/"))
                contents[name] = textOf(out + ("/" + name));
        }
        return contents;
    }

    const TemporaryFolder folder_;
    std::string printed_;
};

using Results = std::map<std::string, std::string>;

TEST_F(BatchTest, MakesTheSameTreeWhateverTheNumberOfJobs) {
    for (const char* name : {"a.flt", "t 1/b.flt", "t 1/塔.flt", "t 2/d.flt"}) model(name);
    const std::string script =
        file("edit.ks", "Aviary.CreateGroup()\ncreateBox name:arguments[1]\nprint arguments[1]");
    const auto lines = run({"--script", script, "--revision", "1570", "--jobs", "1"}, "one");
    EXPECT_EQ(lines.at(""), 0);
    EXPECT_EQ(lines.size(), 5u);
    const Json& line = lines.at("t 1/塔.flt");
    EXPECT_EQ(line["result"], "done");
    EXPECT_THAT(line["output"].dump(), HasSubstr("\"t 1/塔.flt\""));
    EXPECT_GT(line["nodes"], 100);
    EXPECT_GT(line["seconds"], 0);
    EXPECT_GT(line["peakBytes"], 1 << 20);
    EXPECT_THAT(printed_, HasSubstr("4 files: 4 done, 0 unchanged, 0 failed"));
    EXPECT_EQ(run({"--script", script, "--revision", "1570", "--jobs", "3"}, "three").at(""), 0);
    const auto one = contentsOf("one");
    EXPECT_EQ(one.size(), 4u);
    EXPECT_EQ(one, contentsOf("three"));
    // What a file becomes depends on nothing that was done before it.
    const std::string line1 =
        std::string(KILNBATCH) + " --import '" + folder_.file("in/t 2/d.flt") + "' --export '" +
        folder_.file("single.flt") + "' --revision 1570 '" + script + "' 't 2/d.flt' >/dev/null";
    ASSERT_EQ(std::system(line1.c_str()), 0);
    EXPECT_EQ(textOf("single.flt"), one.at("t 2/d.flt"));
}

TEST_F(BatchTest, LeavesAloneWhatIsUpToDate) {
    for (const char* name : {"a.flt", "b.flt", "c.flt"}) model(name);
    const std::string script = file("edit.ks", "runScript \"" + file("more.ks", "1") + "\"");
    const std::vector<std::string> words{"--script", script, "--check", "general"};
    const auto first = run(words);
    EXPECT_EQ(first.at(""), 1);  // an airliner is missing
    EXPECT_EQ(first.at("a.flt")["errors"], 1);
    const Results unchanged{{"a.flt", "unchanged"}, {"b.flt", "unchanged"}, {"c.flt", "unchanged"}};
    Results done = unchanged;
    for (auto& [name, result] : done) result = "done";
    const auto was = fs::last_write_time(folder_.path() / "out/a.flt");
    fs::last_write_time(folder_.path() / "in/a.flt", was);  // touched, and not changed
    auto second = run(words);
    EXPECT_EQ(resultsOf(second), unchanged);
    EXPECT_EQ(second.at(""), 1);
    EXPECT_EQ(second.at("a.flt")["findings"], first.at("a.flt")["findings"]);
    EXPECT_EQ(fs::last_write_time(folder_.path() / "out/a.flt"), was);

    // One changed input, one result that somebody else wrote, one that is gone.
    fs::copy_file(folder_.path() / "in/b.flt", folder_.path() / "was.flt");
    auto scene = samples::makeAirport();
    scene.comment = "another one";
    ASSERT_TRUE(samples::writeScene(scene, folder_.file("in/b.flt")));
    EXPECT_EQ(resultsOf(run(words)),
              (Results{{"a.flt", "unchanged"}, {"b.flt", "done"}, {"c.flt", "unchanged"}}));
    file("out/a.flt", "something else");
    fs::remove(folder_.path() / "out/c.flt");
    EXPECT_EQ(resultsOf(run(words)),
              (Results{{"a.flt", "done"}, {"b.flt", "unchanged"}, {"c.flt", "done"}}));

    // What was read, or looked for and not found, decides too.
    model("aircraft/airliner.flt");
    auto third = run(words);
    EXPECT_EQ(third.at("a.flt")["result"], "done");
    EXPECT_EQ(third.at("a.flt")["errors"], 0);
    EXPECT_EQ(run(words).at(""), 1);  // that one lacks its own
    fs::remove_all(folder_.path() / "in/aircraft");
    EXPECT_EQ(resultsOf(run(words)), done);
    file("more.ks", "2");
    EXPECT_EQ(resultsOf(run(words)), done);
    EXPECT_EQ(resultsOf(run(words)), unchanged);
    auto other = words;
    other.insert(other.end(), {"--revision", "1570"});
    EXPECT_EQ(resultsOf(run(other)), done);
    file("edit.ks", "3");
    EXPECT_EQ(resultsOf(run(other)), done);
    EXPECT_EQ(resultsOf(run({})), done);
}

TEST_F(BatchTest, ChecksWithoutResults) {
    model("a.flt");
    const std::vector<std::string> words{"--check", "general", "--no-export"};
    const auto first = run(words);
    EXPECT_EQ(first.at("a.flt")["errors"], 1);
    EXPECT_TRUE(contentsOf("out").empty());
    // What is referred to is named whether it is there or not.
    const Json reads = first.at("a.flt")["reads"];
    EXPECT_THAT(reads.get<std::vector<std::string>>(),
                testing::IsSupersetOf({"a.flt", "aircraft/airliner.flt"}));
    const auto second = run(words);
    EXPECT_EQ(second.at("a.flt")["result"], "unchanged");
    EXPECT_EQ(second.at("a.flt")["reads"], reads);
    EXPECT_EQ(run({"--check", "general"}).at("a.flt")["result"], "done");
    EXPECT_EQ(contentsOf("out").size(), 1u);
}

TEST_F(BatchTest, ChecksSourcesBeforeTheScript) {
    for (const char* name : {"a.flt", "b.flt"}) model(name);
    // The reference to a file that is missing goes.
    const std::string script =
        file("mend.ks",
             "if arguments[1] == \"b.flt\" then 1 / \"x\"\n"
             "delete (for o in objects where o.kind == \"EXTERNAL_REF\" collect o)");
    const auto lines = run({"--script", script, "--check", "general", "--check-source"});
    const Json& mended = lines.at("a.flt");
    EXPECT_EQ(mended["source"]["errors"], 1);
    EXPECT_EQ(mended["source"]["findings"].size(), mended["findings"].size() + 1);
    EXPECT_EQ(mended["errors"], 0);
    EXPECT_GT(mended["source"]["nodes"], mended["nodes"]);
    EXPECT_EQ(lines.at("b.flt")["result"], "failed");
    EXPECT_EQ(lines.at("b.flt")["source"]["errors"], 1);
    EXPECT_FALSE(lines.at("b.flt").contains("errors"));
    // It is another result.
    EXPECT_EQ(run({"--script", script, "--check", "general"}).at("a.flt")["result"], "done");
}

TEST_F(BatchTest, LosesOneFileToWhateverAScriptDoes) {
    for (const char* name : {"a.flt", "crash.flt", "error.flt", "grow.flt", "z.flt"}) model(name);
    file("in/damaged.flt", textOf("in/a.flt").substr(0, 5000));
    file("out/crash.flt", "of an earlier run");
    const std::string script = file("trouble.ks",
                                    "n = arguments[1]\n"
                                    "if n == \"crash.flt\" then Trouble.crash()\n"
                                    "if n == \"error.flt\" then print (1 / \"x\")\n"
                                    "if n == \"hang.flt\" then while true do 1\n"
                                    "if n == \"grow.flt\" then (\n"
                                    "    all = #()\n"
                                    "    t = \"0123456789\"\n"
                                    "    for i = 1 to 20 do t = t + t\n"
                                    "    for i = 1 to 4000 do append all (t + (i as string))\n"
                                    ")\n");
    const auto lines = run({"--script", script, "--memory-limit", "600"});
    EXPECT_EQ(lines.at(""), 1);
    const Results results{{"a.flt", "done"},         {"crash.flt", "failed"},
                          {"damaged.flt", "failed"}, {"error.flt", "failed"},
                          {"grow.flt", "failed"},    {"z.flt", "done"}};
    EXPECT_EQ(resultsOf(lines), results);
    EXPECT_EQ(lines.at("crash.flt")["cause"], "crash");
    EXPECT_EQ(lines.at("damaged.flt")["cause"], "error");
    EXPECT_THAT(lines.at("damaged.flt")["reason"].get<std::string>(), HasSubstr("damaged at byte"));
    EXPECT_THAT(lines.at("error.flt")["reason"].get<std::string>(), HasSubstr("trouble.ks:3:"));
    EXPECT_EQ(lines.at("grow.flt")["cause"], "memory");
    fs::rename(folder_.path() / "in/grow.flt", folder_.path() / "in/hang.flt");
    const auto hung = run({"--script", script, "--time-limit", "5"});
    EXPECT_EQ(hung.at("hang.flt")["cause"], "time");
    EXPECT_EQ(hung.at("a.flt")["result"], "unchanged");
    EXPECT_EQ(textOf("out/crash.flt"), "of an earlier run");
    EXPECT_FALSE(fs::exists(folder_.path() / "out/hang.flt"));
    // Nothing half-made is left.
    EXPECT_EQ(contentsOf("out").size(), 3u);
    for (const auto& entry : fs::directory_iterator(folder_.path() / "out/.kilnbatch"))
        EXPECT_EQ(entry.path().filename(), "stamps");
}

TEST_F(BatchTest, RefusesWhatCannotBeBegun) {
    model("a.flt");
    const auto refusal = [&](const std::vector<std::string>& words) {
        testing::internal::CaptureStderr();
        testing::internal::CaptureStdout();
        const int status = kilnbatch::runBatchCommand(words);
        testing::internal::GetCapturedStdout();
        EXPECT_NE(status, 0);
        return testing::internal::GetCapturedStderr();
    };
    const std::string in = folder_.file("in"), out = folder_.file("out");
    EXPECT_THAT(refusal({in, in}), HasSubstr("same folder"));
    EXPECT_THAT(refusal({folder_.file("none"), out}), HasSubstr("cannot read"));
    EXPECT_THAT(refusal({in, out, "--script", in + "/none.ks"}), HasSubstr("none.ks"));
    EXPECT_THAT(refusal({in, out, "--report", in + "/none/r"}), HasSubstr("cannot write"));
    EXPECT_THAT(refusal({in, out, "--jobs", "0"}), HasSubstr("--jobs"));
    EXPECT_THAT(refusal({in}), HasSubstr("OUT"));
    EXPECT_FALSE(fs::exists(folder_.path() / "out/a.flt"));
}

TEST_F(BatchTest, GoesOnWhereItWasInterrupted) {
    for (const char* name : {"a.flt", "b.flt", "c.flt", "d.flt"}) model(name);
    const std::string go = folder_.file("go");
    const std::string script =
        file("wait.ks", "if arguments[1] == \"c.flt\" then while (getFiles \"" + go +
                            "\").count == 0 do 1\nAviary.CreateGroup()");
    const std::string report = folder_.file("r.jsonl");
    const pid_t process = ::fork();
    if (process == 0) {
        ::dup2(::open("/dev/null", O_WRONLY), STDOUT_FILENO);
        const std::string in = folder_.file("in"), out = folder_.file("out");
        ::execl(KILNBATCH, KILNBATCH, "batch", in.c_str(), out.c_str(), "--script", script.c_str(),
                "--jobs", "1", "--report", report.c_str(), nullptr);
        ::_exit(99);
    }
    for (int i = 0; i < 600 && std::ranges::count(textOf("r.jsonl"), '\n') < 2; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    ::kill(process, SIGINT);
    int status = 0;
    ::waitpid(process, &status, 0);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 130);
    EXPECT_EQ(std::ranges::count(textOf("r.jsonl"), '\n'), 2);
    EXPECT_EQ(contentsOf("out").size(), 2u);

    // A run that was killed leaves its scratch folder, which the next one removes.
    file("out/.kilnbatch/run-0123/lock", "");
    file("out/.kilnbatch/run-0123/0/c.flt", "half of it");
    file("go", "");
    EXPECT_EQ(
        resultsOf(run({"--script", script})),
        (Results{
            {"a.flt", "unchanged"}, {"b.flt", "unchanged"}, {"c.flt", "done"}, {"d.flt", "done"}}));
    EXPECT_FALSE(fs::exists(folder_.path() / "out/.kilnbatch/run-0123"));
    run({"--script", script}, "whole");
    EXPECT_EQ(contentsOf("out"), contentsOf("whole"));
}

}  // namespace
