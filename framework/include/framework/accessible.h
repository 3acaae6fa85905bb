// What screen readers and other assistive programs are told of controls.
#pragma once

#include <framework/win32.h>

#include <objbase.h>
#include <oleacc.h>

#include <string>
#include <string_view>

namespace framework {

/// An accessible object over a window: answers as the platform's own object for the window does,
/// and what a derived class overrides otherwise. Counted; it outlives its window and then refuses
/// everything. No operation throws.
class Accessible : public IAccessible {
public:
    /// With one reference, the maker's.
    explicit Accessible(HWND window) noexcept;

    /// The window goes.
    void Detach() noexcept;
    /// The answer to WM_GETOBJECT for OBJID_CLIENT.
    LRESULT Answer(WPARAM wParam) noexcept;
    /// Whether a WM_GETOBJECT with that parameter asks for the client area's object.
    static bool IsAskedFor(LPARAM lParam) noexcept {
        return static_cast<LONG>(lParam) == static_cast<LONG>(OBJID_CLIENT);
    }

    STDMETHODIMP QueryInterface(REFIID id, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;
    // Late binding is not offered.
    STDMETHODIMP GetTypeInfoCount(UINT* count) override;
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                        UINT*) override {
        return E_NOTIMPL;
    }

    STDMETHODIMP get_accParent(IDispatch** parent) override;
    STDMETHODIMP get_accChildCount(long* count) override;
    STDMETHODIMP get_accChild(VARIANT child, IDispatch** object) override;
    STDMETHODIMP get_accName(VARIANT child, BSTR* name) override;
    STDMETHODIMP get_accValue(VARIANT child, BSTR* value) override;
    STDMETHODIMP get_accDescription(VARIANT child, BSTR* description) override;
    STDMETHODIMP get_accRole(VARIANT child, VARIANT* role) override;
    STDMETHODIMP get_accState(VARIANT child, VARIANT* state) override;
    STDMETHODIMP get_accHelp(VARIANT child, BSTR* help) override;
    STDMETHODIMP get_accHelpTopic(BSTR* file, VARIANT child, long* topic) override;
    STDMETHODIMP get_accKeyboardShortcut(VARIANT child, BSTR* shortcut) override;
    STDMETHODIMP get_accFocus(VARIANT* child) override;
    STDMETHODIMP get_accSelection(VARIANT* children) override;
    STDMETHODIMP get_accDefaultAction(VARIANT child, BSTR* action) override;
    STDMETHODIMP accSelect(long flags, VARIANT child) override;
    STDMETHODIMP accLocation(long* left, long* top, long* width, long* height,
                             VARIANT child) override;
    STDMETHODIMP accNavigate(long direction, VARIANT start, VARIANT* end) override;
    STDMETHODIMP accHitTest(long left, long top, VARIANT* child) override;
    STDMETHODIMP accDoDefaultAction(VARIANT child) override;
    STDMETHODIMP put_accName(VARIANT child, BSTR name) override;
    STDMETHODIMP put_accValue(VARIANT child, BSTR value) override;

protected:
    virtual ~Accessible();

    static bool IsSelf(const VARIANT& child) noexcept {
        return child.vt == VT_I4 && child.lVal == CHILDID_SELF;
    }
    /// S_FALSE for an empty text.
    static HRESULT Give(std::string_view utf8, BSTR* text) noexcept;
    static HRESULT Give(long number, VARIANT* value) noexcept;

private:
    template <typename Operation, typename... Arguments>
    HRESULT Ask(Operation operation, Arguments... arguments);

    LONG references_ = 1;
    IAccessible* standard_ = nullptr;  ///< the platform's
};

/// What a control is to a user who does not see where it stands.
struct ControlTexts {
    std::string name;
    std::string shortcut;  ///< as in "Alt+R"; may be empty
};

/// Those of a control whose label reads like that: "Sc&ript:", or as behind Chinese words "(&R)".
ControlTexts textsOfLabel(std::string_view label);

/// Tells assistive programs the texts of a control; later texts replace earlier ones.
void describeControl(HWND control, ControlTexts texts);

}  // namespace framework
