#include "browserfixture.h"

#include <kiln/host/core.h>

#include <filesystem>
#include <map>
#include <ostream>

namespace {

struct Sought {
    int control;
    HWND found = nullptr;
};

BOOL CALLBACK findOwner(HWND window, LPARAM sought) {
    auto& [control, found] = *reinterpret_cast<Sought*>(sought);
    if (!GetDlgItem(window, control)) return TRUE;
    found = window;
    return FALSE;
}

/// The thread's window that has that control.
HWND windowWith(int control) {
    Sought sought{control};
    EnumThreadWindows(GetCurrentThreadId(), findOwner, reinterpret_cast<LPARAM>(&sought));
    return sought.found;
}

}  // namespace

void PrintTo(const Sent& sent, std::ostream* out) {
    *out << "event " << static_cast<unsigned>(sent.event) << " (" << sent.first << ", "
         << sent.second << ", " << sent.argument << ", " << sent.argument2 << ")";
}

// ---------------------------------------------------------------- client

void Client::callback(BrowserEvent event, BrowserItem first, BrowserItem second,
                      std::uintptr_t argument, std::uintptr_t argument2, void* data) {
    auto& client = *static_cast<Client*>(data);
    const auto answer = [argument](bool yes) {
        if (yes) *reinterpret_cast<std::uint32_t*>(argument) = 0;
    };
    if (event == BrowserEvent::kConfirmForm) return answer(client.allowsForm);
    if (event == BrowserEvent::kConfirmKind) {
        if (client.onConfirmKind) client.onConfirmKind();
        return answer(client.knowsKinds);
    }
    if (event == BrowserEvent::kActivated && !client.notesActivation) return;
    if (event == BrowserEvent::kRename) client.lastText = reinterpret_cast<const char*>(argument);
    const Sent sent{event, first, second, argument, argument2};
    client.sent_.push_back(sent);
    if (client.onEvent) client.onEvent(sent);
}

std::vector<Sent> Client::take() {
    return std::exchange(sent_, {});
}

// ---------------------------------------------------------------- fixture

BrowserTest::BrowserTest() {
    kiln::Core::create().setDirectory(KILN_PLUGIN_DIR, std::filesystem::current_path().string());
    browser().setTitle(nullptr);
    forgetPlace();
}

BrowserTest::~BrowserTest() {
    browser().destroy();
    testinput::pump();
    kiln::Core::destroy();
    forgetPlace();
}

void BrowserTest::forgetPlace() {
    RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\Tessera\\Browser");
}

void BrowserTest::open(bool shown) {
    ASSERT_EQ(browser().create(nullptr, Client::callback, 0, &client), tessera::kBrowserDone);
    browser().delNode(nullptr);
    if (!shown) return;
    browser().show(1);
    ASSERT_TRUE(testinput::activate(form()));
    client.take();
}

HWND BrowserTest::form() {
    return windowWith(IDC_TREE);
}

HWND BrowserTest::switchEditor() {
    return windowWith(IDC_MASK);
}

void BrowserTest::push(int id) {
    SendMessageW(control(id), BM_CLICK, 0, 0);
    testinput::pump();
}

void BrowserTest::check(int id, bool checked) {
    CheckDlgButton(form(), id, checked ? BST_CHECKED : BST_UNCHECKED);
}

std::wstring BrowserTest::text(HWND window) {
    wchar_t buffer[16384] = L"";
    SendMessageW(window, WM_GETTEXT, std::size(buffer), reinterpret_cast<LPARAM>(buffer));
    return buffer;
}

INode* BrowserTest::node(int kind) {
    INode* const made = GetCOREInterface()->CreateObjectNode(new DummyObject);
    if (kind != 0) {
        EXPECT_TRUE(fltEnsureKind(made, static_cast<FltNodeKind>(kind), kFltRevision));
    }
    return made;
}

BrowserItem BrowserTest::add(BrowserItem parent, const char* name, INode* node) {
    return browser().addNode(parent, name, reinterpret_cast<NodeHandle>(node));
}

void BrowserTest::select(std::initializer_list<BrowserItem> items) {
    bool first = true;
    for (const BrowserItem item : items) {
        if (std::exchange(first, false)) browser().selectNode(item);
        TreeView_SetItemState(tree(), item, TVIS_SELECTED, TVIS_SELECTED);
    }
}

bool BrowserTest::isSelected(BrowserItem item) {
    return (TreeView_GetItemState(tree(), item, TVIS_SELECTED) & TVIS_SELECTED) != 0;
}

bool BrowserTest::isExpanded(BrowserItem item) {
    return (TreeView_GetItemState(tree(), item, TVIS_EXPANDED) & TVIS_EXPANDED) != 0;
}

int BrowserTest::image(BrowserItem item) {
    TVITEMW found{};
    found.mask = TVIF_IMAGE | TVIF_SELECTEDIMAGE;
    found.hItem = item;
    SendMessageW(tree(), TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&found));
    EXPECT_EQ(found.iImage, found.iSelectedImage);
    return found.iImage;
}

std::wstring BrowserTest::label(BrowserItem item) {
    wchar_t buffer[256] = L"";
    TVITEMW found{};
    found.mask = TVIF_TEXT;
    found.hItem = item;
    found.pszText = buffer;
    found.cchTextMax = static_cast<int>(std::size(buffer));
    SendMessageW(tree(), TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&found));
    return buffer;
}

POINT BrowserTest::middle(BrowserItem item, bool icon) {
    TreeView_EnsureVisible(tree(), item);
    testinput::pump();
    UpdateWindow(tree());  // the control measures its labels when it paints them
    RECT area{};
    TreeView_GetItemRect(tree(), item, &area, TRUE);
    return {icon ? area.left - 10 : (area.left + area.right) / 2, (area.top + area.bottom) / 2};
}
