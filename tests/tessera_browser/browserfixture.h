// A form of the browser in the built module, with a client that writes down what it is sent.
#pragma once

#include "../support/messageboxes.h"
#include "moduleexports.h"

#include <fltkilnutil/kilnflt.h>
#include <framework/win32.h>
#include <input.h>
#include <kiln/host/core.h>
#include <kiln/kiln.h>
#include <resources/resource.h>
#include <windowsx.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

using tessera::BrowserEvent;
using tessera::BrowserItem;
using tessera::NodeHandle;

/// What the client was sent, arguments as they were at the time.
struct Sent {
    BrowserEvent event;
    BrowserItem first = nullptr;
    BrowserItem second = nullptr;
    std::uintptr_t argument = 0;
    std::uintptr_t argument2 = 0;

    friend bool operator==(const Sent&, const Sent&) = default;
};
void PrintTo(const Sent& sent, std::ostream* out);

/// The client's memory. Handshakes are answered and not written down.
class Client {
public:
    static void callback(BrowserEvent event, BrowserItem first, BrowserItem second,
                         std::uintptr_t argument, std::uintptr_t argument2, void* data);

    /// What was sent since the last call.
    std::vector<Sent> take();

    bool allowsForm = true;
    bool knowsKinds = true;
    /// Message boxes that close activate the form again, which few tests are about.
    bool notesActivation = false;
    /// Called before a kind is confirmed.
    std::function<void()> onConfirmKind;
    /// Asked for every event that is written down.
    std::function<void(const Sent&)> onEvent;
    std::string lastText;  ///< the text of the last renaming

private:
    std::vector<Sent> sent_;
};

class BrowserTest : public testing::Test {
protected:
    BrowserTest();
    ~BrowserTest() override;

    /// Creates the form with the fixture's client, with an empty tree, shown when wanted.
    void open(bool shown = true);
    /// The form's window, null when there is none.
    static HWND form();
    static HWND control(int id) { return GetDlgItem(form(), id); }
    static HWND tree() { return control(IDC_TREE); }

    static void push(int id);
    static void check(int id, bool checked);
    static bool isEnabled(int id) { return IsWindowEnabled(control(id)) != FALSE; }
    static std::wstring text(HWND window);

    /// A dummy of that kind; 0 makes one without a record.
    static INode* node(int kind);
    BrowserItem add(BrowserItem parent, const char* name, INode* node);
    BrowserItem add(BrowserItem parent, const char* name, int kind = 2) {
        return add(parent, name, node(kind));
    }

    static BrowserItem caret() { return TreeView_GetSelection(tree()); }
    static void select(std::initializer_list<BrowserItem> items);
    static bool isSelected(BrowserItem item);
    static bool isExpanded(BrowserItem item);
    static int image(BrowserItem item);
    static std::wstring label(BrowserItem item);
    /// The middle of the label (or of the icon), scrolled into view.
    static POINT middle(BrowserItem item, bool icon = false);

    /// The switch editor's window, null when there is none.
    static HWND switchEditor();

    static HWND grid() { return control(IDC_GRID); }

    /// The remembered place of the form, for all display scalings.
    static void forgetPlace();

    Client client;
    MessageBoxes boxes;
};
