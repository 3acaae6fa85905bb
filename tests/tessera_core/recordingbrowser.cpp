#include "recordingbrowser.h"

#include <tessera/browserclient.h>

#include <algorithm>

namespace {

_TREEITEM* findBelow(const _TREEITEM& item, const std::string& text) {
    for (const auto& child : item.children) {
        if (child->text == text) return child.get();
        if (_TREEITEM* const found = findBelow(*child, text)) return found;
    }
    return nullptr;
}

std::string outlineOf(const _TREEITEM& item) {
    std::string text;
    for (const auto& child : item.children) {
        if (!text.empty()) text += ',';
        text += child->text;
        if (!child->children.empty()) text += '(' + outlineOf(*child) + ')';
    }
    return text;
}

}  // namespace

void RecordingBrowser::send(tessera::BrowserEvent event, tessera::BrowserItem first,
                            tessera::BrowserItem second, std::uintptr_t argument,
                            std::uintptr_t argument2) const {
    callback(event, first, second, argument, argument2, clientData);
}

tessera::BrowserItem RecordingBrowser::find(const std::string& text) const {
    return findBelow(top, text);
}

std::string RecordingBrowser::outline() const {
    return outlineOf(top);
}

RecordingBrowser& recordingBrowser() {
    static RecordingBrowser browser;
    return browser;
}

// In place of the library's own.
void tessera::beep() noexcept {
    ++recordingBrowser().beeps;
}

void tessera::offerNodeCommands(const NodeCommands* commands) noexcept {
    recordingBrowser().commands = commands;
}

void tessera::hostSelectionChanged() noexcept {
    ++recordingBrowser().selectionChanges;
}

std::int32_t _zufltguicreate(tessera::BrowserWindow, tessera::BrowserCallback callback,
                             std::int32_t, void* clientData) {
    std::uint32_t refused = 1;
    callback(tessera::BrowserEvent::kConfirmForm, nullptr, nullptr,
             reinterpret_cast<std::uintptr_t>(&refused), 0, clientData);
    if (refused) return tessera::kBrowserRefused;
    RecordingBrowser& browser = recordingBrowser();
    if (browser.refusal != tessera::kBrowserDone) return browser.refusal;
    browser.exists = true;
    browser.callback = callback;
    browser.clientData = clientData;
    return tessera::kBrowserDone;
}

bool _zufltguishow(std::uint8_t show) {
    recordingBrowser().shown = show != 0;
    return recordingBrowser().exists;
}

void _zufltguidestroy() {
    recordingBrowser().exists = false;
}

tessera::BrowserItem _zufltguiaddnode(tessera::BrowserItem parent, const char* text,
                                      tessera::NodeHandle node) {
    RecordingBrowser& browser = recordingBrowser();
    if (!browser.exists) return nullptr;
    _TREEITEM& above = parent ? *parent : browser.top;
    above.children.push_back(std::make_unique<_TREEITEM>());
    _TREEITEM& item = *above.children.back();
    item.parent = &above;
    item.text = text;
    item.node = node;
    return &item;
}

bool _zufltguidelnode(tessera::BrowserItem item) {
    RecordingBrowser& browser = recordingBrowser();
    browser.selected = nullptr;
    if (!item)
        browser.top.clear();
    else
        std::erase_if(item->parent->children,
                      [&](const auto& child) { return child.get() == item; });
    return browser.exists;
}

bool _zufltguidelchildren(tessera::BrowserItem item) {
    if (item) item->clear();
    return item != nullptr;
}

tessera::NodeHandle _zufltguinode2hdl(tessera::BrowserItem item) {
    return item ? item->node : 0;
}

bool _zufltguiselectnode(tessera::BrowserItem item) {
    recordingBrowser().selected = item;
    return false;
}

void zufltguirefresh() {
    ++recordingBrowser().refreshes;
    if (recordingBrowser().exists) recordingBrowser().send(tessera::BrowserEvent::kRebuild);
}

void zufltguiSceneChanged() {
    ++recordingBrowser().sceneChanges;
}

void zufltguiresetpos() {
    ++recordingBrowser().resets;
}

void zufltguisettitle(const char* text) {
    recordingBrowser().title = text ? text : "";
}
