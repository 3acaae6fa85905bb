// The property grid: a global edit against the bare loop over the attribute store, and how long it
// takes to show another node.
#include "windowbench.h"

#include <fltkilnutil/fltattr.h>
#include <fltkilnutil/kilnflt.h>
#include <framework/gdi.h>
#include <input.h>
#include <moduleexports.h>
#include <resources/resource.h>

#include <array>
#include <stdexcept>
#include <string>
#include <utility>

using framework::heightOf, framework::widthOf;

namespace bench {
namespace {

using tessera::BrowserItem;

constexpr int kNodes = 10000;
constexpr double kMostOfBareLoop = 1.3;
constexpr double kMostToShow = 5;  // milliseconds

struct Edited {
    const char* name;
    FltNodeKind kind;
    const char* key;
};

constexpr Edited kEdited[] = {
    {"object", FltNodeKind::Object, "FltObjRelPriority"},
    {"group", FltNodeKind::Group, "FltGrpRelPriority"},
    {"degree of freedom", FltNodeKind::Dof, "FltDofTxMin"},
};

void require(bool holds, const char* otherwise) {
    if (!holds) throw std::runtime_error(otherwise);
}

FltAttrDesc& rowOf(FltNodeKind kind, const char* key) {
    FltAttrDesc* const row = fltAttrFindRow(kind, key);
    require(row != nullptr, "there is no such attribute");
    return *row;
}

std::vector<INode*> fill(const Form& form, FltNodeKind kind) {
    std::vector<INode*> nodes;
    std::vector<BrowserItem> items;
    ::SendMessageW(form.tree(), WM_SETREDRAW, FALSE, 0);
    const BrowserItem root = form.add(nullptr, "root", form.node(0));
    for (int i = 0; i < kNodes; ++i) {
        nodes.push_back(form.node(static_cast<int>(kind)));
        items.push_back(form.add(root, "node", nodes.back()));
    }
    TreeView_Expand(form.tree(), root, TVE_EXPAND);
    browser().selectNode(items.front());
    for (const BrowserItem item : items)
        TreeView_SetItemState(form.tree(), item, TVIS_SELECTED, TVIS_SELECTED);
    ::SendMessageW(form.tree(), WM_SETREDRAW, TRUE, 0);
    form.paint();
    return nodes;
}

double bareLoop(const std::vector<INode*>& nodes, FltAttrDesc& row, const char* value) {
    return millisecondsOf([&] {
        for (INode* const node : nodes) {
            FltAttrGroup* const set = fltAttrLoad(node, kFltRevision);
            row.value.setText(value);
            require(set && fltAttrStore(node, *set), "a node could not be stored");
        }
    });
}

/// What the form does of it for the nodes alone.
double editLoop(const std::vector<INode*>& nodes, FltNodeKind kind, FltAttrDesc& row,
                const char* value) {
    FltAttrGroup& set = *fltAttrGroupFind(kind);
    return millisecondsOf([&] {
        for (INode* const node : nodes)
            require(fltAttrEdit(node, kFltRevision, set, row, value), "a node was not edited");
    });
}

/// Types the value into the grid's focus cell; what counts is the time from Enter on.
double editByKeyboard(const Form& form, const wchar_t* value) {
    ::SetFocus(form.grid());
    testinput::key(VK_F2);
    testinput::type(value);
    const HWND editor = ::GetFocus();
    require(editor != form.grid(), "no editor has opened");
    return millisecondsOf([&] { ::SendMessageW(editor, WM_KEYDOWN, VK_RETURN, 0); });
}

void globalEdit(const Edited& edited) {
    const Form form;
    const std::vector<INode*> nodes = fill(form, edited.kind);
    FltAttrDesc& row = rowOf(edited.kind, edited.key);
    ::CheckDlgButton(form.handle(), IDC_GLOBAL, BST_CHECKED);
    ::SetFocus(form.grid());
    testinput::key(VK_HOME, {VK_CONTROL});
    for (const FltAttrDesc* at = fltAttrGroupFind(edited.kind)->descriptors; at != &row; ++at)
        testinput::key(VK_DOWN);

    std::vector<double> bare;
    std::vector<double> alone;
    std::vector<double> typed;
    constexpr std::pair<const char*, const wchar_t*> kValues[] = {
        {"3", L"4"}, {"5", L"6"}, {"7", L"8"}, {"1", L"2"}, {"9", L"3"}, {"4", L"5"},
        {"2", L"7"}, {"6", L"1"}, {"8", L"9"}, {"5", L"3"}, {"1", L"6"}, {"7", L"2"}};
    for (const auto& [first, second] : kValues) {
        bare.push_back(bareLoop(nodes, row, first));
        typed.push_back(editByKeyboard(form, second));
        require(fltAttrLoad(nodes.back(), kFltRevision) &&
                    static_cast<unsigned char>(row.value.text()[0]) == second[0],
                "the edit did not reach the last node");
        alone.push_back(editLoop(nodes, edited.kind, row, first));
    }
    const std::string what = std::to_string(kNodes).append(" nodes, ").append(edited.name);
    report(std::string(what).append(": one row of each"), fastest(alone), "ms");
    reportRatio(kMostOfBareLoop,
                std::string(what).append(": global edit of one row : load and store"),
                fastest(typed), fastest(bare));
}

constexpr std::pair<FltNodeKind, const char*> kShown[] = {
    {FltNodeKind::Header, "header"},          {FltNodeKind::Group, "group"},
    {FltNodeKind::Object, "object"},          {FltNodeKind::Face, "face"},
    {FltNodeKind::Dof, "degree of freedom"},  {FltNodeKind::Lod, "level of detail"},
    {FltNodeKind::Switch, "switch"},          {FltNodeKind::LightSource, "light source"},
    {FltNodeKind::LightPoint, "light point"},
};

/// What the platform alone takes to show the same: two edit fields like those of the form, and a
/// window with a scroll bar and nothing in it.
class BareForm {
public:
    explicit BareForm(const Form& form);
    ~BareForm() { ::DestroyWindow(frame_); }
    BareForm(const BareForm&) = delete;
    BareForm& operator=(const BareForm&) = delete;

