// The user's actions as steps that can be undone.
#pragma once

#include <kiln/undo.h>

#include <string>

namespace fltkilnutil {

/// The actions that have a name of their own.
enum class Action {
#define TEXT_ROW(name, id, chinese, english) name = id,
#include <fltkilnutil/actions.inc>
#undef TEXT_ROW
};

/// What the user reads after "Undo", in the host's language.
std::string nameOf(Action action);

/// Level-of-detail previews that follow one another make one step.
inline constexpr DWORD kDetailPreviewJoin = 0x464C5401;

/// A scope for an action; see `UndoScope`.
class ActionScope : public UndoScope {
public:
    explicit ActionScope(Action action, DWORD join = UNDO_OWN_STEP)
        : UndoScope(nameOf(action).c_str(), join) {}
};

}  // namespace fltkilnutil
