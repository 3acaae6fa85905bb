#include "dialognavigation.h"
#include "module_internal.h"
#include "windowrouter.h"

#include <base/resources.h>
#include <base/scopedvalue.h>
#include <base/utf16.h>
#include <framework/cdialog.h>
#include <framework/centredtext.h>
#include <framework/module.h>

#include <charconv>
#include <utility>

namespace framework {

namespace {

/// The template `id` in the language of now, or null.
const DLGTEMPLATE* findTemplate(HINSTANCE resources, UINT id) noexcept {
    return static_cast<const DLGTEMPLATE*>(
        base::findResource(resources, RT_DIALOG, id, resourceLanguage()));
}

INT_PTR CALLBACK leaveAlone(HWND, UINT, WPARAM, LPARAM) {
    return FALSE;
}

std::wstring classOf(HWND window) {
    wchar_t name[64];
    return {name, static_cast<std::size_t>(::GetClassNameW(window, name, 64))};
}

/// The place of a control, with that of its open list if it has one.
RECT placeOf(HWND control, bool hasList) {
    RECT place;
    ::GetWindowRect(control, &place);
    if (hasList) {
        RECT open;
        ::SendMessageW(control, CB_GETDROPPEDCONTROLRECT, 0, reinterpret_cast<LPARAM>(&open));
        place.bottom = open.bottom;
    }
    ::MapWindowPoints(nullptr, ::GetParent(control), reinterpret_cast<POINT*>(&place), 2);
    return place;
}

/// Gives a control the place of another, and the text if it is one that no user enters.
void follow(HWND control, HWND model) {
    const std::wstring kind = classOf(model);
    const RECT place = placeOf(model, kind == WC_COMBOBOXW);
    ::SetWindowPos(control, nullptr, place.left, place.top, place.right - place.left,
                   place.bottom - place.top, SWP_NOZORDER | SWP_NOACTIVATE);
    if (kind != WC_STATICW && kind != WC_BUTTONW) return;
    wchar_t text[256];
    ::GetWindowTextW(model, text, 256);
    ::SetWindowTextW(control, text);
}

/// Shows the owner's icon in the dialog's title bar and in the task list.
void showOwnersIcon(HWND dialog) {
    const HWND owner = ::GetWindow(dialog, GW_OWNER);
    if (!owner) return;
    for (const WPARAM size : {ICON_SMALL, ICON_BIG})
        ::SendMessageW(dialog, WM_SETICON, size, ::SendMessageW(owner, WM_GETICON, size, 0));
}

void centreTexts(HWND dialog) {
    for (HWND control = ::GetWindow(dialog, GW_CHILD); control;
         control = ::GetWindow(control, GW_HWNDNEXT)) {
        const bool oneLine = !(::GetWindowLongW(control, GWL_STYLE) & ES_MULTILINE);
        if (oneLine && classOf(control) == WC_EDITW) centreText(control);
    }
}

bool isPushButton(HWND control) {
    const LRESULT code = ::SendMessageW(control, WM_GETDLGCODE, 0, 0);
    if (code & (DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON)) return true;
    const LONG type = ::GetWindowLongW(control, GWL_STYLE) & BS_TYPEMASK;
    return (code & DLGC_BUTTON) && type == BS_OWNERDRAW;
}

}  // namespace

CDialog::~CDialog() {
    // Here and not in the base, so that the last messages still find a dialog.
    DestroyWindow();
    DialogNavigation::remove(*this);
}

INT_PTR CDialog::DoModal() {
    if (HasWindow()) return -1;
    // The caller chooses the resources; the context is always the module's.
    const HINSTANCE resources = resourceInstance();
    const ModuleScope module;
    ensureCommonControls();
    const base::ScopedValue modal(modal_, true);
    const DLGTEMPLATE* const dialog = findTemplate(resources, templateId_);
    if (!dialog) return -1;
    return ::DialogBoxIndirectParamW(resources, dialog, parent_, DialogProc,
                                     reinterpret_cast<LPARAM>(this));
}

bool CDialog::Create(UINT templateId, HWND parent) {
    if (HasWindow()) return false;
    const HINSTANCE resources = resourceInstance();
    const ModuleScope module;
    ensureCommonControls();
    templateId_ = templateId;
    parent_ = parent;
    failed_ = false;
    const DLGTEMPLATE* const dialog = findTemplate(resources, templateId);
    if (!dialog) return false;
    const HWND window = ::CreateDialogIndirectParamW(resources, dialog, parent, DialogProc,
                                                     reinterpret_cast<LPARAM>(this));
    if (window && failed_) ::DestroyWindow(window);  // perhaps not connected yet
    if (!window || !HasWindow()) return false;
    showOwnersIcon(window);
    return true;
}

SIZE CDialog::FollowLanguage() {
    const HINSTANCE resources = resourceInstance();
    const ModuleScope module;
    const DLGTEMPLATE* const dialog = findTemplate(resources, templateId_);
    const HWND model =
        dialog ? ::CreateDialogIndirectParamW(resources, dialog, parent_, leaveAlone, 0) : nullptr;
    if (!model) return {};
    wchar_t caption[256];
    ::GetWindowTextW(model, caption, 256);
    ::SetWindowTextW(Handle(), caption);
    // Both have their controls in the template's order; what else has been added here is passed
    // over.
    HWND control = ::GetWindow(Handle(), GW_CHILD);
    for (HWND from = ::GetWindow(model, GW_CHILD); from; from = ::GetWindow(from, GW_HWNDNEXT)) {
        HWND same = control;
        while (same && ::GetDlgCtrlID(same) != ::GetDlgCtrlID(from))
            same = ::GetWindow(same, GW_HWNDNEXT);
        if (!same) continue;
        follow(same, from);
        control = ::GetWindow(same, GW_HWNDNEXT);
    }
    RECT area;
    if (!(Style() & WS_THICKFRAME)) {
        ::GetWindowRect(model, &area);
        ::SetWindowPos(Handle(), nullptr, 0, 0, area.right - area.left, area.bottom - area.top,
                       SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    }
    ::GetClientRect(model, &area);
    ::DestroyWindow(model);
    return {area.right, area.bottom};
}

void CDialog::EndDialog(INT_PTR result) {
    if (modal_) {
        ::EndDialog(Handle(), result);
    } else {
        Hide();
    }
}

bool CDialog::Navigate(HWND dialog, MSG& message) noexcept {
    const bool enter = message.message == WM_KEYDOWN && message.wParam == VK_RETURN;
    if (!enter || !isPushButton(message.hwnd)) return ::IsDialogMessageW(dialog, &message) != FALSE;
    constexpr LPARAM kHeldDown = LPARAM{1} << 30;
    if (!(message.lParam & kHeldDown))
        ::SendMessageW(::GetParent(message.hwnd), WM_COMMAND,
                       MAKEWPARAM(::GetDlgCtrlID(message.hwnd), BN_CLICKED),
                       reinterpret_cast<LPARAM>(message.hwnd));
    return true;
}

void CDialog::UpdateData(bool save) {
    DataExchange exchange(*this, save);
    DoDataExchange(exchange);
}

bool CDialog::OnInitDialog() {
    UpdateData(false);
    return true;
}

void CDialog::OnOK() {
    if (modal_) UpdateData(true);
    EndDialog(IDOK);
}

void CDialog::OnCancel() {
    EndDialog(IDCANCEL);
}

LRESULT CDialog::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_COMMAND: {
            const int id = LOWORD(wParam);
            if (OnCommand(id, HIWORD(wParam), reinterpret_cast<HWND>(lParam))) return 0;
            if (HIWORD(wParam) != BN_CLICKED || (id != IDOK && id != IDCANCEL))
                return Default(message, wParam, lParam);
            if (id == IDOK) {
                OnOK();
            } else {
                OnCancel();
            }
            return 0;
        }
        case WM_NOTIFY: {
            // Some versions leave a text below a title too little room, though their window has it.
            auto& header = *reinterpret_cast<NMHDR*>(lParam);
            if (!toolTips_ || header.hwndFrom != toolTips_ || header.code != NM_CUSTOMDRAW) break;
            reinterpret_cast<NMTTCUSTOMDRAW&>(header).uDrawFlags |= DT_NOCLIP;
            return CDRF_DODEFAULT;
        }
        case WM_NCDESTROY:
            DialogNavigation::remove(*this);
            toolTips_ = nullptr;  // gone before the window that owns it
            break;
        default:
            break;
    }
    return CWnd::WindowProc(message, wParam, lParam);
}

