// The editor of a switch's masks.
#pragma once

#include <framework/cdialog.h>
#include <framework/controls.h>
#include <quillon/fltswitch.h>
#include <tessera/browserexports.h>

#include <cstdint>
#include <functional>
#include <string>

namespace tessera {

/// A switch being edited. The client fills the first member and knows no other.
struct SwitchRecordBuffer {
    std::uint32_t childCount = 0;  ///< bits shown of each mask
    FltSwitch record;
    NodeHandle node = 0;
};

/// A small window beside the form that shows one mask of a switch as a row of "0" and "1", a
/// character for each child, and steps through, adds, deletes and changes masks. The form is
/// notified of every change at once. Closing hides it.
class CSwitch : public framework::CDialog {
public:
    /// Called with the switch after every change and whenever it is displayed; the flag says
    /// whether the viewports are to follow.
    using Notify = std::function<void(SwitchRecordBuffer&, bool showInViewport)>;

    /// `buffer` is not owned and must outlive the editor. `refuse` shows the user that the record
    /// has no room for another mask.
    CSwitch(SwitchRecordBuffer& buffer, Notify notify, std::function<void()> refuse);

    /// Creates the dialog, hidden. False when the platform refuses.
    bool Create(HWND form);

    /// Shows the buffer's current mask and notifies.
    void Display();

    /// Takes what has been typed into the mask field, if anything has.
    void FinishTyping();

    /// Its texts are those of the present language.
    void NameControls() const;

    /// Enables or disables everything in it.
    void EnableControls(bool enabled);

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    bool OnInitDialog() override;
    void OnOK() override;
    void OnCancel() override;
    void OnClose() override { Hide(); }
    bool OnCommand(int id, UINT code, HWND control) override;
    bool OnNotify(int id, NMHDR& header, LRESULT& result) override;

private:
    FltSwitch& Record() noexcept { return buffer_.record; }
    std::uint32_t& Word(std::int32_t position);
    void SendNotification();
    void Fill(std::uint32_t word);
    void Invert();
    void AddMask();
    void DeleteMask();
    void Step(int delta);
    void ReadMask();
    void LeaveMask();
    std::string MaskText();

    SwitchRecordBuffer& buffer_;
    Notify notify_;
    std::function<void()> refuse_;
    framework::CEdit mask_;
    framework::CEdit index_;
    bool showInViewport_ = true;
};

}  // namespace tessera
