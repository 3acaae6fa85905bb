#include "scriptpane.h"

#include "look.h"

#include <base/utf16.h>
#include <framework/accessible.h>
#include <framework/centredtext.h>
#include <framework/cwaitcursor.h>
#include <workbench/texts.h>

#include <algorithm>
#include <utility>

using framework::BufferedPaint, framework::CWaitCursor, framework::SelectScope, framework::WindowDc,
    framework::heightOf, framework::widthOf;

namespace workbench {
namespace {

constexpr wchar_t kClassName[] = L"WorkbenchScriptPane";
constexpr UINT kLogId = 1, kLineId = 2;
constexpr int kPromptWidth = 52, kPromptMargin = 6;
constexpr std::size_t kHistoryLimit = 200;

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
    if (!log_.Create(Handle(), kLogId)) return false;
    line_.Create("", WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_BORDER | ES_AUTOHSCROLL,
                 {0, 0, 10, 10}, Handle(), kLineId);
    line_.SetFont(font);
    framework::centreText(line_.Handle());
    return line_.HasWindow();
}

void ScriptPane::setEvaluator(std::function<Answer(const std::string&)> evaluate) {
    line_.onEnter = [this, evaluate = std::move(evaluate)](const std::string& entered) {
        print("> " + entered, LogLine::kEntered);
        const CWaitCursor wait;
        const Answer answer = evaluate(entered);
        if (!answer.text.empty()) print(answer.text, answer.kind);
    };
}

void ScriptPane::OnSize(UINT, int width, int height) {
    const int line = lineHeight(), prompt = promptWidth();
    log_.MoveTo({0, 0, width, std::max(height - line - Scaled(2), 0)});
    log_.showEnd();
    line_.MoveTo({prompt, height - line, width, height});
    Invalidate(false);
}

int ScriptPane::promptWidth() const {
    const WindowDc dc(Handle());
    const SelectScope font(dc.get(), Look::of(Handle()).normal());
    RECT text{};
    ::DrawTextW(dc.get(), base::toWide(textOf(TextId::kScriptPrompt)).c_str(), -1, &text,
                DT_SINGLELINE | DT_CALCRECT);
    return std::max(Scaled(kPromptWidth), widthOf(text) + 2 * Scaled(kPromptMargin));
}

void ScriptPane::showLanguage() {
    framework::describeControl(log_.Handle(), {textOf(TextId::kScriptLog), {}});
    framework::describeControl(line_.Handle(),
                               framework::textsOfLabel(textOf(TextId::kScriptPrompt)));
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
                DT_SINGLELINE | DT_VCENTER);
}

}  // namespace workbench
