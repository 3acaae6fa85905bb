#pragma once

#include <windows.h>

#include <cstdlib>
#include <string>

/// Stands before the allocator that the module imports and lets one allocation fail.
class FailingAllocator {
public:
    FailingAllocator() : slot_(importedMalloc(GetModuleHandleW(L"Tessera.dlu"))) {
        if (slot_) put(reinterpret_cast<ULONGLONG>(&allocate));
    }
    ~FailingAllocator() {
        if (slot_) put(reinterpret_cast<ULONGLONG>(&std::malloc));
    }
    FailingAllocator(const FailingAllocator&) = delete;
    FailingAllocator& operator=(const FailingAllocator&) = delete;

    bool isThere() const { return slot_ != nullptr; }
    /// The next allocation but `count` fails.
    static void failAfter(int count) { left_ = count; }
    static bool hasFailed() { return left_ < 0; }
    static void failNever() { left_ = -1; }

private:
    static void* allocate(std::size_t size) {
        return left_ >= 0 && left_-- == 0 ? nullptr : std::malloc(size);
    }

    /// Where the module keeps the address of the C library's malloc.
    static IMAGE_THUNK_DATA* importedMalloc(HMODULE module) {
        auto* const base = reinterpret_cast<BYTE*>(module);
        const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
        const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
        const auto& imports = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
        auto* library = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(base + imports.VirtualAddress);
        for (; library->Name != 0; ++library) {
            const auto* name =
                reinterpret_cast<IMAGE_THUNK_DATA*>(base + library->OriginalFirstThunk);
            auto* address = reinterpret_cast<IMAGE_THUNK_DATA*>(base + library->FirstThunk);
            for (; name->u1.AddressOfData != 0; ++name, ++address) {
                if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) continue;
                const auto* const entry =
                    reinterpret_cast<IMAGE_IMPORT_BY_NAME*>(base + name->u1.AddressOfData);
                if (std::string(entry->Name) == "malloc") return address;
            }
        }
        return nullptr;
    }

    void put(ULONGLONG function) const {
        DWORD before = 0;
        VirtualProtect(slot_, sizeof *slot_, PAGE_READWRITE, &before);
        slot_->u1.Function = function;
        VirtualProtect(slot_, sizeof *slot_, before, &before);
    }

    static inline int left_ = -1;
    IMAGE_THUNK_DATA* slot_;
};
