#include "scriptpane.h"

#include "look.h"

#include <base/utf16.h>
#include <framework/cwaitcursor.h>
#include <workbench/texts.h>

#include <algorithm>
#include <utility>

using framework::BufferedPaint, framework::CEdit, framework::CWaitCursor, framework::SelectScope,
    framework::WindowDc, framework::heightOf, framework::widthOf;

namespace workbench {
namespace {

constexpr wchar_t kClassName[] = L"WorkbenchScriptPane";
constexpr UINT kLogId = 1, kLineId = 2;
constexpr int kPromptWidth = 52, kPromptMargin = 6;
constexpr std::size_t kHistoryLimit = 200;
constexpr int kLogLimit = 1 << 20;  // characters; the oldest half goes when it is full

}  // namespace

void HistoryEdit::OnKeyDown(UINT key, UINT repeat, UINT flags) {
    if (key == VK_UP && position_ > 0) return showEntry(position_ - 1);
    if (key == VK_DOWN && position_ < history_.size()) return showEntry(position_ + 1);
    CEdit::OnKeyDown(key, repeat, flags);
}

void HistoryEdit::showEntry(std::size_t position) {
    position_ = position;
    const std::string entry = position < history_.size() ? history_[position] : std::string();
    SetText(entry);
    const int end = static_cast<int>(base::toWide(entry).size());
    Select(end, end);
}

void HistoryEdit::OnChar(UINT utf16, UINT repeat, UINT flags) {
    if (utf16 != L'\r') return CEdit::OnChar(utf16, repeat, flags);
    const std::string entered = Text();
    if (entered.find_first_not_of(" \t") == std::string::npos) return;
    if (history_.empty() || history_.back() != entered) history_.push_back(entered);
    if (history_.size() > kHistoryLimit) history_.erase(history_.begin());
    position_ = history_.size();
    SetText("");
    onEnter(entered);
}

UINT HistoryEdit::OnGetDlgCode(const MSG*) {
    return DLGC_WANTARROWS | DLGC_WANTCHARS | DLGC_HASSETSEL;
}

bool ScriptPane::Create(HWND parent, UINT id) {
    RegisterWindowClass(kClassName, 0, nullptr, nullptr);
    if (!CreateEx(WS_EX_CONTROLPARENT, kClassName, "",
                  WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN | WS_CLIPSIBLINGS, {0, 0, 10, 10}, parent,
                  id))
        return false;
    const HFONT font = Look::of(Handle()).script();
    log_.Create("",
                WS_CHILD | WS_VISIBLE | WS_VSCROLL | WS_BORDER | ES_MULTILINE | ES_READONLY |
                    ES_AUTOVSCROLL | ES_NOHIDESEL,
                {0, 0, 10, 10}, Handle(), kLogId);
    log_.SetFont(font);
    log_.SetLimit(0);
    line_.Create("", WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_BORDER | ES_AUTOHSCROLL,
                 {0, 0, 10, 10}, Handle(), kLineId);
    line_.SetFont(font);
    return log_.HasWindow() && line_.HasWindow();
}

void ScriptPane::setEvaluator(std::function<std::string(const std::string&)> evaluate) {
    line_.onEnter = [this, evaluate = std::move(evaluate)](const std::string& entered) {
        print("> " + entered);
        const CWaitCursor wait;
        const std::string result = evaluate(entered);
        if (!result.empty()) print(result);
    };
}

void ScriptPane::print(const std::string& line) {
    if (::GetWindowTextLengthW(log_.Handle()) > kLogLimit) {
        log_.Select(0, kLogLimit / 2);
        log_.ReplaceSelection("", false);
    }
    log_.Append(empty_ ? line : "\r\n" + line);
    empty_ = false;
}

void ScriptPane::OnSize(UINT, int width, int height) {
    const int line = lineHeight(), prompt = promptWidth();
    log_.MoveTo({0, 0, width, std::max(height - line - Scaled(2), 0)});
    line_.MoveTo({prompt, height - line, width, height});
    Invalidate(false);
}

int ScriptPane::promptWidth() const {
    const WindowDc dc(Handle());
    const SelectScope font(dc.get(), Look::of(Handle()).normal());
    const std::wstring prompt = base::toWide(textOf(TextId::kScriptPrompt));
    SIZE size;
    ::GetTextExtentPoint32W(dc.get(), prompt.c_str(), static_cast<int>(prompt.size()), &size);
    return std::max(Scaled(kPromptWidth), static_cast<int>(size.cx) + 2 * Scaled(kPromptMargin));
}

void ScriptPane::showLanguage() {
    const RECT area = ClientRect();
    OnSize(SIZE_RESTORED, widthOf(area), heightOf(area));
}

void ScriptPane::OnPaint() {
    const BufferedPaint paint(Handle());
    RECT area = ClientRect();
    ::FillRect(paint.dc(), &area, ::GetSysColorBrush(COLOR_BTNFACE));
    const SelectScope font(paint.dc(), Look::of(Handle()).normal());
    ::SetBkMode(paint.dc(), TRANSPARENT);
    area.left = Scaled(kPromptMargin);
    area.top = area.bottom - lineHeight();
    ::DrawTextW(paint.dc(), base::toWide(textOf(TextId::kScriptPrompt)).c_str(), -1, &area,
                DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX);
}

// A read-only field is grey by default; the log reads better on the color of paper.
HBRUSH ScriptPane::OnCtlColor(HDC dc, HWND, UINT) {
    ::SetTextColor(dc, ::GetSysColor(COLOR_WINDOWTEXT));
    ::SetBkColor(dc, ::GetSysColor(COLOR_WINDOW));
    return ::GetSysColorBrush(COLOR_WINDOW);
}

}  // namespace workbench
