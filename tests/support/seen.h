// A control as assistive programs see it.
#pragma once

#include <framework/win32.h>

#include <commctrl.h>
#include <gtest/gtest.h>
#include <objbase.h>
#include <oleacc.h>

#include <string>
#include <string_view>
#include <vector>

/// The accessible object of a control, as oleacc gives it.
class Seen {
public:
    explicit Seen(HWND window) {
        ::AccessibleObjectFromWindow(window, static_cast<DWORD>(OBJID_CLIENT),
                                     __uuidof(IAccessible), reinterpret_cast<void**>(&object_));
        EXPECT_TRUE(object_);
    }
    ~Seen() {
        if (object_) object_->Release();
    }
    Seen(const Seen&) = delete;
    Seen& operator=(const Seen&) = delete;

    std::wstring name(long id = 0) const { return text(&IAccessible::get_accName, id); }
    std::wstring value(long id) const { return text(&IAccessible::get_accValue, id); }
    std::wstring description(long id) const { return text(&IAccessible::get_accDescription, id); }
    std::wstring keys() const { return text(&IAccessible::get_accKeyboardShortcut, 0); }
    long role(long id = 0) const { return number(&IAccessible::get_accRole, id); }
    long state(long id) const { return number(&IAccessible::get_accState, id); }
    long children() const {
        long count = 0;
        object_->get_accChildCount(&count);
        return count;
    }
    /// Where a child is on the screen.
    RECT place(long id) const {
        long left = 0, top = 0, width = 0, height = 0;
        EXPECT_EQ(object_->accLocation(&left, &top, &width, &height, child(id)), S_OK);
        return {left, top, left + width, top + height};
    }
    bool act(long id) const { return object_->accDoDefaultAction(child(id)) == S_OK; }

private:
    static VARIANT child(long id) {
        VARIANT value{};
        value.vt = VT_I4;
        value.lVal = id;
        return value;
    }
    std::wstring text(HRESULT (STDMETHODCALLTYPE IAccessible::*what)(VARIANT, BSTR*),
                      long id) const {
        BSTR given = nullptr;
        (object_->*what)(child(id), &given);
        std::wstring answer = given ? given : L"";
        ::SysFreeString(given);
        return answer;
    }
    long number(HRESULT (STDMETHODCALLTYPE IAccessible::*what)(VARIANT, VARIANT*), long id) const {
        VARIANT answer{};
        return SUCCEEDED((object_->*what)(child(id), &answer)) ? answer.lVal : -1;
    }

    IAccessible* object_ = nullptr;
};

/// The numbers of those controls of a window that have no name, though more than a frame or a
/// label.
inline std::vector<int> nameless(HWND window) {
    std::vector<int> found;
    for (HWND child = GetWindow(window, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        wchar_t kind[32] = L"";
        GetClassNameW(child, kind, 32);
        const bool isUsed = std::wstring_view(kind) == UPDOWN_CLASSW ||
                            (GetWindowLongW(child, GWL_STYLE) & WS_TABSTOP) != 0;
        if (isUsed && Seen(child).name().empty()) found.push_back(GetDlgCtrlID(child));
    }
    return found;
}
