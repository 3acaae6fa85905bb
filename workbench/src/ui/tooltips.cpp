#include "tooltips.h"

#include <base/utf16.h>
#include <framework/cdialog.h>

namespace workbench {

// The tip copies the text before it asks for another.
bool answerToolTip(NMHDR& header, const std::function<std::string(int control)>& tipOf) {
    if (header.code != TTN_NEEDTEXTW) return false;
    static std::wstring text;
    text = base::toWide(tipOf(framework::CDialog::ToolTipControlId(header)));
    reinterpret_cast<NMTTDISPINFOW&>(header).lpszText = text.data();
    return true;
}

}  // namespace workbench