    /// The time for what the form shows now, in milliseconds.
    double show(const Form& form) const;

private:
    HWND copyOf(HWND control, const wchar_t* windowClass) const;

    HWND frame_;
    HWND name_;
    HWND comment_;
    HWND grid_;
};

BareForm::BareForm(const Form& form)
    : frame_(::CreateWindowExW(0, L"#32770", L"Bare form", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 800, 0,
                               700, 600, nullptr, nullptr, nullptr, nullptr)),
      name_(copyOf(form.control(IDC_NAME), WC_EDITW)),
      comment_(copyOf(form.control(IDC_COMMENT), WC_EDITW)),
      grid_(copyOf(form.grid(), WC_STATICW)) {
    ::UpdateWindow(frame_);
}

HWND BareForm::copyOf(HWND control, const wchar_t* windowClass) const {
    RECT area{};
    ::GetWindowRect(control, &area);
    ::MapWindowPoints(nullptr, ::GetParent(control), reinterpret_cast<POINT*>(&area), 2);
    auto style = static_cast<DWORD>(::GetWindowLongW(control, GWL_STYLE));
    if (windowClass != std::wstring(WC_EDITW)) style &= 0xFFFF0000;
    const HWND copy = ::CreateWindowExW(static_cast<DWORD>(::GetWindowLongW(control, GWL_EXSTYLE)),
                                        windowClass, L"", style, area.left, area.top, widthOf(area),
                                        heightOf(area), frame_, nullptr, nullptr, nullptr);
    const LRESULT font = ::SendMessageW(control, WM_GETFONT, 0, 0);
    ::SendMessageW(copy, WM_SETFONT, static_cast<WPARAM>(font), FALSE);
    return copy;
}

double BareForm::show(const Form& form) const {
    std::array<wchar_t, 256> name{};
    std::array<wchar_t, 256> comment{};
    ::GetWindowTextW(form.control(IDC_NAME), name.data(), static_cast<int>(name.size()));
    ::GetWindowTextW(form.control(IDC_COMMENT), comment.data(), static_cast<int>(comment.size()));
    SCROLLINFO rows{};
    rows.cbSize = sizeof rows;
    rows.fMask = SIF_PAGE | SIF_POS | SIF_RANGE;
    ::GetScrollInfo(form.grid(), SB_VERT, &rows);
    return millisecondsOf([&] {
        ::SetWindowTextW(name_, name.data());
        ::SetWindowTextW(comment_, comment.data());
        ::SetScrollInfo(grid_, SB_VERT, &rows, TRUE);
        ::InvalidateRect(grid_, nullptr, FALSE);
        for (const HWND window : {name_, comment_, grid_}) ::UpdateWindow(window);
        ::GdiFlush();
    });
}

/// Selects one node after the other in a tree of many, from kind to kind, every second one with a
/// comment. It is shown once name, comment and grid are painted; what the tree control takes to
/// paint itself is stated apart. The first nodes are in view already, for the others the tree
/// scrolls: the fastest is one of the former, the median one of the latter.
void showing() {
    const Form form;
    constexpr int kKinds = static_cast<int>(std::size(kShown));
    constexpr int kSteps = 30 * kKinds;
    std::vector<INode*> nodes;
    std::vector<BrowserItem> items;
    ::SendMessageW(form.tree(), WM_SETREDRAW, FALSE, 0);
    const BrowserItem root = form.add(nullptr, "root", form.node(0));
    for (int i = 0; i < kNodes; ++i) {
        nodes.push_back(form.node(static_cast<int>(kShown[i % kKinds].first)));
        if (i % 2 == 0) fltPutComment(nodes.back(), std::string("注释 ").append(std::to_string(i)));
        items.push_back(form.add(root, "node", nodes.back()));
    }
    TreeView_Expand(form.tree(), root, TVE_EXPAND);
    ::SendMessageW(form.tree(), WM_SETREDRAW, TRUE, 0);
    browser().selectNode(root);
    form.paint();

    std::vector<double> shown[kKinds];
    std::vector<double> loaded[kKinds];
    std::vector<double> bare[kKinds];
    std::vector<double> treePainted;
    const BareForm bareForm(form);
    for (int i = 0; i < kSteps; ++i) {
        const auto at = static_cast<size_t>(i);
        loaded[i % kKinds].push_back(millisecondsOf([&] { fltAttrLoad(nodes[at], kFltRevision); }));
        shown[i % kKinds].push_back(millisecondsOf([&] {
            browser().selectNode(items[at]);
            for (const int id : {IDC_NAME, IDC_COMMENT, IDC_GRID}) ::UpdateWindow(form.control(id));
            ::GdiFlush();
        }));
        treePainted.push_back(millisecondsOf([&] { form.paint(); }));
        bare[i % kKinds].push_back(bareForm.show(form));
        testinput::pump();
    }
    for (int kind = 0; kind < kKinds; ++kind) {
        const std::string name = std::string("showing a ").append(kShown[kind].second);
        reportWithin(kMostToShow, name + ", beyond loading",
                     fastest(shown[kind]) - fastest(loaded[kind]), "ms");
        report(name + ", median", median(shown[kind]) - median(loaded[kind]), "ms");
        report(name + ", the platform alone with the same texts and bar", fastest(bare[kind]),
               "ms");
        report(name + ", the platform alone, median", median(bare[kind]), "ms");
    }
    report("the tree control's own painting after each", fastest(treePainted), "ms");
}

/// The platform's edit field breaks a long text into lines, which takes it longer than all the
/// rest.
void showingALongComment() {
    const Form form;
    std::string comment;
    while (comment.size() < 8000) comment += "A comment of many words. ";
    const BrowserItem root = form.add(nullptr, "root", form.node(0));
    INode* const brief = form.node(static_cast<int>(FltNodeKind::Group));
    INode* const full = form.node(static_cast<int>(FltNodeKind::Group));
    fltPutComment(full, comment);
    const BrowserItem briefItem = form.add(root, "brief", brief);
    const BrowserItem fullItem = form.add(root, "full", full);

    const HWND field = form.control(IDC_COMMENT);
    RECT area{};
    ::GetWindowRect(field, &area);
    const HWND bare = ::CreateWindowExW(
        static_cast<DWORD>(::GetWindowLongW(field, GWL_EXSTYLE)), WC_EDITW, L"",
        WS_POPUP | WS_VISIBLE | WS_VSCROLL | ES_MULTILINE | ES_AUTOVSCROLL | ES_WANTRETURN, 900, 0,
        area.right - area.left, area.bottom - area.top, form.handle(), nullptr, nullptr, nullptr);
    ::SendMessageW(bare, WM_SETFONT, static_cast<WPARAM>(::SendMessageW(field, WM_GETFONT, 0, 0)),
                   FALSE);
    const std::wstring wide(comment.begin(), comment.end());
    std::vector<double> shown;
    std::vector<double> taken;
    for (int i = 0; i < 10; ++i) {
        browser().selectNode(briefItem);
        form.paint();
        ::SetWindowTextW(bare, L"");
        ::UpdateWindow(bare);
        shown.push_back(millisecondsOf([&] {
            browser().selectNode(fullItem);
            for (const int id : {IDC_NAME, IDC_COMMENT, IDC_GRID}) ::UpdateWindow(form.control(id));
            ::GdiFlush();
        }));
        taken.push_back(millisecondsOf([&] {
            ::SetWindowTextW(bare, wide.c_str());
            ::UpdateWindow(bare);
            ::GdiFlush();
        }));
    }
    ::DestroyWindow(bare);
    reportRatio(kMostOfBareLoop,
                "showing a comment of 8,000 characters with its node : a bare edit field",
                fastest(shown), fastest(taken));
}

}  // namespace

void propertyGrid() {
    for (const Edited& edited : kEdited) globalEdit(edited);
    showing();
    showingALongComment();
}

}  // namespace bench
