#include <quillon/fltnesting.h>

void FltNesting::step(FltLevelChange change) noexcept {
    const auto [kind, by] = change;
    switch (kind) {
        case FltLevelKind::kNone:
            break;
        case FltLevelKind::kLevel:
            level += by;
            break;
        case FltLevelKind::kSubface:
            subface += by;
            break;
        case FltLevelKind::kExtension:
            extension += by;
            break;
        case FltLevelKind::kAttribute:
            attribute += by;
            break;
    }
}