bool CDialog::EnableToolTips(bool on) {
    if (toolTips_) ::DestroyWindow(std::exchange(toolTips_, nullptr));
    if (!on) return true;
    ensureCommonControls();
    // A tip that lies over a control must not take its clicks: these styles let them through.
    constexpr DWORD kClickThrough = WS_EX_LAYERED | WS_EX_TRANSPARENT;
    toolTips_ = ::CreateWindowExW(WS_EX_TOPMOST | kClickThrough, TOOLTIPS_CLASSW, nullptr,
                                  WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX, CW_USEDEFAULT,
                                  CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, Handle(), nullptr,
                                  moduleInstance(), nullptr);
    if (!toolTips_) return false;
    ::SetLayeredWindowAttributes(toolTips_, 0, 255, LWA_ALPHA);
    for (HWND child = ::GetWindow(Handle(), GW_CHILD); child;
         child = ::GetWindow(child, GW_HWNDNEXT))
        AddToolTip(child);
    return true;
}

// A tip that was there already is begun again.
void CDialog::AddToolTip(HWND control) const noexcept {
    MoveToolTip(control, control);
}

void CDialog::MoveToolTip(HWND former, HWND now) const noexcept {
    TTTOOLINFOW tool{};
    // The size that every version of the common controls takes.
    tool.cbSize = TTTOOLINFOW_V2_SIZE;
    tool.uFlags = TTF_IDISHWND | TTF_TRANSPARENT;
    tool.hwnd = Handle();
    tool.uId = reinterpret_cast<UINT_PTR>(former);
    tool.lpszText = LPSTR_TEXTCALLBACKW;
    ::SendMessageW(toolTips_, TTM_DELTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    tool.uId = reinterpret_cast<UINT_PTR>(now);
    ::SendMessageW(toolTips_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
}

void CDialog::SetToolTipTitle(std::string_view title) const {
    constexpr std::size_t kLongest = 99;
    if (!toolTips_) return;
    const std::wstring wide = base::toWide(title).substr(0, kLongest);
    ::SendMessageW(toolTips_, TTM_SETTITLEW, TTI_NONE, reinterpret_cast<LPARAM>(wide.c_str()));
}

int CDialog::ToolTipControlId(const NMHDR& request) noexcept {
    const UINT flags = request.code == TTN_NEEDTEXTA
                           ? reinterpret_cast<const NMTTDISPINFOA&>(request).uFlags
                           : reinterpret_cast<const NMTTDISPINFOW&>(request).uFlags;
    if (!(flags & TTF_IDISHWND)) return static_cast<int>(request.idFrom);
    return ::GetDlgCtrlID(reinterpret_cast<HWND>(request.idFrom));
}

void CDialog::TellToolTips(const MSG& mouse) noexcept {
    // None comes up while something is being dragged.
    constexpr WPARAM kButtons = MK_LBUTTON | MK_MBUTTON | MK_RBUTTON;
    if (!toolTips_ || (mouse.message == WM_MOUSEMOVE && (mouse.wParam & kButtons))) return;
    const int part =
        mouse.message == WM_MOUSEMOVE ? ToolTipPart(mouse.hwnd, mouse.pt) : toolTipPart_;
    if (part != std::exchange(toolTipPart_, part) && part != 0) AddToolTip(mouse.hwnd);
    MSG copy = mouse;
    ::SendMessageW(toolTips_, TTM_RELAYEVENT, 0, reinterpret_cast<LPARAM>(&copy));
}

INT_PTR CALLBACK CDialog::DialogProc(HWND dialog, UINT message, WPARAM, LPARAM lParam) {
    // The first message here is usually not the first of the window: those before it (fonts, the
    // first sizes) need no object.
    if (message != WM_INITDIALOG) return FALSE;
    const ModuleScope module;
    return reinterpret_cast<CDialog*>(lParam)->Initialise(dialog);
}

INT_PTR CDialog::Initialise(HWND dialog) noexcept {
    try {
        if (WindowRouter::connect(*this, dialog)) {
            WindowRouter::own(*this);
            if (!modal_) DialogNavigation::add(*this);
            centreTexts(dialog);
            return OnInitDialog();
        }
    } catch (...) {
        reportCurrentException();
    }
    failed_ = true;
    if (modal_) ::EndDialog(dialog, -1);
    return FALSE;
}

// Data exchange

void DataExchange::Text(int id, std::string& value) {
    if (!dialog_.Item(id)) return;
    if (save_) {
        value = dialog_.ItemText(id);
    } else {
        dialog_.SetItemText(id, value);
    }
}

void DataExchange::Integer(int id, int& value) {
    std::string text = std::to_string(value);
    Text(id, text);
    if (!save_) return;
    int entered = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), entered);
    if (parsed.ec == std::errc() && parsed.ptr == text.data() + text.size()) value = entered;
}

void DataExchange::Check(int id, bool& value) {
    if (!dialog_.Item(id)) return;
    if (save_) {
        value = dialog_.IsItemChecked(id);
    } else {
        dialog_.CheckItem(id, value);
    }
}

void DataExchange::Control(int id, CWnd& control) {
    if (!save_ && !control.HasWindow()) control.SubclassDlgItem(id, dialog_.Handle());
}

}  // namespace framework
