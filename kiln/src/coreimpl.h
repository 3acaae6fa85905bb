// The core behind the SDK's `Interface` and the host's `Core`.
#pragma once

#include <kiln/fp.h>
#include <kiln/host/core.h>
#include <kiln/searchfolders.h>
#include <kiln/utility.h>

#include <array>
#include <functional>
#include <memory>
#include <string>

#include "filescenes.h"
#include "names.h"
#include "scene.h"
#include "scenefile.h"

namespace kiln {

struct Core::Impl final : Interface, IUtil, SceneListener {
    Impl();
    ~Impl() override;

    INode* GetRootNode() override;
    INode* CreateObjectNode(Object* object) override;
    INode* CreateObjectNode(Object* object, const char* name) override;
    void DeleteNode(INode* node) override;
    bool IsNodeInScene(const INode* node) const override;
    INode* GetINodeByHandle(DWORD handle) override;
    INode* GetINodeByName(const char* name) override;
    int GetNodeCount() const override;
    NameMaker* NewNameMaker(bool initialize) override;

    int GetTexmapCount() const override;
    Texmap* GetTexmap(int index) const override;
    void AddTexmap(Texmap* map) override;
    bool RemoveTexmap(Texmap* map) override;

    int GetSelNodeCount() const override;
    INode* GetSelNode(int index) const override;
    void SelectNode(INode* node, bool clearSel) override;
    void DeSelectNode(INode* node) override;
    void ClearNodeSelection() override;

    INode* GroupNodes(const Tab<INode*>& nodes, const char* name) override;
    bool UngroupNode(INode* head) override;

    TimeValue GetTime() const override { return time; }
    void RedrawViews(TimeValue t, DWORD flags, Animatable* changed) override;
    void ZoomToSelection() override;

    HWND GetKilnHWND() const override;
    HWND AddRollupPage(HINSTANCE module, int dialogId, DLGPROC dialogProcedure, const char* title,
                       LPARAM param, DWORD flags, int category) override;
    void DeleteRollupPage(HWND page) override;
    void RollupMouseMessage(HWND page, UINT message, WPARAM wParam, LPARAM lParam) override;
    void PushPrompt(const char* text) override;
    const char* GetDir(int id) const override;

    void CloseUtility() override;

    void sceneNotifies(int code, void* parameter) override;
    void sceneNodeInvalidated(Node* node) override;

    /// The folder of the file at `path` becomes a directory of `GetDir`.
    void rememberFolder(int id, const std::string& path) noexcept;

    /// Reads a scene and shows it after `finish`; after anything but success nothing has changed.
    ImportResult openScene(const SceneSource& source, const std::string& path,
                           const std::function<void(Scene& next)>& finish);

    /// Shows `next` and returns the scene that was shown before.
    std::unique_ptr<Scene> replaceScene(std::unique_ptr<Scene> next);

    std::shared_ptr<MakerRegistry> makers;
    SceneNameMaker nodeNames;  // of nodes that nobody has named
    std::unique_ptr<Scene> scene;
    FileScenes fileScenes;
    bool isAside = false;  // `scene` is that of a file, which nobody hears of
    HostWindow noWindow;
    HostWindow* window = &noWindow;
    TimeValue time = 0;
    std::array<std::string, KILN_SEARCH_DIR + KILN_SEARCH_DIR_COUNT> directories;
    ClassDesc* utilityClass = nullptr;
    UtilityObj* utility = nullptr;
};

}  // namespace kiln
