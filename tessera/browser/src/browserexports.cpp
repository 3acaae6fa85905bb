// The exported functions, and the one form that they work on.
#include "cswitch.h"
#include "formbusy.h"
#include "hierarchy.h"
#include "recordkinds.h"

#include <base/text.h>
#include <diagnostics/log.h>
#include <framework/module.h>
#include <framework/strings.h>
#include <resources/resource.h>
#include <tessera/browser.h>

#include <memory>
#include <new>
#include <string>
#include <vector>

using framework::ModuleScope, framework::loadString;

namespace tessera {
namespace {

// The product's name and the name of a file with its path.
constexpr std::size_t kLongestTitle = 1024;

std::unique_ptr<Hierarchy> form;
std::string title;
std::string subject;  // what the title names beside the product; empty for none

// Forms that their client destroyed while their own code was on the stack.
std::vector<std::unique_ptr<Hierarchy>> retired;

void destroyForm() {
    if (!form) return;
    retired.push_back(std::move(form));
    retired.back()->destroy();
}

// What every exported function creates first.
class Entry {
public:
    // A form whose window was destroyed with its owner does not count.
    Entry() {
        if (form && !form->HasWindow()) destroyForm();
    }
    ~Entry() {
        if (FormBusy::depth() == 1) retired.clear();
    }
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;

private:
    ModuleScope module_;
    FormBusy busy_;
};

// Runs the body of an exported function. No exception leaves the module: the function returns its
// plain failure, and the reason is noted for the guarded entry point that called it, if one did.
template <typename Result, typename Body>
Result enter(Result failure, Body&& body) noexcept {
    try {
        const Entry entry;
        return body();
    } catch (...) {
        diagnostics::noteCurrentException();
        return failure;
    }
}

template <typename Body>
void enter(Body&& body) noexcept {
    enter(false, [&] {
        body();
        return true;
    });
}

bool clientAgrees(BrowserCallback callback, void* clientData) {
    std::uint32_t refused = 1;
    if (callback)
        callback(BrowserEvent::kConfirmForm, nullptr, nullptr,
                 reinterpret_cast<std::uintptr_t>(&refused), 0, clientData);
    return refused == 0;
}

std::string productTitle() {
    return loadString(IDS_FORM_TITLE);
}

// The text is a file name of any length; a caption too long for its window is of no use.
void composeTitle() {
    title = productTitle();
    if (!subject.empty()) title += " (" + subject + ")";
    title = base::clipUtf8(title, kLongestTitle);
}

void setTitle(const char* text) {
    subject = text ? text : "";
    composeTitle();
    if (!form) {
        diagnostics::log("title :ZuFltHierForm NULL\n");
        return;
    }
    form->SetText(title);
    diagnostics::log("title :%s\n", title.c_str());
}

BrowserStatus makeForm(HWND parent) {
    std::unique_ptr<Hierarchy> made;
    try {
        made = std::make_unique<Hierarchy>();
    } catch (const std::bad_alloc&) {
        return kBrowserNoMemory;
    }
    if (!made->create(parent)) return kBrowserDialogFailed;
    form = std::move(made);
    return kBrowserDone;
}

}  // namespace

void browserStartUp() {
    if (title.empty()) title = productTitle();
    loadKindNames();
}

void browserFollowLanguage() {
    enter([] {
        loadKindNames();
        composeTitle();
        if (!form) return;
        form->followLanguage();
        form->SetText(title);
    });
}

void browserShutDown() {
    destroyForm();
    retired.clear();
    freeKindNames();
}

}  // namespace tessera

using namespace tessera;

void tessera::offerNodeCommands(const NodeCommands* commands) noexcept {
    enter([&] {
        if (form) form->offer(commands);
    });
}

void tessera::hostSelectionChanged() noexcept {
    enter([&] {
        if (form) form->hostSelectionChanged();
    });
}

std::int32_t _zufltguicreate(BrowserWindow parent, BrowserCallback callback, std::int32_t,
                             void* clientData) {
    return enter<std::int32_t>(kBrowserFormMissing, [=]() -> std::int32_t {
        if (!clientAgrees(callback, clientData)) return kBrowserRefused;
        const bool isNew = !form;
        if (isNew) {
            const BrowserStatus status = makeForm(parent);
            if (status != kBrowserDone) return status;
        }
        try {
            form->SetText(title);
        } catch (...) {
            if (isNew) destroyForm();  // the caller is answered that there is none
            throw;
        }
        form->bind(callback, clientData);
        return kBrowserDone;
    });
}

bool _zufltguishow(std::uint8_t show) {
    return enter(false, [=] {
        if (form) form->show(show != 0);
        return form != nullptr;
    });
}

void _zufltguidestroy() {
    enter(destroyForm);
}

BrowserItem _zufltguiaddnode(BrowserItem parent, const char* text, NodeHandle node) {
    return enter<BrowserItem>(nullptr,
                              [=] { return form ? form->addNode(parent, text, node) : nullptr; });
}

bool _zufltguidelnode(BrowserItem item) {
    return enter(false, [=] {
        if (form) form->deleteNode(item);
        return form != nullptr;
    });
}

bool _zufltguidelchildren(BrowserItem item) {
    return enter(false, [=] {
        if (!form || !item) return false;
        form->deleteChildren(item);
        return true;
    });
}

NodeHandle _zufltguinode2hdl(BrowserItem item) {
    return enter<NodeHandle>(0, [=] { return form ? form->nodeOfItem(item) : 0; });
}

bool _zufltguiselectnode(BrowserItem item) {
    return enter(false, [=] {
        if (form) form->selectNode(item);
        return false;
    });
}

void zufltguirefresh() {
    enter([] {
        if (form) form->refresh();
    });
}

void zufltguiSceneChanged() {
    enter([] {
        if (form) form->sceneChanged();
    });
}

void zufltguiresetpos() {
    enter([] {
        if (form) form->resetPosition();
    });
}

void zufltguisettitle(const char* text) {
    enter([=] { setTitle(text); });
}
