// The user's guide, opened at the place that tells of a window.
#pragma once

#include <framework/cwnd.h>

namespace workbench {

/// Parts of the guide that windows have to do with.
enum class GuidePart { kFiles, kViewport, kPanel, kPlugin, kScripts };

/// Opens the guide in the host's language in the system's browser; tells the user where it should
/// be when it is not there.
void openGuide(const framework::CWnd& owner, GuidePart part);

}  // namespace workbench
