// A utility plug-in with a tall rollup page and a form with a tree, and an importer of files that
// say how their import ends, for tests of the workbench.
#include "sampleids.h"

#include <kiln/kiln.h>

#include <windows.h>

#include <commctrl.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

HINSTANCE g_module = nullptr;
HWND g_form = nullptr;
Interface* g_host = nullptr;
IUtil* g_panel = nullptr;

HTREEITEM addItem(HWND tree, HTREEITEM parent, const wchar_t* text) {
    TVINSERTSTRUCTW item{};
    item.hParent = parent;
    item.hInsertAfter = TVI_LAST;
    item.item.mask = TVIF_TEXT;
    item.item.pszText = const_cast<wchar_t*>(text);
    return reinterpret_cast<HTREEITEM>(
        ::SendMessageW(tree, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)));
}

INT_PTR CALLBACK formProcedure(HWND form, UINT message, WPARAM wParam, LPARAM) {
    const HWND tree = ::GetDlgItem(form, IDC_SAMPLE_TREE);
    if (message == WM_INITDIALOG) {
        const HTREEITEM root = addItem(tree, TVI_ROOT, L"场景");
        addItem(tree, addItem(tree, root, L"组"), L"塔楼");
        return TRUE;
    }
    if (message == WM_COMMAND && LOWORD(wParam) == IDC_SAMPLE_EXPAND) {
        const LRESULT item = ::SendMessageW(tree, TVM_GETNEXTITEM, TVGN_CARET, 0);
        ::SendMessageW(tree, TVM_EXPAND, TVE_EXPAND, item);
        return TRUE;
    }
    if (message == WM_CLOSE) ::ShowWindow(form, SW_HIDE);
    return message == WM_CLOSE;
}

INT_PTR CALLBACK pageProcedure(HWND page, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message >= WM_MOUSEMOVE && message <= WM_LBUTTONUP) {
        g_host->RollupMouseMessage(page, message, wParam, lParam);
        return TRUE;
    }
    if (message != WM_COMMAND) return message == WM_INITDIALOG;
    if (LOWORD(wParam) == IDOK) g_panel->CloseUtility();
    if (LOWORD(wParam) == IDC_SAMPLE_OPEN) {
        if (!g_form)
            g_form = ::CreateDialogParamW(g_module, MAKEINTRESOURCEW(IDD_SAMPLE_FORM),
                                          g_host->GetKilnHWND(), formProcedure, 0);
        ::ShowWindow(g_form, SW_SHOW);
    }
    return TRUE;
}

class SampleUtility final : public UtilityObj {
public:
    void BeginEditParams(Interface* ip, IUtil* iu) override {
        g_host = ip;
        g_panel = iu;
        page_ = ip->AddRollupPage(g_module, IDD_SAMPLE_PAGE, pageProcedure, "样本 ©");
    }
    void EndEditParams(Interface* ip, IUtil*) override { ip->DeleteRollupPage(page_); }
    void DeleteThis() override {}

private:
    HWND page_ = nullptr;
};

class SampleDesc final : public ClassDesc2 {
public:
    bool IsPublic() override { return true; }
    void* Create(bool) override {
        static SampleUtility utility;
        return static_cast<UtilityObj*>(&utility);
    }
    const char* ClassName() override { return "Sample 样本"; }
    SClass_ID SuperClassID() override { return UTILITY_CLASS_ID; }
    Class_ID ClassID() override { return {0x5A3E1, 0x9001}; }
    const char* Category() override { return ""; }
    bool HasAbout() override { return true; }
    void ShowAbout() override { MessageBoxW(GetActiveWindow(), L"样本 2.0", L"About", MB_OK); }
};

class SampleImport final : public SceneImport {
public:
    int ExtCount() override { return 1; }
    const char* Ext(int) override { return "smp"; }
    const char* ShortDesc() override { return "样本"; }
    // The file's text says what comes of it.
    int DoImport(const char* path, ImpExpReport& report, Interface* ip) override {
        std::ifstream file(std::filesystem::path(std::u8string(path, path + std::strlen(path))));
        std::string wish;
        file >> wish;
        ip->CreateObjectNode(new DummyObject, "imported");
        if (wish == "slow") {
            for (int i = 0; i < 3000; ++i) {
                ip->CreateObjectNode(new DummyObject);
                ::Sleep(10);
                if (!report.Progress(i / 3000.0, "Waiting")) return IMPEXP_CANCEL;
            }
        }
        if (wish == "good") {
            report.Summary("one node");
            return IMPEXP_SUCCESS;
        }
        report.Error("it ends at byte 7");
        report.Cause(ImpExpCause::kTruncated);
        return IMPEXP_FAIL;
    }
};

class SampleImportDesc final : public ClassDesc2 {
public:
    bool IsPublic() override { return true; }
    void* Create(bool) override { return static_cast<SceneImport*>(new SampleImport); }
    const char* ClassName() override { return "Sample import"; }
    SClass_ID SuperClassID() override { return SCENE_IMPORT_CLASS_ID; }
    Class_ID ClassID() override { return {0x5A3E1, 0x9002}; }
    const char* Category() override { return ""; }
};

}  // namespace

BOOL WINAPI DllMain(HINSTANCE module, DWORD, void*) {
    g_module = module;
    return TRUE;
}

KILN_PLUGIN_EXPORT const char* LibDescription() {
    return "Sample";
}
KILN_PLUGIN_EXPORT int LibNumberClasses() {
    return 2;
}
KILN_PLUGIN_EXPORT ClassDesc* LibClassDesc(int index) {
    static SampleDesc description;
    static SampleImportDesc importer;
    return index == 0 ? &description : index == 1 ? static_cast<ClassDesc*>(&importer) : nullptr;
}
KILN_PLUGIN_EXPORT DWORD LibVersion() {
    return KILN_SDK_VERSION;
}
