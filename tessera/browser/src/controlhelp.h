// What the controls of the form are for, and their access keys.
#pragma once

#include <framework/cwnd.h>

#include <string>

namespace tessera {

/// What a control does, with its keys, as in "Rebuild the tree from the scene (F5, Alt+R)"; empty
/// for controls that only frame others.
std::string controlHelp(int id);

/// Tells assistive programs the names and keys of the form's controls, in the language of now.
void describeControls(const framework::CWnd& form);

/// The control whose access key is that character with Alt; 0 for none. The captions have no
/// letters underlined: scripts and other programs know them as they are.
int controlOfKey(wchar_t character) noexcept;

}  // namespace tessera
