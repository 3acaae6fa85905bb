#include <base/utf16.h>
#include <framework/accessible.h>

#include <memory>
#include <unordered_map>
#include <utility>

namespace framework {

Accessible::Accessible(HWND window) noexcept {
    ::CreateStdAccessibleObject(window, OBJID_CLIENT, __uuidof(IAccessible),
                                reinterpret_cast<void**>(&standard_));
}

Accessible::~Accessible() {
    Detach();
}

void Accessible::Detach() noexcept {
    if (IAccessible* const standard = std::exchange(standard_, nullptr)) standard->Release();
}

// The object goes to its asker by COM, which neither a host nor its plug-ins need have begun on
// this thread. It stays until the thread ends, as what was given away does.
LRESULT Accessible::Answer(WPARAM wParam) noexcept {
    thread_local const HRESULT begun = ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    if (FAILED(begun) && begun != RPC_E_CHANGED_MODE) return 0;
    return ::LresultFromObject(__uuidof(IAccessible), wParam, this);
}

HRESULT Accessible::Give(std::string_view utf8, BSTR* text) noexcept {
    if (!text) return E_POINTER;
    *text = nullptr;
    if (utf8.empty()) return S_FALSE;
    try {
        *text = ::SysAllocString(base::toWide(utf8).c_str());
    } catch (...) {
    }
    return *text ? S_OK : E_OUTOFMEMORY;
}

HRESULT Accessible::Give(long number, VARIANT* value) noexcept {
    if (!value) return E_POINTER;
    value->vt = VT_I4;
    value->lVal = number;
    return S_OK;
}

// ---------------------------------------------------------------- IUnknown and IDispatch

STDMETHODIMP Accessible::QueryInterface(REFIID id, void** object) {
    if (!object) return E_POINTER;
    *object = nullptr;
    if (id != IID_IUnknown && id != IID_IDispatch && id != __uuidof(IAccessible))
        return E_NOINTERFACE;
    *object = static_cast<IAccessible*>(this);
    AddRef();
    return S_OK;
}

STDMETHODIMP_(ULONG) Accessible::AddRef() {
    return static_cast<ULONG>(::InterlockedIncrement(&references_));
}

STDMETHODIMP_(ULONG) Accessible::Release() {
    const LONG left = ::InterlockedDecrement(&references_);
    if (left == 0) delete this;
    return static_cast<ULONG>(left);
}

STDMETHODIMP Accessible::GetTypeInfoCount(UINT* count) {
    if (!count) return E_POINTER;
    *count = 0;
    return S_OK;
}

// ---------------------------------------------------------------- as the platform's object

template <typename Operation, typename... Arguments>
HRESULT Accessible::Ask(Operation operation, Arguments... arguments) {
    return standard_ ? (standard_->*operation)(arguments...) : CO_E_OBJNOTCONNECTED;
}

STDMETHODIMP Accessible::get_accParent(IDispatch** parent) {
    return Ask(&IAccessible::get_accParent, parent);
}
STDMETHODIMP Accessible::get_accChildCount(long* count) {
    return Ask(&IAccessible::get_accChildCount, count);
}
STDMETHODIMP Accessible::get_accChild(VARIANT child, IDispatch** object) {
    return Ask(&IAccessible::get_accChild, child, object);
}
STDMETHODIMP Accessible::get_accName(VARIANT child, BSTR* name) {
    return Ask(&IAccessible::get_accName, child, name);
}
STDMETHODIMP Accessible::get_accValue(VARIANT child, BSTR* value) {
    return Ask(&IAccessible::get_accValue, child, value);
}
STDMETHODIMP Accessible::get_accDescription(VARIANT child, BSTR* description) {
    return Ask(&IAccessible::get_accDescription, child, description);
}
STDMETHODIMP Accessible::get_accRole(VARIANT child, VARIANT* role) {
    return Ask(&IAccessible::get_accRole, child, role);
}
STDMETHODIMP Accessible::get_accState(VARIANT child, VARIANT* state) {
    return Ask(&IAccessible::get_accState, child, state);
}
STDMETHODIMP Accessible::get_accHelp(VARIANT child, BSTR* help) {
    return Ask(&IAccessible::get_accHelp, child, help);
}
STDMETHODIMP Accessible::get_accHelpTopic(BSTR* file, VARIANT child, long* topic) {
    return Ask(&IAccessible::get_accHelpTopic, file, child, topic);
}
STDMETHODIMP Accessible::get_accKeyboardShortcut(VARIANT child, BSTR* shortcut) {
    return Ask(&IAccessible::get_accKeyboardShortcut, child, shortcut);
}
STDMETHODIMP Accessible::get_accFocus(VARIANT* child) {
    return Ask(&IAccessible::get_accFocus, child);
}
STDMETHODIMP Accessible::get_accSelection(VARIANT* children) {
    return Ask(&IAccessible::get_accSelection, children);
}
STDMETHODIMP Accessible::get_accDefaultAction(VARIANT child, BSTR* action) {
    return Ask(&IAccessible::get_accDefaultAction, child, action);
}
STDMETHODIMP Accessible::accSelect(long flags, VARIANT child) {
    return Ask(&IAccessible::accSelect, flags, child);
}
STDMETHODIMP Accessible::accLocation(long* left, long* top, long* width, long* height,
                                     VARIANT child) {
    return Ask(&IAccessible::accLocation, left, top, width, height, child);
}
STDMETHODIMP Accessible::accNavigate(long direction, VARIANT start, VARIANT* end) {
    return Ask(&IAccessible::accNavigate, direction, start, end);
}
STDMETHODIMP Accessible::accHitTest(long left, long top, VARIANT* child) {
    return Ask(&IAccessible::accHitTest, left, top, child);
}
STDMETHODIMP Accessible::accDoDefaultAction(VARIANT child) {
    return Ask(&IAccessible::accDoDefaultAction, child);
}
STDMETHODIMP Accessible::put_accName(VARIANT child, BSTR name) {
    return Ask(&IAccessible::put_accName, child, name);
}
STDMETHODIMP Accessible::put_accValue(VARIANT child, BSTR value) {
    return Ask(&IAccessible::put_accValue, child, value);
}

// ---------------------------------------------------------------- texts of a control

namespace {

/// What a control of the platform is, by its class and type; 0 for another one.
long roleOf(HWND control) {
    wchar_t name[32] = L"";
    ::GetClassNameW(control, name, 32);
    if (::lstrcmpiW(name, WC_BUTTONW) == 0) {
        switch (::GetWindowLongW(control, GWL_STYLE) & BS_TYPEMASK) {
            case BS_CHECKBOX:
            case BS_AUTOCHECKBOX:
            case BS_3STATE:
            case BS_AUTO3STATE:
                return ROLE_SYSTEM_CHECKBUTTON;
            case BS_RADIOBUTTON:
            case BS_AUTORADIOBUTTON:
                return ROLE_SYSTEM_RADIOBUTTON;
            case BS_GROUPBOX:
                return ROLE_SYSTEM_GROUPING;
            default:
                return ROLE_SYSTEM_PUSHBUTTON;
        }
    }
    struct Row {
        const wchar_t* name;
        long role;
    };
    constexpr Row kRows[] = {
        {WC_TREEVIEWW, ROLE_SYSTEM_OUTLINE},    {WC_EDITW, ROLE_SYSTEM_TEXT},
        {WC_COMBOBOXW, ROLE_SYSTEM_COMBOBOX},   {WC_LISTBOXW, ROLE_SYSTEM_LIST},
        {WC_LISTVIEWW, ROLE_SYSTEM_LIST},       {TRACKBAR_CLASSW, ROLE_SYSTEM_SLIDER},
        {UPDOWN_CLASSW, ROLE_SYSTEM_SPINBUTTON}};
    for (const Row& row : kRows)
        if (::lstrcmpiW(name, row.name) == 0) return row.role;
    return 0;
}

class DescribedControl final : public Accessible {
public:
    explicit DescribedControl(HWND control) noexcept
        : Accessible(control), role_(roleOf(control)) {}

