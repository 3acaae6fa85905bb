// A utility that is one page in the host's panel.
#pragma once

#include <framework/win32.h>
#include <kiln/kiln.h>

#include <string>

namespace plugin {

/// One static object of a class is one utility. No exception reaches the host: where a command
/// throws, it beeps.
class UtilityPage : public UtilityObj {
public:
    void BeginEditParams(Interface* host, IUtil* utility) final;
    void EndEditParams(Interface* host, IUtil* utility) final;
    void DeleteThis() final {}

protected:
    /// `dialog` is the page's template in this module, `category` its place among the host's pages.
    UtilityPage(int dialog, int category) noexcept : dialog_(dialog), category_(category) {}
    ~UtilityPage() override = default;

    /// The page's heading, UTF-8.
    virtual std::string title() const = 0;
    /// The page is there.
    virtual void onShown() {}
    /// A control of the page sends WM_COMMAND.
    virtual void onCommand(int id, UINT code) = 0;

    /// The one that the utility was opened in last.
    Interface& host() const noexcept { return *host_; }
    /// Null while the utility is closed.
    HWND page() const noexcept { return page_; }
    void setText(int id, const std::string& text) const;
    /// Asks the host to close the utility.
    void close() const;

private:
    static INT_PTR CALLBACK handleMessage(HWND page, UINT message, WPARAM wParam, LPARAM lParam);

    const int dialog_, category_;
    Interface* host_ = nullptr;
    IUtil* utility_ = nullptr;
    HWND page_ = nullptr;
};

}  // namespace plugin
