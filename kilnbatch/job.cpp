#include "job.h"

#include <kiln/host/host.h>
#include <kiln/host/largesteps.h>
#include <kiln/host/searchfolders.h>
#include <kiln/language.h>
#include <render/pictureverb.h>
#include <script/engine.h>

#include <csignal>

namespace kilnbatch {

namespace {

constexpr std::size_t kStackForScripts = 3u << 20;

volatile std::sig_atomic_t interrupted = 0;

/// Whether an import or export is to go on.
bool goOn(double, const char*) {
    return !wasInterrupted();
}

std::string failureOf(const kiln::ImportResult& result, const std::string& path) {
    if (!result.message.empty()) return result.message;
    return path + (result.code == IMPEXP_CANCEL ? ": cancelled" : ": failed");
}

/// Opens the scene and imports the file; returns what failed, or nothing.
std::string openFiles(kiln::Core& core, const Job& job) {
    if (!job.scene.empty())
        if (const kiln::ImportResult opened = core.loadScene(job.scene); !opened)
            return failureOf(opened, job.scene);
    if (job.importPath.empty()) return {};
    const kiln::ImportResult result = core.importFile(job.importPath, goOn);
    if (!result.ok()) return failureOf(result, job.importPath);
    job.output(result.message);
    return {};
}

std::string writeFile(kiln::Core& core, const Job& job) {
    if (job.exportPath.empty()) return {};
    const DWORD version = static_cast<DWORD>(job.revision) << SCENE_EXPORT_VERSION_SHIFT;
    const kiln::ImportResult result =
        core.exportFile(job.exportPath, {version, nullptr, job.database}, goOn);
    if (!result.ok()) return failureOf(result, job.exportPath);
    job.output(result.message);
    return {};
}

/// A call of the published interface that checks scenes.
FPValue callCheck(const char* function, const std::vector<kiln::ScriptArgument>& arguments = {}) {
    FPInterfaceDesc* const check = kiln::findInterface("FltCheck");
    if (check == nullptr) throw script::Failure("no plug-in checks scenes");
    FPValue result;
    const kiln::Status status = kiln::callFunction(*check, function, arguments, result);
    if (!status) throw script::Failure(status.message());
    return result;
}

/// Throws `script::Failure`.
Findings checkScene(const Job& job) {
    const auto text = [](const char* value) {
        return std::vector<kiln::ScriptArgument>{{"", FPValue::StringCopy(value)}};
    };
    Findings findings;
    const int count = callCheck("run", text(job.checkTarget.c_str())).i;
    for (int i = 1; i <= count; ++i) {
        const auto at = [i](const char* function) {
            return callCheck(function, {{"", FPValue::Int(i)}});
        };
        INode* const node = at("node").n;
        findings.list.push_back({at("severity").s, at("code").s,
                                 node != nullptr ? node->GetName() : "scene", at("text").s});
    }
    findings.errors = callCheck("total", text("error")).i;
    findings.warnings = callCheck("total", text("warning")).i;
    findings.hints = callCheck("total", text("hint")).i;
    if (!job.reportPath.empty()) callCheck("save", text(job.reportPath.c_str()));
    return findings;
}

/// Says of steps that are too large to be undone, while it lives.
class LargeStepNotes {
public:
    explicit LargeStepNotes(const Job& job) {
        kiln::setLargeStepQuestion([&job](const std::string& step) {
            if (!job.mustBeUndoable) job.output("too large to be undone: " + step);
            return !job.mustBeUndoable;
        });
    }
    ~LargeStepNotes() { kiln::setLargeStepQuestion({}); }
    LargeStepNotes(const LargeStepNotes&) = delete;
    LargeStepNotes& operator=(const LargeStepNotes&) = delete;
};

void runScript(const Job& job) {
    if (job.script.empty()) return;
    const LargeStepNotes notes(job);
    script::Engine engine;
    prepare(engine, job);
    const script::Value value = engine.run(job.script, job.scriptName);
    if (job.printsValue && !value.isUndefined() && !value.as<script::Done>())
        job.output(value.printed());
}

}  // namespace

Host::Host() : core((kiln::Core::setLanguage(KILN_LANGUAGE_ENGLISH), kiln::Core::create())) {}
Host::~Host() {
    kiln::Core::destroy();
}

void interrupt() noexcept {
    interrupted = 1;
}
bool wasInterrupted() noexcept {
    return interrupted != 0;
}

void prepare(script::Engine& engine, const Job& job) {
    script::addHostVerbs(engine);
    render::addPictureVerb(engine);
    script::Limits limits;
    limits.steps = job.maxSteps;
    limits.stackBytes = kStackForScripts;
    engine.setLimits(limits);
    engine.setStop(wasInterrupted);
    engine.setOutput(job.output);
    engine.setVariable("arguments",
                       script::Value::ofArray({job.arguments.begin(), job.arguments.end()}));
}

std::string runJob(kiln::Core& core, const Job& job) {
    kiln::setSearchFolders(core, job.searchFolders);
    if (std::string failure = openFiles(core, job); !failure.empty()) return failure;
    try {
        if (job.checksSource) job.foundInSource(checkScene(job));
        runScript(job);
        if (!job.checkTarget.empty()) job.found(checkScene(job));
    } catch (const script::Error& error) {
        return error.what();
    } catch (const script::Failure& failure) {
        return failure.what();
    }
    return writeFile(core, job);
}

}  // namespace kilnbatch
