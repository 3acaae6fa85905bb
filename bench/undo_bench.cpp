// What the history costs: an edit of ten thousand nodes and ten thousand creations by script with
// and without it, undoing and redoing against doing, and the memory of an edit's step.
//
// The two of a pair take turns, and the fastest of each counts, in processor time. (Imports:
// interchange_bench.)
#include <fltkilnutil/actions.h>
#include <fltkilnutil/fltattr.h>
#include <fltkilnutil/kilnflt.h>
#include <kiln/host/host.h>
#include <script/engine.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "ownprocess.h"
#include "table.h"

namespace {

using bench::Fastest;

constexpr int kNodes = 10'000;
constexpr int kRuns = 15;
constexpr double kMostOfNoHistory = 1.15;
constexpr double kMostOfDoing = 1.5;
constexpr double kMostOfChanged = 3;

void require(bool holds) {
    if (!holds) std::abort();
}

struct Costs {
    Fastest with, without, undo, redo;

    void print(bench::Table& table, const std::string& what) const {
        table.ratio(what + " : without history", with.milliseconds, without.milliseconds, "ms",
                    kMostOfNoHistory);
        table.ratio(what + ", undone : done", undo.milliseconds, with.milliseconds, "ms",
                    kMostOfDoing);
        table.ratio(what + ", redone : done", redo.milliseconds, with.milliseconds, "ms",
                    kMostOfDoing);
    }
};

template <typename Work>
void measure(kiln::Core& core, Costs& costs, Work&& work) {
    {
        const kiln::WithoutHistory without;
        costs.without.run(work);
    }
    costs.with.run(work);
    costs.undo.run([&] { require(core.history().undo()); });
    costs.redo.run([&] { require(core.history().redo()); });
}

/// As the browser does it for all selected nodes.
void measureEdit(bench::Table& table, kiln::Core& core) {
    Interface& host = core.hostInterface();
    core.newScene();
    std::vector<INode*> nodes;
    double bytes = 0;  // of the chunks that the edit changes
    for (int i = 0; i < kNodes; ++i) {
        nodes.push_back(host.CreateObjectNode(new DummyObject));
        require(fltEnsureKind(nodes.back(), FltNodeKind::Group, kFltRevision));
        FltAttrGroup* const group = fltAttrLoad(nodes.back(), kFltRevision);
        require(group != nullptr && fltAttrStore(nodes.back(), *group));
        for (int chunk = 0; chunk < nodes.back()->NumAppDataChunks(); ++chunk)
            if (nodes.back()->GetAppDataChunk(chunk)->subID == 1)
                bytes += nodes.back()->GetAppDataChunk(chunk)->length;
    }
    Costs costs;
    int value = 0;
    double memory = 0;
    for (int run = 0; run < kRuns; ++run) {
        const auto edit = [&] {
            const std::string text = std::to_string(++value % 1000);
            fltkilnutil::ActionScope scope(fltkilnutil::Action::kEditAttribute);
            FltAttrGroup* const group = fltAttrLoad(nodes.front(), kFltRevision);
            FltAttrDesc* const row = fltAttrFindRow(FltNodeKind::Group, "FltGrpRelPriority");
            require(row != nullptr);
            for (INode* const node : nodes)
                require(fltAttrEdit(node, kFltRevision, *group, *row, text.c_str()));
            scope.Commit();
        };
        core.history().clear();
        measure(core, costs, edit);
        memory = static_cast<double>(core.history().bytes());
    }
    const std::string what = "an attribute of " + std::to_string(kNodes) + " nodes";
    costs.print(table, what);
    table.ratio(what + ", memory of the step : the changed chunks", memory / 1000, bytes / 1000,
                "kB", kMostOfChanged);
}

void measureScript(bench::Table& table, kiln::Core& core) {
    script::Engine engine;
    script::addHostVerbs(engine);
    const std::string text = "for i = 1 to " + std::to_string(kNodes) + " do createDummy()";
    Costs costs;
    for (int run = 0; run < kRuns; ++run) {
        const auto create = [&] { engine.run(text, "create.ks"); };
        core.newScene();
        {
            const kiln::WithoutHistory without;
            costs.without.run(create);
        }
        core.newScene();
        costs.with.run(create);
        costs.undo.run([&] { require(core.history().undo()); });
        costs.redo.run([&] { require(core.history().redo()); });
    }
    costs.print(table, std::to_string(kNodes) + " creations by script");
}

}  // namespace

int main(int count, char** arguments) {
    bench::Table table("undo_bench", count, arguments);
    kiln::Core& core = kiln::Core::create();
    measureEdit(table, core);
    measureScript(table, core);
    kiln::Core::destroy();
    return table.status();
}
