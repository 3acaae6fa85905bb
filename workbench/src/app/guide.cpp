#include "guide.h"

#include "wording.h"

#include <base/language.h>
#include <base/paths.h>
#include <base/utf16.h>
#include <framework/module.h>

#include <shellapi.h>
#include <filesystem>
#include <string>

namespace workbench {
namespace {

std::wstring programFolder() {
    std::wstring path(32768, L'\0');
    path.resize(::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path.substr(0, path.find_last_of(L'\\'));
}

}  // namespace

void openGuide(const framework::CWnd& owner, GuidePart part) {
    const bool english = framework::resourceLanguage() == base::Language::kEnglish;
    std::wstring file = programFolder() + L"\\docs\\";
    file += part == GuidePart::kScripts ? L"scripting.html"
            : english                   ? L"user-guide.html"
                                        : L"user-guide.zh-CN.html";
    const wchar_t* const place = part == GuidePart::kViewport ? L"#section-2"
                                 : part == GuidePart::kPanel  ? L"#section-3"
                                 : part == GuidePart::kPlugin ? L"#section-4"
                                                              : L"";
    std::wstring address = L"file:///" + file;
    for (wchar_t& c : address)
        if (c == L'\\') c = L'/';
    std::error_code unknown;
    const bool there = std::filesystem::exists(file, unknown);
    const auto done = there ? reinterpret_cast<INT_PTR>(::ShellExecuteW(
                                  owner.Handle(), L"open", (address + place).c_str(), nullptr,
                                  nullptr, SW_SHOWNORMAL))
                            : 0;
    if (done > 32) return;
    owner.ShowMessage(textOf(TextId::kNoGuide, {base::toUtf8(file + place)}),
                      MB_OK | MB_ICONWARNING, kProgramName);
}

}  // namespace workbench
