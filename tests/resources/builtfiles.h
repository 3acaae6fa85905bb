#pragma once

#include <windows.h>

#include <set>
#include <span>
#include <string>

// The built files, loaded as data once for the whole program.
HMODULE moduleFile();       // Tessera.dlu
HMODULE captionFile();      // FltKilnUtilRes.dll
HMODULE interchangeFile();  // FltInterchange.dli
HMODULE checksFile();       // FltCheck.dlu
HMODULE palettesFile();     // FltPalettes.dlu
HMODULE workbenchFile();
HMODULE coreFile();       // kilncore.dll
HMODULE kilnbatchFile();  // has the texts of the script library

// Where they are.
std::wstring modulePath();
std::wstring captionPath();

// The languages of the texts.
inline constexpr WORD kChinese = 0x0804;
inline constexpr WORD kEnglish = 0x0409;

// The bytes of a resource of the module in exactly that language, 0 for what has none; empty when
// there is none. `type` and `name` as for FindResourceExW.
std::span<const std::byte> resourceBytes(const wchar_t* type, const wchar_t* name,
                                         WORD language = 0);

std::span<const std::byte> resourceBytes(HMODULE file, const wchar_t* type, const wchar_t* name,
                                         WORD language);

// The names of all resources of a type, numbers as "#123".
std::set<std::string> resourceNames(HMODULE file, const wchar_t* type);

// The numbers of all strings of a language that are not empty.
std::set<unsigned> stringIds(HMODULE file, WORD language);

// A string by its number, in exactly that language, in UTF-8; empty when there is none.
std::string stringResource(HMODULE file, unsigned id, WORD language);

// What the headers of a program file say, read from the file itself.
struct ProgramFile {
    bool isX64Library = false;
    std::set<std::string> exports;  // the names in the export table
    std::set<std::string> imports;  // the libraries that it needs, in lower case
};
// Throws std::runtime_error for what is no program file.
ProgramFile readProgramFile(const std::wstring& path);

std::string utf8(const std::wstring& text);
