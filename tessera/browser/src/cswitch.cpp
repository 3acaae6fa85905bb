#include "cswitch.h"

#include "formbusy.h"
#include "usermessages.h"

#include <framework/accessible.h>
#include <framework/strings.h>
#include <resources/resource.h>

#include <algorithm>
#include <utility>

namespace tessera {
namespace {

constexpr std::uint32_t kAllChildren = 0xFFFFFFFF;
constexpr std::uint32_t kWordBits = 32;
// What is read of the mask field. The bits of further children stay as they are.
constexpr int kLongestMaskText = 2048;

}  // namespace

CSwitch::CSwitch(SwitchRecordBuffer& buffer, Notify notify, std::function<void()> refuse)
    : buffer_(buffer), notify_(std::move(notify)), refuse_(std::move(refuse)) {}

bool CSwitch::Create(HWND form) {
    return CDialog::Create(IDD_SWITCH, form);
}

LRESULT CSwitch::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    const FormBusy busy;
    return CDialog::WindowProc(message, wParam, lParam);
}

bool CSwitch::OnInitDialog() {
    mask_.Attach(Item(IDC_MASK));
    mask_.SetLimit(kLongestMaskText);
    index_.Attach(Item(IDC_MASK_INDEX));
    CheckItem(IDC_SHOW_MASK, showInViewport_);
    NameControls();
    Display();
    return true;
}

// The label stands before one field of three.
void CSwitch::NameControls() const {
    for (const auto& [id, text] : {std::pair{IDC_MASK, IDS_HELP_MASK},
                                   {IDC_MASK_INDEX, IDS_HELP_MASK_INDEX},
                                   {IDC_MASK_SPIN, IDS_HELP_MASK_SPIN}})
        framework::describeControl(Item(id), {framework::loadString(text), {}});
}

void CSwitch::EnableControls(bool enabled) {
    for (HWND child = ::GetWindow(Handle(), GW_CHILD); child;
         child = ::GetWindow(child, GW_HWNDNEXT))
        ::EnableWindow(child, enabled);
}

// ---------------------------------------------------------------- the current mask

// A word of the current mask, which is always there.
std::uint32_t& CSwitch::Word(std::int32_t position) {
    return *Record().maskWords.at(Record().currentMask * Record().wordsPerMask + position);
}

std::string CSwitch::MaskText() {
    std::string text;
    const auto words = static_cast<std::uint32_t>(Record().wordsPerMask);
    const std::uint32_t bits = std::min(buffer_.childCount, words * kWordBits);
    for (std::uint32_t bit = 0; bit < bits; ++bit) {
        const std::uint32_t word = Word(static_cast<std::int32_t>(bit / kWordBits));
        text += (word >> bit % kWordBits & 1U) != 0 ? '1' : '0';
    }
    return text;
}

void CSwitch::Display() {
    index_.SetText(std::to_string(Record().currentMask));
    mask_.SetText(MaskText());
    SendNotification();
}

void CSwitch::SendNotification() {
    notify_(buffer_, showInViewport_);
}

// ---------------------------------------------------------------- commands

void CSwitch::Fill(std::uint32_t word) {
    for (std::int32_t i = 0; i < Record().wordsPerMask; ++i) Word(i) = word;
}

void CSwitch::Invert() {
    for (std::int32_t i = 0; i < Record().wordsPerMask; ++i) Word(i) = ~Word(i);
}

void CSwitch::AddMask() {
    FltSwitch& record = Record();
    const std::int32_t masks = record.maskCount();
    const std::int32_t end = masks * record.wordsPerMask;
    if (record.maskWords.count() + record.wordsPerMask > FltSwitch::kMaxWrittenMaskWords) {
        refuse_();
        return;
    }
    for (std::int32_t i = 0; i < record.wordsPerMask; ++i)
        record.maskWords.insertAt(end + i, kAllChildren);
    record.currentMask = masks;
    Display();
}

void CSwitch::DeleteMask() {
    FltSwitch& record = Record();
    if (record.maskCount() < 2) {
        beepSimply();
        return;
    }
    const std::int32_t start = record.currentMask * record.wordsPerMask;
    for (std::int32_t i = 0; i < record.wordsPerMask; ++i) record.maskWords.eraseAt(start);
    if (record.currentMask > 0) --record.currentMask;
    Display();
}

// The upper arrow, a negative step, goes on to the next mask, on purpose.
void CSwitch::Step(int delta) {
    FinishTyping();
    const std::int32_t mask = Record().currentMask + (delta < 1 ? 1 : -1);
    if (mask < 0 || mask >= Record().maskCount()) {
        beepSimply();
        return;
    }
    Record().currentMask = mask;
    Display();
}

void CSwitch::ReadMask() {
    mask_.SetModified(false);
    const std::string text = mask_.Text(kLongestMaskText);
    const auto bits = static_cast<std::uint32_t>(Record().wordsPerMask) * kWordBits;
    const auto end = std::min<std::uint32_t>(
        bits, buffer_.childCount > kLongestMaskText ? kLongestMaskText : bits);
    for (std::uint32_t bit = 0; bit < end; ++bit) {
        std::uint32_t& word = Word(static_cast<std::int32_t>(bit / kWordBits));
        const std::uint32_t flag = 1U << bit % kWordBits;
        const bool set = bit < text.size() && text[bit] == '1';
        word = set ? word | flag : word & ~flag;
    }
}

// Notifies whether or not a bit has changed. The text stays as it was typed.
void CSwitch::LeaveMask() {
    ReadMask();
    SendNotification();
}

void CSwitch::FinishTyping() {
    if (mask_.IsModified()) LeaveMask();
}

bool CSwitch::OnCommand(int id, UINT code, HWND) {
    if (id == IDC_MASK && code == EN_KILLFOCUS) {
        LeaveMask();
        return true;
    }
    if (code != BN_CLICKED) return false;
    switch (id) {
        case IDC_MASK_CLEAR:
            Fill(0);
            break;
        case IDC_MASK_SET:
            Fill(kAllChildren);
            break;
        case IDC_MASK_INVERT:
            Invert();
            break;
        case IDC_MASK_NEW:
            AddMask();
            return true;
        case IDC_MASK_DELETE:
            DeleteMask();
            return true;
        case IDC_SHOW_MASK:
            showInViewport_ = IsItemChecked(IDC_SHOW_MASK);
            SendNotification();
            return true;
        default:
            return false;
    }
    Display();
    return true;
}

bool CSwitch::OnNotify(int id, NMHDR& header, LRESULT& result) {
    if (id != IDC_MASK_SPIN || header.code != UDN_DELTAPOS) return false;
    Step(reinterpret_cast<const NMUPDOWN&>(header).iDelta);
    result = TRUE;  // the control's own position means nothing
    return true;
}

// Escape takes back what has been typed, or else closes the editor.
void CSwitch::OnCancel() {
    if (mask_.IsModified())
        mask_.SetText(MaskText());
    else
        CDialog::OnCancel();
}

// Enter takes what has been typed; the editor stays.
void CSwitch::OnOK() {
    if (!mask_.HasFocus()) return;
    ReadMask();
    Display();
}

}  // namespace tessera