    ControlTexts texts;

    // Not every version knows more of its own controls than that they are windows.
    STDMETHODIMP get_accRole(VARIANT child, VARIANT* role) override {
        const HRESULT result = Accessible::get_accRole(child, role);
        const bool isPlain = FAILED(result) || role->vt != VT_I4 ||
                             role->lVal == ROLE_SYSTEM_CLIENT || role->lVal == ROLE_SYSTEM_WINDOW;
        return IsSelf(child) && role_ && isPlain ? Give(role_, role) : result;
    }

    STDMETHODIMP get_accName(VARIANT child, BSTR* name) override {
        return IsSelf(child) ? Give(texts.name, name) : Accessible::get_accName(child, name);
    }
    STDMETHODIMP get_accKeyboardShortcut(VARIANT child, BSTR* shortcut) override {
        return IsSelf(child) && !texts.shortcut.empty()
                   ? Give(texts.shortcut, shortcut)
                   : Accessible::get_accKeyboardShortcut(child, shortcut);
    }

private:
    const long role_;
};

struct Description {
    DescribedControl* object;
    WNDPROC former;
};

// A map of our own: the platform's ways to keep something with a window cost a call of its server
// for each message, which a tree of 100,000 items gets many of. Never destroyed: windows of static
// objects are destroyed while static objects are.
std::unordered_map<HWND, Description>& descriptions() {
    static auto* const map = new std::unordered_map<HWND, Description>;
    return *map;
}

LRESULT CALLBACK tellTexts(HWND control, UINT message, WPARAM wParam, LPARAM lParam) {
    const auto found = descriptions().find(control);
    if (found == descriptions().end()) return ::DefWindowProcW(control, message, wParam, lParam);
    const Description description = found->second;
    if (message == WM_GETOBJECT && Accessible::IsAskedFor(lParam))
        return description.object->Answer(wParam);
    if (message == WM_NCDESTROY) {
        descriptions().erase(found);
        description.object->Detach();
        description.object->Release();
    }
    return ::CallWindowProcW(description.former, control, message, wParam, lParam);
}

}  // namespace

ControlTexts textsOfLabel(std::string_view label) {
    ControlTexts texts;
    for (const std::string_view colon : {":", "\uFF1A"})
        if (label.ends_with(colon)) label.remove_suffix(colon.size());
    for (std::size_t i = 0; i < label.size(); ++i) {
        if (label[i] != '&') {
            texts.name += label[i];
            continue;
        }
        if (++i == label.size()) break;
        texts.shortcut = {'A', 'l', 't', '+', static_cast<char>(label[i] & ~0x20)};
        const bool isAppended = texts.name.ends_with('(') && label.substr(i + 1) == ")";
        if (isAppended) {
            texts.name.pop_back();
            break;
        }
        texts.name += label[i];
    }
    return texts;
}

void describeControl(HWND control, ControlTexts texts) {
    if (!::IsWindow(control)) return;
    const auto [place, isNew] = descriptions().try_emplace(control);
    Description& description = place->second;
    if (isNew) {
        try {
            description.object = new DescribedControl(control);
        } catch (...) {
            descriptions().erase(place);
            throw;
        }
        description.former = reinterpret_cast<WNDPROC>(::GetWindowLongPtrW(control, GWLP_WNDPROC));
        ::SetWindowLongPtrW(control, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&tellTexts));
    }
    description.object->texts = std::move(texts);
}

}  // namespace framework
