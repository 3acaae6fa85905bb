// The host's notifications for an object.
#pragma once

#include <kiln/notify.h>

#include <functional>
#include <utility>
#include <vector>

namespace workbench {

/// Calls a function at each notification of some codes, as long as this lives.
class Notifications {
public:
    Notifications(std::vector<int> codes, std::function<void(const NotifyInfo&)> heard)
        : codes_(std::move(codes)), heard_(std::move(heard)) {
        for (const int code : codes_) RegisterNotification(onNotify, this, code);
    }
    ~Notifications() {
        for (const int code : codes_) UnRegisterNotification(onNotify, this, code);
    }
    Notifications(const Notifications&) = delete;
    Notifications& operator=(const Notifications&) = delete;

private:
    static void onNotify(void* self, NotifyInfo* info) {
        static_cast<Notifications*>(self)->heard_(*info);
    }

    const std::vector<int> codes_;
    const std::function<void(const NotifyInfo&)> heard_;
};

}  // namespace workbench
