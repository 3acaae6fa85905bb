#include <gtest/gtest.h>
#include <windows.h>

#include <resources/resource.h>
#include <cstring>
#include <filesystem>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "builtfiles.h"

namespace {

// 0 x 0 when there is no such bitmap.
SIZE bitmapSize(const wchar_t* name) {
    const auto bytes = resourceBytes(RT_BITMAP, name);
    BITMAPINFOHEADER header{};
    if (bytes.size() < sizeof header) return {0, 0};
    std::memcpy(&header, bytes.data(), sizeof header);
    return {header.biWidth, header.biHeight};
}

TEST(Resources, HoldEveryTextUnderItsNumber) {
    const struct {
        unsigned id;
        const char* text;
    } kTexts[] = {
        {30665, "Aviary (C)"},
        {30666, "Aviary 层次"},
        {30667, "属性"},
        {30668, "值"},
        {30669, "Aviary (C)"},
        {30670, "非法附加 - 父对象在子对象下方。"},
        {30671, "非法附加 - 面对象可能只有作为子对象时才能有面.."},
        {30672, "记录未选择 OpenFlight 记录"},
        {30673, "没有要搜寻的选定字段"},
        {30674, "需要选择"},
        {30676, "非法创建 - 面对象可能只有作为子对象时才能有面.."},
        {30677, "组"},
        {30678, "对象(LOD)"},
        {30679, "细节级别"},
        {30680, "切换"},
        {30681, "自由度(DOF)"},
        {30682, "外部参照"},
        {30683, "Bsp"},
        {30684, "剪辑区域"},
        {30685, "灯光点"},
        {30686, "灯光源"},
        {30687, "标头"},
        {30688, "场景根"},
        {30689, "泛光灯"},
        {30690, "聚光灯"},
        {30691, "面"},
        {30692, "实例定义"},
        {30693, "实例参考"},
        {30695, "没有被选定父节点。"},
        {30696, "不能编辑： 开关无子对象"},
        {30697, "不能编辑： 遮罩超出切换记录的最大长度"},
        {30698, "关于 Tessera(&A)..."},
    };
    for (const auto& [id, text] : kTexts)
        EXPECT_EQ(stringResource(moduleFile(), id, kChinese), text) << id;
}

TEST(Resources, HoldEveryTreeIcon) {
    for (const int id : {123, 124, 125, 126, 127, 195, 206, 207, 201, 197, 196, 199, 198, 200, 128,
                         223, 222, 219, 129}) {
        const SIZE size = bitmapSize(MAKEINTRESOURCEW(id));
        EXPECT_EQ(size.cx, 16) << id;
        EXPECT_EQ(size.cy, 15) << id;
    }
    for (const auto& [name, width, height] : {std::tuple{L"TREEICONS125", 20, 19},
                                              {L"TREEICONS150", 24, 23},
                                              {L"TREEICONS200", 32, 30}}) {
        const SIZE size = bitmapSize(name);
        EXPECT_EQ(size.cx, 19 * width);
        EXPECT_EQ(size.cy, height);
    }
}

TEST(Resources, HoldFourImagesForEveryPictureButton) {
    for (const std::wstring caption : {L"Up", L"Down", L"Expand", L"Collapse", L"SelectGet",
                                       L"SelectSet", L"Find", L"Tool", L"About"}) {
        const long side = caption == L"About" ? 72 : 16;
        for (const wchar_t* suffix : {L"U", L"D", L"F", L"X"}) {
            const std::wstring name = caption + suffix;
            const SIZE size = bitmapSize(name.c_str());
            EXPECT_EQ(size.cx, side) << utf8(name);
            EXPECT_EQ(size.cy, side) << utf8(name);
        }
    }
}

TEST(Resources, NameTheVersion) {
    const auto bytes = resourceBytes(RT_VERSION, MAKEINTRESOURCEW(VS_VERSION_INFO), kChinese);
    ASSERT_FALSE(bytes.empty());
    // The query wants room behind the block.
    std::vector<std::byte> block(bytes.begin(), bytes.end());
    block.resize(block.size() * 2);

    void* found = nullptr;
    UINT size = 0;
    ASSERT_TRUE(VerQueryValueW(block.data(), L"\\", &found, &size));
    const auto* fixed = static_cast<const VS_FIXEDFILEINFO*>(found);
    EXPECT_EQ(fixed->dwFileVersionMS, 0x00020000U);
    EXPECT_EQ(fixed->dwFileVersionLS, 0x00000002U);
    EXPECT_EQ(fixed->dwProductVersionMS, 0x00020000U);
    EXPECT_EQ(fixed->dwProductVersionLS, 0x00000002U);
}

// What a file's properties show, asked for the way that they ask.
class FileProperties {
public:
    explicit FileProperties(const std::wstring& path)
        : block_(GetFileVersionInfoSizeW(path.c_str(), nullptr)) {
        if (!block_.empty())
            GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(block_.size()), block_.data());
    }

