#include <kiln/notify.h>

#include <algorithm>
#include <vector>

namespace {

struct Registration {
    NOTIFYPROC proc;  // null once it was taken back during a notification
    void* param;
    int code;
};

struct Registry {
    std::vector<Registration> entries;
    int broadcasting = 0;  // notifications under way, which nest

    std::vector<Registration>::iterator find(NOTIFYPROC proc, void* param, int code) {
        return std::find_if(entries.begin(), entries.end(), [&](const Registration& entry) {
            return entry.proc == proc && entry.param == param && entry.code == code;
        });
    }
};

// Made on first use, since modules register from static initialisers, and never destroyed, since
// they also take registrations back while the process ends.
Registry& registry() {
    static Registry* const instance = new Registry;
    return *instance;
}

}  // namespace

bool RegisterNotification(NOTIFYPROC proc, void* param, int code) noexcept {
    if (!proc) return false;
    Registry& all = registry();
    if (all.find(proc, param, code) != all.entries.end()) return true;
    try {
        all.entries.push_back({proc, param, code});
    } catch (...) {
        return false;
    }
    return true;
}

bool UnRegisterNotification(NOTIFYPROC proc, void* param, int code) noexcept {
    Registry& all = registry();
    const auto entry = all.find(proc, param, code);
    if (!proc || entry == all.entries.end()) return false;
    if (all.broadcasting > 0)
        entry->proc = nullptr;
    else
        all.entries.erase(entry);
    return true;
}

void BroadcastNotification(int code, void* callParam) noexcept {
    Registry& all = registry();
    ++all.broadcasting;
    const std::size_t count = all.entries.size();
    for (std::size_t i = 0; i < count; ++i) {
        const Registration entry = all.entries[i];  // a copy: the handler may register others
        if (!entry.proc || entry.code != code) continue;
        NotifyInfo info{code, callParam};
        try {
            entry.proc(entry.param, &info);
        } catch (...) {
            // A handler's failure is its own; the others still hear of the change.
        }
    }
    if (--all.broadcasting == 0)
        std::erase_if(all.entries, [](const Registration& entry) { return !entry.proc; });
}
