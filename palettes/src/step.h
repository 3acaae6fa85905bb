// Steps of the history that edits of palettes make.
#pragma once

#include <palettes/palette.h>

#include <kiln/undo.h>

namespace palettes {

/// A step of the history that is kept once `Commit` is called.
class Step : public UndoScope {
public:
    explicit Step(CoreText name) : UndoScope(coreText(name).c_str()) {}
};

}  // namespace palettes
