// fltool: looks into OpenFlight files, checks and converts them.
#include "commandline.h"

#include <iostream>

#ifdef _WIN32

#include <fcntl.h>
#include <io.h>
#include <windows.h>

namespace {

std::string utf8(const wchar_t* text) {
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    if (size <= 1) return {};
    std::string bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, bytes.data(), size, nullptr, nullptr);
    bytes.pop_back();  // the terminator
    return bytes;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    const UINT codePage = GetConsoleOutputCP();
    SetConsoleOutputCP(CP_UTF8);
    // The same bytes on every platform.
    _setmode(_fileno(stdout), _O_BINARY);
    std::vector<std::string> texts;
    for (int i = 1; i < count; ++i) texts.push_back(utf8(arguments[i]));
    const int code = fltool::run(texts, std::cout, std::cerr);
    SetConsoleOutputCP(codePage);
    return code;
}

#else

int main(int count, char** arguments) {
    std::ios::sync_with_stdio(false);
    return fltool::run({arguments + (count > 0 ? 1 : 0), arguments + count}, std::cout, std::cerr);
}

#endif
