// String resources.
#pragma once

#include <string>

namespace framework {

/// The text of string resource `id` in the language of `resourceLanguage`, as UTF-8; empty when
/// there is none.
///
/// There is one buffer for the whole module: the text stays valid only until the next call, so a
/// caller that needs two texts copies the first. UI thread only. May throw `std::bad_alloc`.
const std::string& loadString(unsigned id);

}  // namespace framework
