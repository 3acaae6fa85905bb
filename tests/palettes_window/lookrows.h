// The rows of the window of looks, as assistive programs see them, and edits of them by keys.
#pragma once

#include "../../palettes/plugin/resource.h"
#include "../support/pluginwindowtest.h"
#include "../support/seen.h"

class LookRowsTest : public PluginWindowTest {
protected:
    using PluginWindowTest::PluginWindowTest;

    static HWND grid() { return GetDlgItem(windowWith(IDC_LOOK_ROWS), IDC_LOOK_ROWS); }
    /// The child of the grid that is the value of a row; -1 without the row.
    static long valueId(const std::string& caption) {
        const Seen seen(grid());
        for (long id = 3; id < seen.children(); id += 2)
            if (seen.name(id) == base::toWide(caption)) return id + 1;
        return -1;
    }
    static std::string value(const std::string& caption) {
        const long id = valueId(caption);
        return id < 0 ? "none" : base::toUtf8(Seen(grid()).value(id));
    }
    static std::string note(const std::string& caption) {
        return base::toUtf8(Seen(grid()).description(valueId(caption)));
    }
    static void goTo(const std::string& caption) {
        SetFocus(grid());
        testinput::key(VK_HOME, {VK_CONTROL});
        for (long id = valueId(caption); id > 4; id -= 2) testinput::key(VK_DOWN);
    }
    static void enter(const std::string& caption, std::wstring_view text) {
        goTo(caption);
        testinput::type(text);
        testinput::key(VK_RETURN);
    }
};
