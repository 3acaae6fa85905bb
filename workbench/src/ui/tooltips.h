// Tips of the workbench's own dialogs.
#pragma once

#include <framework/win32.h>

#include <commctrl.h>

#include <functional>
#include <string>

namespace workbench {

/// Answers the request for a tip with the text for a control's number; an empty text shows none.
/// False for any other notification.
bool answerToolTip(NMHDR& header, const std::function<std::string(int control)>& tipOf);

}  // namespace workbench
