// The verbs "picture" and "thumbnail" of the script language.
#pragma once

#include <script/engine.h>

#include <functional>
#include <string>

namespace render {

/// Offers `picture path width? height? view? mode? eye? target? time? levels? seconds?`, which
/// draws the host's scene into a PNG file and returns its path, and prints what could not be shown.
/// `placed` makes of the path that a script names the one to write; null for the same. Also
/// `reloadReferences`, which has the files that the scene refers to read anew.
/// And `thumbnail file path side?`, which makes a small PNG file of a picture file and returns the
/// size of that one, or undefined.
void addPictureVerb(script::Engine& engine,
                    std::function<std::string(const std::string& path)> placed = {});

}  // namespace render
