#include "logview.h"

#include "look.h"

#include <base/utf16.h>
#include <workbench/texts.h>

#include <richedit.h>
#include <windowsx.h>

namespace workbench {
namespace {

constexpr wchar_t kControl[] = L"RICHEDIT50W";
constexpr int kMostCharacters = 1 << 20;  // the oldest half goes when it is full
constexpr int kSelectAllEntry = 1, kCopyEntry = 2, kClearEntry = 3;

COLORREF colorOf(LogLine kind) {
    switch (kind) {
        case LogLine::kEntered:
            return ::GetSysColor(COLOR_GRAYTEXT);
        case LogLine::kWarning:
            return RGB(156, 87, 0);
        case LogLine::kError:
            return RGB(192, 0, 0);
        default:
            return ::GetSysColor(COLOR_WINDOWTEXT);
    }
}

// Not every version of the control looks for another font when its own has no such character.
bool isChinese(wchar_t c) {
    return c >= 0x2E80;
}

const std::wstring kFace = L"Tahoma";

int CALLBACK considerFace(const LOGFONTW* font, const TEXTMETRICW*, DWORD, LPARAM found) {
    auto& face = *reinterpret_cast<std::wstring*>(found);
    const bool upright = font->lfFaceName[0] != L'@';
    const bool preferred = ::lstrcmpiW(font->lfFaceName, L"Microsoft YaHei") == 0;
    if (preferred || (upright && face.empty())) face = font->lfFaceName;
    return !preferred;
}

/// A font of the system's with Chinese characters; the log's own where there is none.
const std::wstring& chineseFace() {
    static const std::wstring face = [] {
        std::wstring found;
        LOGFONTW wanted{};
        wanted.lfCharSet = GB2312_CHARSET;
        const framework::WindowDc dc(nullptr);
        ::EnumFontFamiliesExW(dc.get(), &wanted, considerFace, reinterpret_cast<LPARAM>(&found), 0);
        return found.empty() ? kFace : found;
    }();
    return face;
}

bool isCtrlDown() {
    return ::GetKeyState(VK_CONTROL) < 0;
}

}  // namespace

bool LogView::Create(HWND parent, UINT id) {
    // The library of the control, which stays loaded as long as the program runs.
    static const HMODULE library = ::LoadLibraryW(L"msftedit.dll");
    if (!library) return false;
    if (!CreateEx(0, kControl, "",
                  WS_CHILD | WS_VISIBLE | WS_VSCROLL | WS_BORDER | WS_TABSTOP | ES_MULTILINE |
                      ES_READONLY | ES_AUTOVSCROLL | ES_NOHIDESEL,
                  {0, 0, 10, 10}, parent, id))
        return false;
    SetFont(Look::of(Handle()).script());
    Send(EM_SETUNDOLIMIT);
    Send(EM_EXLIMITTEXT, 0, 2 * kMostCharacters);
    Send(EM_SETBKGNDCOLOR, FALSE, static_cast<LPARAM>(::GetSysColor(COLOR_WINDOW)));
    return true;
}

bool LogView::hasSelection() const {
    CHARRANGE range{};
    Send(EM_EXGETSEL, 0, reinterpret_cast<LPARAM>(&range));
    return range.cpMin != range.cpMax;
}

void LogView::selectAll() const {
    CHARRANGE all{0, -1};
    Send(EM_EXSETSEL, 0, reinterpret_cast<LPARAM>(&all));
}

void LogView::add(std::string_view line, LogLine kind) {
    CHARRANGE selected{};
    Send(EM_EXGETSEL, 0, reinterpret_cast<LPARAM>(&selected));
    const bool reading = selected.cpMin != selected.cpMax;
    SetRedraw(false);
    const bool full = length_ > kMostCharacters;
    if (full) drop(kMostCharacters / 2);
    CHARRANGE end{2 * kMostCharacters, 2 * kMostCharacters};
    Send(EM_EXSETSEL, 0, reinterpret_cast<LPARAM>(&end));
    std::wstring text = base::toWide(std::string(line));
    if (length_ > 0) text.insert(0, L"\r\n");
    length_ += static_cast<int>(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const bool chinese = isChinese(text[at]);
        std::size_t next = at + 1;
        while (next < text.size() && isChinese(text[next]) == chinese) ++next;
        addRun(text.substr(at, next - at), kind, chinese);
        at = next;
    }
    if (reading && !full) Send(EM_EXSETSEL, 0, reinterpret_cast<LPARAM>(&selected));
    SetRedraw(true);
    if (!reading) showEnd();
    Invalidate(false);
}

void LogView::addRun(const std::wstring& text, LogLine kind, bool chinese) const {
    CHARFORMAT2W format{};
    format.cbSize = sizeof format;
    format.dwMask = CFM_COLOR | CFM_FACE | CFM_CHARSET;
    format.crTextColor = colorOf(kind);
    format.bCharSet = chinese ? GB2312_CHARSET : DEFAULT_CHARSET;
    const std::wstring& face = chinese ? chineseFace() : kFace;
    format.szFaceName[face.copy(format.szFaceName, LF_FACESIZE - 1)] = 0;
    Send(EM_SETCHARFORMAT, SCF_SELECTION, reinterpret_cast<LPARAM>(&format));
    Send(EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(text.c_str()));
}

void LogView::drop(int characters) {
    CHARRANGE oldest{0, characters};
    Send(EM_EXSETSEL, 0, reinterpret_cast<LPARAM>(&oldest));
    Send(EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(L""));
    length_ = ::GetWindowTextLengthW(Handle());
}

void LogView::showEnd() const {
    Send(WM_VSCROLL, SB_BOTTOM);
}

void LogView::clear() {
    SetText("");
    length_ = 0;
}

void LogView::OnKeyDown(UINT key, UINT repeat, UINT flags) {
    if (isCtrlDown() && key == 'A') return selectAll();
    if (isCtrlDown() && key == 'L') return clear();
    CWnd::OnKeyDown(key, repeat, flags);
}

UINT LogView::OnGetDlgCode(const MSG*) {
    return DLGC_WANTARROWS | DLGC_WANTCHARS;
}

LRESULT LogView::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != WM_CONTEXTMENU) return CWnd::WindowProc(message, wParam, lParam);
    POINT at{GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
    if (at.x == -1 && at.y == -1) {  // from the keyboard
        const RECT area = WindowRect();
        at = {area.left + Scaled(8), area.top + Scaled(8)};
    }
    showMenu(at);
    return 0;
}

void LogView::showMenu(POINT screen) {
    const HMENU menu = ::CreatePopupMenu();
    const auto add = [&](int entry, TextId text, bool enabled) {
        ::AppendMenuW(menu, MF_STRING | (enabled ? MF_ENABLED : MF_GRAYED),
                      static_cast<UINT_PTR>(entry), base::toWide(textOf(text)).c_str());
    };
    const bool any = length_ > 0;
    add(kCopyEntry, TextId::kCopyEntry, hasSelection());
    add(kSelectAllEntry, TextId::kSelectAllEntry, any);
    ::AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
    add(kClearEntry, TextId::kClearEntry, any);
    const int chosen = ::TrackPopupMenu(menu, TPM_RETURNCMD | TPM_RIGHTBUTTON, screen.x, screen.y,
                                        0, Handle(), nullptr);
    ::DestroyMenu(menu);
    if (chosen == kSelectAllEntry) selectAll();
    if (chosen == kCopyEntry) copy();
    if (chosen == kClearEntry) clear();
}

}  // namespace workbench
