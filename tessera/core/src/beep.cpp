#include <tessera/browserclient.h>

#ifdef _WIN32
#include <windows.h>
#endif

namespace tessera {

void beep() noexcept {
#ifdef _WIN32
    MessageBeep(0xFFFFFFFF);
#endif
}

}  // namespace tessera
