// fltool: looks into OpenFlight files, checks and converts them.
#include "commandline.h"

#include <iostream>

#ifdef _WIN32

#include <base/utf16.h>
#include <fcntl.h>
#include <io.h>
#include <windows.h>

int wmain(int count, wchar_t** arguments) {
    const UINT codePage = GetConsoleOutputCP();
    SetConsoleOutputCP(CP_UTF8);
    // The same bytes on every platform.
    _setmode(_fileno(stdout), _O_BINARY);
    std::vector<std::string> texts;
    for (int i = 1; i < count; ++i) texts.push_back(base::toUtf8(arguments[i]));
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
