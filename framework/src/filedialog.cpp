#include <base/utf16.h>
#include <framework/filedialog.h>

// Not among the headers of WIN32_LEAN_AND_MEAN.
#include <commdlg.h>

namespace framework {

namespace {

constexpr size_t kPathBuffer = 32768;

// "name\0pattern\0...\0", as the platform wants it.
std::wstring filterList(const std::vector<FileFilter>& filters) {
    std::wstring list;
    for (const FileFilter& filter : filters) {
        list += base::toWide(filter.name);
        list += L'\0';
        list += base::toWide(filter.pattern);
        list += L'\0';
    }
    list += L'\0';
    return list;
}

struct Question {
    HWND owner;
    std::string_view title;
    const std::vector<FileFilter>& filters;
    std::string_view extension;
    std::string_view suggestion;
    std::string_view folder;
    DWORD flags;
    BOOL(WINAPI* ask)(OPENFILENAMEW*);
    std::size_t* filter;
};

std::optional<std::string> askFile(const Question& question) {
    const std::wstring title = base::toWide(question.title);
    const std::wstring filters = filterList(question.filters);
    const std::wstring extension = base::toWide(question.extension);
    std::wstring path = base::toWide(question.suggestion);
    path.resize(kPathBuffer, L'\0');
    path.back() = L'\0';

    const std::wstring folder = base::toWide(question.folder);

    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = question.owner;
    dialog.lpstrFilter = filters.c_str();
    if (question.filter) dialog.nFilterIndex = static_cast<DWORD>(*question.filter) + 1;
    dialog.lpstrFile = path.data();
    dialog.nMaxFile = static_cast<DWORD>(path.size());
    dialog.lpstrInitialDir = folder.empty() ? nullptr : folder.c_str();
    dialog.lpstrTitle = title.empty() ? nullptr : title.c_str();
    dialog.lpstrDefExt = extension.empty() ? nullptr : extension.c_str();
    dialog.Flags = question.flags | OFN_EXPLORER | OFN_NOCHANGEDIR | OFN_HIDEREADONLY;
    if (!question.ask(&dialog)) return std::nullopt;
    if (question.filter && dialog.nFilterIndex > 0) *question.filter = dialog.nFilterIndex - 1;
    return base::toUtf8(path.c_str());
}

}  // namespace

std::optional<std::string> askOpenFile(HWND owner, std::string_view title,
                                       const std::vector<FileFilter>& filters,
                                       std::string_view folder) {
    return askFile(
        {owner, title, filters, {}, {}, folder, OFN_FILEMUSTEXIST, ::GetOpenFileNameW, nullptr});
}

std::optional<std::string> askSaveFile(HWND owner, std::string_view title,
                                       const std::vector<FileFilter>& filters,
                                       std::string_view extension, std::string_view suggestion,
                                       std::size_t* filter) {
    return askFile({owner,
                    title,
                    filters,
                    extension,
                    suggestion,
                    {},
                    OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST,
                    ::GetSaveFileNameW,
                    filter});
}

}  // namespace framework
