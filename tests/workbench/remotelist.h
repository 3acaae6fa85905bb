// A list view of another process, looked at from here.
#pragma once

#include <base/utf16.h>
#include <framework/win32.h>

#include <string>
#include <vector>

class RemoteList {
public:
    RemoteList(HWND list, HANDLE process)
        : list_(list),
          process_(process),
          memory_(static_cast<Exchange*>(
              ::VirtualAllocEx(process, nullptr, sizeof(Exchange), MEM_COMMIT, PAGE_READWRITE))) {}
    ~RemoteList() { ::VirtualFreeEx(process_, memory_, 0, MEM_RELEASE); }
    RemoteList(const RemoteList&) = delete;
    RemoteList& operator=(const RemoteList&) = delete;

    int count() const { return static_cast<int>(::SendMessageW(list_, LVM_GETITEMCOUNT, 0, 0)); }
    /// The selected line; -1 for none.
    int selected() const {
        return static_cast<int>(
            ::SendMessageW(list_, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED));
    }
    std::vector<std::string> texts() const {
        std::vector<std::string> all;
        for (int line = 0; line < count(); ++line) {
            Exchange exchange{};
            exchange.item.mask = LVIF_TEXT;
            exchange.item.pszText = memory_->text;
            exchange.item.cchTextMax = kLongest;
            all.push_back(base::toUtf8(ask(LVM_GETITEMTEXTW, line, exchange, &memory_->item).text));
        }
        return all;
    }
    /// On the screen.
    RECT area(int line) const {
        Exchange exchange{};
        exchange.area.left = LVIR_LABEL;
        RECT area = ask(LVM_GETITEMRECT, line, exchange, &memory_->area).area;
        ::MapWindowPoints(list_, nullptr, reinterpret_cast<POINT*>(&area), 2);
        return area;
    }
    POINT middle(int line) const {
        const RECT at = area(line);
        return {(at.left + at.right) / 2, (at.top + at.bottom) / 2};
    }

private:
    static constexpr int kLongest = 256;
    struct Exchange {
        LVITEMW item;
        RECT area;
        wchar_t text[kLongest];
    };

    Exchange ask(UINT message, int line, Exchange exchange, const void* argument) const {
        ::WriteProcessMemory(process_, memory_, &exchange, sizeof exchange, nullptr);
        ::SendMessageW(list_, message, static_cast<WPARAM>(line),
                       reinterpret_cast<LPARAM>(argument));
        ::ReadProcessMemory(process_, memory_, &exchange, sizeof exchange, nullptr);
        return exchange;
    }

    HWND list_;
    HANDLE process_;
    Exchange* memory_;  // of the other process
};