    // The languages that there are texts in, as "080404b0".
    std::vector<std::wstring> languages() const {
        std::vector<std::wstring> keys;
        const auto [found, size] = query(L"\\VarFileInfo\\Translation");
        for (UINT at = 0; at + 4 <= size; at += 4) {
            WORD words[2];
            std::memcpy(words, static_cast<const std::byte*>(found) + at, sizeof words);
            wchar_t key[16];
            swprintf(key, 16, L"%04x%04x", words[0], words[1]);
            keys.emplace_back(key);
        }
        return keys;
    }

    std::wstring text(const std::wstring& language, const wchar_t* name) const {
        const auto [found, size] = query(L"\\StringFileInfo\\" + language + L'\\' + name);
        return size == 0 ? L"" : static_cast<const wchar_t*>(found);
    }

private:
    std::pair<const void*, UINT> query(const std::wstring& what) const {
        void* found = nullptr;
        UINT size = 0;
        if (block_.empty() || !VerQueryValueW(block_.data(), what.c_str(), &found, &size))
            return {};
        return {found, size};
    }

    std::vector<std::byte> block_;
};

TEST(FilesForUsers, SayWhatTheyAreInBothLanguages) {
    std::set<std::wstring> descriptions;
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(STAGE)) {
        const std::wstring extension = entry.path().extension().wstring();
        if (!std::set<std::wstring>{L".exe", L".dll", L".dlu", L".dli"}.count(extension)) continue;
        SCOPED_TRACE(utf8(entry.path().wstring()));
        ++count;
        const FileProperties shown(entry.path().wstring());
        EXPECT_EQ(shown.languages(), (std::vector<std::wstring>{L"080404b0", L"040904b0"}));
        for (const std::wstring& language : shown.languages()) {
            EXPECT_EQ(shown.text(language, L"FileVersion"), L"2.0.0.2");
            EXPECT_EQ(shown.text(language, L"ProductVersion"), L"2.0.0.2");
            EXPECT_EQ(shown.text(language, L"ProductName"), L"Tessera");
            EXPECT_EQ(shown.text(language, L"OriginalFilename"), entry.path().filename().wstring());
            descriptions.insert(shown.text(language, L"FileDescription"));
        }
        const HMODULE file =
            LoadLibraryExW(entry.path().c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
        EXPECT_EQ(resourceNames(file, RT_GROUP_ICON).size(), extension == L".exe" ? 1u : 0u);
        FreeLibrary(file);
    }
    EXPECT_GE(count, 7u);
    EXPECT_EQ(descriptions.count(L""), 0u);
    EXPECT_EQ(descriptions.size(), 2 * count) << "each file has its own description";
}

// The way the module itself enters its manifest: through its own resource 2.
TEST(Resources, ManifestSelectsVersionSixOfTheCommonControls) {
    const auto bytes = resourceBytes(RT_MANIFEST, MAKEINTRESOURCEW(2));
    const std::string text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    EXPECT_NE(text.find(">true</dpiAware>"), std::string::npos);

    const std::wstring path = modulePath();
    ACTCTXW request{};
    request.cbSize = sizeof request;
    request.dwFlags = ACTCTX_FLAG_RESOURCE_NAME_VALID;
    request.lpSource = path.c_str();
    request.lpResourceName = MAKEINTRESOURCEW(2);
    const HANDLE context = CreateActCtxW(&request);
    ASSERT_NE(context, INVALID_HANDLE_VALUE) << GetLastError();

    ULONG_PTR cookie = 0;
    ASSERT_TRUE(ActivateActCtx(context, &cookie));
    ACTCTX_SECTION_KEYED_DATA data{};
    data.cbSize = sizeof data;
    EXPECT_TRUE(FindActCtxSectionStringW(0, nullptr, ACTIVATION_CONTEXT_SECTION_DLL_REDIRECTION,
                                         L"comctl32.dll", &data));
    DeactivateActCtx(0, cookie);
    ReleaseActCtx(context);
}

}  // namespace
