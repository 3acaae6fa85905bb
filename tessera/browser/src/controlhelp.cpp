#include "controlhelp.h"

#include <framework/accessible.h>
#include <framework/strings.h>
#include <resources/resource.h>

#include <algorithm>

using framework::loadString;

namespace tessera {
namespace {

struct ControlRow {
    int id;
    UINT text;  ///< what it is for, and behind a tab its own key
    char key;   ///< with Alt; 0 for none
    bool captioned = false;
};

constexpr ControlRow kControls[] = {
    {IDC_REFRESH, IDS_HELP_REFRESH, 'R', true},
    {IDC_UP, IDS_HELP_UP, 'U'},
    {IDC_DOWN, IDS_HELP_DOWN, 'D'},
    {IDC_EXPAND, IDS_HELP_EXPAND, 'E'},
    {IDC_COLLAPSE, IDS_HELP_COLLAPSE, 'L'},
    {IDC_SELECT_GET, IDS_HELP_SELECT_GET, 'T'},
    {IDC_SELECT_SET, IDS_HELP_SELECT_SET, 'V'},
    {IDC_FIND, IDS_HELP_FIND, 'F'},
    {IDC_SUBTREE, IDS_HELP_SUBTREE, 'S', true},
    {IDC_TOOL, IDS_HELP_TOOL, 'M'},
    {IDC_GLOBAL, IDS_HELP_GLOBAL, 'G', true},
    {IDC_CREATE, IDS_HELP_CREATE, 'C', true},
    {IDC_CREATE_KIND, IDS_HELP_CREATE_KIND, 'K'},
    {IDC_TREE, IDS_HELP_TREE, 'H'},
    {IDC_NAME, IDS_HELP_NAME, 'N'},
    {IDC_ITEM_SPIN, IDS_HELP_ITEM_SPIN, 0},
    {IDC_COMMENT, IDS_HELP_COMMENT, 'O'},
    {IDC_GRID, IDS_HELP_GRID, 'A'},
};

struct Help {
    std::string text;
    std::string keys;
};

Help helpOf(const ControlRow& row) {
    Help help{loadString(row.text), {}};
    if (const std::size_t tab = help.text.find('\t'); tab != std::string::npos) {
        help.keys = help.text.substr(tab + 1);
        help.text.resize(tab);
    }
    if (row.key) help.keys += (help.keys.empty() ? "Alt+" : ", Alt+") + std::string(1, row.key);
    return help;
}

}  // namespace

std::string controlHelp(int id) {
    const auto* const row = std::ranges::find(kControls, id, &ControlRow::id);
    if (row == std::end(kControls)) return {};
    const Help help = helpOf(*row);
    return help.keys.empty() ? help.text : help.text + " (" + help.keys + ")";
}

void describeControls(const framework::CWnd& form) {
    for (const ControlRow& row : kControls) {
        const HWND control = form.Item(row.id);
        if (!control || row.id == IDC_GRID) continue;  // the grid tells its own
        Help help = helpOf(row);
        if (row.captioned) help.text = form.ItemText(row.id);
        framework::describeControl(control, {std::move(help.text), std::move(help.keys)});
    }
}

int controlOfKey(wchar_t character) noexcept {
    const wchar_t upper = character >= L'a' && character <= L'z'
                              ? static_cast<wchar_t>(character - L'a' + L'A')
                              : character;
    for (const ControlRow& row : kControls)
        if (row.key && upper == static_cast<wchar_t>(row.key)) return row.id;
    return 0;
}

}  // namespace tessera
