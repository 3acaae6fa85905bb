// The attribute store: a node of each kind, a degree of freedom against the bare conversion of its
// numbers, look-up of groups, one row of ten thousand nodes.
#include <fltkilnutil/fltattr.h>
#include <fltkilnutil/kilnflt.h>
#include <kiln/host/core.h>
#include <kiln/kiln.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "fastestruns.h"

namespace {

constexpr std::size_t kGroups = 14;
constexpr std::size_t kDofReals = 36;

const std::string kStoreDof = "store a degree of freedom, all rows changed";
constexpr double kStoreDofBound = 3;

INode* nodeOf(FltNodeKind kind) {
    INode* const node = GetCOREInterface()->CreateObjectNode(new DummyObject);
    if (!fltEnsureKind(node, kind, kFltRevision)) std::abort();
    return node;
}

/// A node whose record and options are stored.
INode* storedNode(FltNodeKind kind) {
    INode* const node = nodeOf(kind);
    FltAttrGroup* const group = fltAttrLoad(node, kFltRevision);
    if (group == nullptr || !fltAttrStore(node, *group)) std::abort();
    return node;
}

const char* kindName(FltNodeKind kind) {
    switch (kind) {
        case FltNodeKind::Header:
            return "header";
        case FltNodeKind::Group:
            return "group";
        case FltNodeKind::Object:
            return "object";
        case FltNodeKind::Face:
            return "face";
        case FltNodeKind::Dof:
            return "degree of freedom";
        case FltNodeKind::Bsp:
            return "binary separating plane";
        case FltNodeKind::InstanceRef:
            return "instance reference";
        case FltNodeKind::InstanceDef:
            return "instance definition";
        case FltNodeKind::XRef:
            return "external reference";
        case FltNodeKind::Lod:
            return "level of detail";
        case FltNodeKind::Switch:
            return "switch";
        case FltNodeKind::ClipRegion:
            return "clip region";
        case FltNodeKind::LightSource:
            return "light source";
        case FltNodeKind::LightPoint:
            return "light point";
    }
    return "";
}

void loadNode(benchmark::State& state, FltNodeKind kind) {
    INode* const node = storedNode(kind);
    for (auto _ : state) benchmark::DoNotOptimize(fltAttrLoad(node, kFltRevision));
}

/// Load and store as they stand, which prints every row twice and parses none.
void loadAndStoreNode(benchmark::State& state, FltNodeKind kind) {
    INode* const node = storedNode(kind);
    for (auto _ : state) {
        FltAttrGroup* const group = fltAttrLoad(node, kFltRevision);
        benchmark::DoNotOptimize(fltAttrStore(node, *group));
    }
}

/// The 36 doubles of a degree of freedom, none of them short.
std::vector<double> dofNumbers() {
    std::vector<double> numbers;
    for (std::size_t i = 0; i < kDofReals; ++i)
        numbers.push_back((i % 2 == 0 ? -1.0 : 1.0) * (1234.5678901 + static_cast<double>(i * i)));
    return numbers;
}

void printBare(const std::vector<double>& numbers, char (*texts)[32]) {
    for (std::size_t i = 0; i < kDofReals; ++i) {
        std::snprintf(texts[i], sizeof texts[i], "%g", numbers[i]);
        benchmark::DoNotOptimize(texts[i]);
    }
}

void parseBare(char (*texts)[32]) {
    for (std::size_t i = 0; i < kDofReals; ++i) {
        double value = std::strtod(texts[i], nullptr);
        benchmark::DoNotOptimize(value);
    }
}

bool isReal(const FltAttrDesc& row) {
    return row.type == FltAttrType::Double;
}

/// Gives every real row one of `texts`, from the one at `first` on.
void setReals(FltAttrGroup& group, const std::vector<std::string>& texts, std::size_t first) {
    for (FltAttrDesc* row = group.descriptors; !row->isTerminator(); ++row)
        if (isReal(*row)) row->value.setText(texts[first++ % texts.size()].c_str());
}

std::vector<std::string> textsOf(const std::vector<double>& numbers) {
    std::vector<std::string> texts;
    for (const double number : numbers) {
        char text[32];
        std::snprintf(text, sizeof text, "%g", number);
        texts.emplace_back(text);
    }
    return texts;
}

/// Prints the 36 doubles of a degree of freedom and reads them back.
void convertBare(benchmark::State& state) {
    const std::vector<double> numbers = dofNumbers();
    char room[kDofReals][32];
    for (auto _ : state) {
        printBare(numbers, room);
        parseBare(room);
    }
}

/// The same through the store, with all of its rows changed at every turn.
void convertByStore(benchmark::State& state) {
    const std::vector<std::string> texts = textsOf(dofNumbers());
    INode* const node = storedNode(FltNodeKind::Dof);
    std::size_t first = 0;
    for (auto _ : state) {
        FltAttrGroup* const group = fltAttrLoad(node, kFltRevision);
        setReals(*group, texts, ++first);
        benchmark::DoNotOptimize(fltAttrStore(node, *group));
    }
}

void findGroup(benchmark::State& state, FltNodeKind kind) {
    for (auto _ : state) benchmark::DoNotOptimize(fltAttrGroupFind(kind));
}

/// One row of ten thousand nodes, as an edit of a whole selection does.
void editTenThousandNodes(benchmark::State& state) {
    std::vector<INode*> nodes;
    nodes.reserve(10'000);
    for (int i = 0; i < 10'000; ++i) nodes.push_back(storedNode(FltNodeKind::Object));
    FltAttrDesc* const row = fltAttrFindRow(FltNodeKind::Object, "FltObjSignificance");
    int turn = 0;
    for (auto _ : state) {
        const std::string text = std::to_string(++turn % 1000);
        for (INode* const node : nodes) {
            FltAttrGroup* const group = fltAttrLoad(node, kFltRevision);
            row->value.setText(text.c_str());
            benchmark::DoNotOptimize(fltAttrStore(node, *group));
        }
    }
}

void registerBenches() {
    const auto add = [](const std::string& name, auto function) {
        return benchmark::RegisterBenchmark(name.c_str(), function);
    };
    for (std::size_t i = 0; i < kGroups; ++i) {
        const FltNodeKind kind = fltAttrGroups()[i]->kind;
        const std::string name = kindName(kind);
        add("load a " + name, [=](auto& state) { loadNode(state, kind); });
        add("load and store a " + name, [=](auto& state) { loadAndStoreNode(state, kind); });
        if (i == 0 || i == kGroups - 1)
            add("find the rows of a " + name, [=](auto& state) { findGroup(state, kind); });
    }
    add(kStoreDof + "/library", convertByStore);
    add(kStoreDof + "/bare conversion", convertBare);
    add("edit one row of 10,000 nodes", editTenThousandNodes)->Unit(benchmark::kMillisecond);
}

}  // namespace

int main(int count, char** arguments) {
    bench::Table table("fltkilnutil_bench", count, arguments);
    kiln::Core::create();
    registerBenches();
    bench::FastestRuns runs;
    runs.run(count, arguments);
    runs.print(table, [](const std::string& row) {
        return row.starts_with(kStoreDof) ? kStoreDofBound : bench::kNoBound;
    });
    kiln::Core::destroy();
    return table.status();
}
