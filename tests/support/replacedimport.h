#pragma once

#include <windows.h>

#include <string_view>

/// Stands a function of the test's before one that a module imports, as long as it lives.
class ReplacedImport {
public:
    /// `name` as the import table has it. The replacement takes and gives what the function does.
    template <typename Function>
    ReplacedImport(HMODULE module, std::string_view name, Function* replacement)
        : slot_(find(module, name)) {
        if (!slot_) return;
        original_ = slot_->u1.Function;
        put(reinterpret_cast<ULONGLONG>(replacement));
    }
    ~ReplacedImport() {
        if (slot_) put(original_);
    }
    ReplacedImport(const ReplacedImport&) = delete;
    ReplacedImport& operator=(const ReplacedImport&) = delete;

    /// Whether the module imports the function at all.
    bool isThere() const { return slot_ != nullptr; }

private:
    /// Where the module keeps the function's address.
    static IMAGE_THUNK_DATA* find(HMODULE module, std::string_view wanted) {
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
                if (entry->Name == wanted) return address;
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

    IMAGE_THUNK_DATA* slot_;
    ULONGLONG original_ = 0;
};
