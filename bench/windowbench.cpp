#include "windowbench.h"

#include <fltkilnutil/fltattr.h>
#include <fltkilnutil/kilnflt.h>
#include <input.h>
#include <kiln/host/core.h>
#include <moduleexports.h>
#include <resources/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <optional>
#include <string_view>

#include "table.h"

namespace bench {
namespace {

using tessera::BrowserEvent;

struct Bench {
    const char* name;
    void (*run)();
};

constexpr Bench kBenches[] = {
    {"tree", browserTree},           {"branches", browserBranches}, {"refresh", browserRefresh},
    {"replacing", browserReplacing}, {"branch", browserBranch},     {"propertygrid", propertyGrid},
    {"grid", gridControl},
};

std::optional<Table> table;

void answer(BrowserEvent event, tessera::BrowserItem, tessera::BrowserItem, std::uintptr_t argument,
            std::uintptr_t, void*) {
    if (event == BrowserEvent::kConfirmForm || event == BrowserEvent::kConfirmKind)
        *reinterpret_cast<std::uint32_t*>(argument) = 0;
}

BOOL CALLBACK findForm(HWND window, LPARAM found) {
    if (!::GetDlgItem(window, IDC_TREE)) return TRUE;
    *reinterpret_cast<HWND*>(found) = window;
    return FALSE;
}

[[noreturn]] void giveUp(const char* why) {
    std::fprintf(stderr, "window_bench: %s\n", why);
    std::exit(2);
}

}  // namespace

void report(const std::string& what, double value, const char* unit) {
    table->value(what, value, unit);
}

void reportWithin(double limit, const std::string& what, double value, const char* unit) {
    table->value(what, value, unit, limit);
}

void reportRatio(double limit, const std::string& what, double value, double measure) {
    table->ratio(what, value, measure, "ms", limit);
}

double millisecondsOf(const std::function<void()>& action) {
    const auto start = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

double fastest(const std::vector<double>& values) {
    return values.empty() ? 0 : *std::min_element(values.begin(), values.end());
}

double median(std::vector<double> values) {
    if (values.empty()) return 0;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

Form::Form() {
    kiln::Core::create().setDirectory(KILN_PLUGIN_DIR, std::filesystem::current_path().string());
    browser().setTitle(nullptr);
    if (browser().create(nullptr, answer, 0, nullptr) != tessera::kBrowserDone)
        giveUp("the form could not be created");
    browser().delNode(nullptr);
    browser().show(1);
    ::EnumThreadWindows(::GetCurrentThreadId(), findForm, reinterpret_cast<LPARAM>(&form_));
    if (!form_ || !testinput::activate(form_)) giveUp("the form could not be activated");
    testinput::pump();
}

Form::~Form() {
    browser().destroy();
    testinput::pump();
    kiln::Core::destroy();
}

HWND Form::tree() const noexcept {
    return control(IDC_TREE);
}

HWND Form::grid() const noexcept {
    return control(IDC_GRID);
}

INode* Form::node(int kind) const {
    INode* const made = GetCOREInterface()->CreateObjectNode(new DummyObject);
    if (kind == 0) return made;
    if (!fltEnsureKind(made, static_cast<FltNodeKind>(kind), kFltRevision))
        giveUp("a node could not be made an OpenFlight node");
    FltAttrGroup* const set = fltAttrLoad(made, kFltRevision);
    if (!set || !fltAttrStore(made, *set)) giveUp("a record could not be stored");
    return made;
}

tessera::BrowserItem Form::add(tessera::BrowserItem parent, const char* name, INode* node) const {
    const auto item = browser().addNode(parent, name, reinterpret_cast<tessera::NodeHandle>(node));
    if (!item) giveUp("the tree took no item");
    return item;
}

void Form::paint() const {
    ::RedrawWindow(form_, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
    ::GdiFlush();
}

}  // namespace bench

/// window_bench [--json] [NAME]...: runs all, or those named.
int main(int count, char** arguments) {
    bench::table.emplace("window_bench", count, arguments);
    try {
        for (const bench::Bench& one : bench::kBenches) {
            const auto named = [&](const char* name) { return one.name == std::string_view(name); };
            if (count > 1 && std::none_of(arguments + 1, arguments + count, named)) continue;
            one.run();
        }
    } catch (const std::exception& failure) {
        bench::giveUp(failure.what());
    }
    return bench::table->status();
}
