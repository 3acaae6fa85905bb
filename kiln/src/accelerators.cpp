#include <kiln/accelerators.h>
#include <kiln/host/core.h>

namespace {

bool accelerators = true;

void setAccelerators(bool enabled) noexcept {
    if (accelerators == enabled) return;
    accelerators = enabled;
    if (kiln::Core* const core = kiln::Core::get()) core->hostWindow().acceleratorsChanged(enabled);
}

}  // namespace

void EnableAccelerators() noexcept {
    setAccelerators(true);
}
void DisableAccelerators() noexcept {
    setAccelerators(false);
}
bool AcceleratorsEnabled() noexcept {
    return accelerators;
}
