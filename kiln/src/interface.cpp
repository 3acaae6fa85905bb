// The host as plug-ins see it.
#include <base/text.h>
#include <kiln/accelerators.h>
#include <kiln/ownedptr.h>
#include <kiln/undo.h>

#include <algorithm>
#include <new>
#include <utility>

#include "changes.h"
#include "coreimpl.h"

namespace kiln {

namespace {

Node* own(INode* node) noexcept {
    return static_cast<Node*>(node);
}

// Whether a node above `node` is in `nodes`.
bool isBelowAny(const INode* node, const std::unordered_set<const INode*>& nodes) {
    for (const INode* above = node->GetParentNode(); above; above = above->GetParentNode())
        if (nodes.contains(above)) return true;
    return false;
}

// A step leads back to the selection that was there when its command began.
void keepSelection() {
    if (SceneHistory* const history = SceneHistory::recording()) history->prepare();
}

INode* commonParent(const std::vector<INode*>& nodes, INode* otherwise) {
    INode* const parent = nodes.front()->GetParentNode();
    const bool common = std::ranges::all_of(
        nodes, [&](const INode* node) { return node->GetParentNode() == parent; });
    return common ? parent : otherwise;
}

// One for the process: a maker follows the scene that is shown, whichever core shows it.
std::shared_ptr<MakerRegistry> makerRegistry() {
    static const auto registry = std::make_shared<MakerRegistry>();
    return registry;
}

}  // namespace

Core::Impl::Impl() : makers(makerRegistry()), nodeNames(makers) {
    replaceScene(std::make_unique<Scene>());
}

Core::Impl::~Impl() {
    makers->sceneReplaced(nullptr);
}

std::unique_ptr<Scene> Core::Impl::replaceScene(std::unique_ptr<Scene> next) {
    next->show(*this, *makers);
    scene.swap(next);
    fileScenes.clear();
    noteSceneReplaced();
    return next;
}

INode* Core::Impl::GetRootNode() {
    return scene->root();
}

INode* Core::Impl::CreateObjectNode(Object* object) {
    return CreateObjectNode(object, nullptr);
}

INode* Core::Impl::CreateObjectNode(Object* object, const char* name) try {
    std::string chosen = name     ? base::validUtf8(name)
                         : object ? nodeNames.numbered(object->GetObjectName())
                                  : nodeNames.numbered("Node");
    Node* const node = scene->createNode(object, std::move(chosen), scene->root());
    sceneNotifies(NOTIFY_NODE_CREATED, static_cast<INode*>(node));
    return node;
} catch (const std::bad_alloc&) {
    return nullptr;
}

void Core::Impl::DeleteNode(INode* node) {
    scene->deleteNode(node);
}

bool Core::Impl::IsNodeInScene(const INode* node) const {
    return scene->contains(node);
}

INode* Core::Impl::GetINodeByHandle(DWORD handle) {
    return scene->byHandle(handle);
}

INode* Core::Impl::GetINodeByName(const char* name) {
    return name ? scene->byName(name) : nullptr;
}

int Core::Impl::GetNodeCount() const {
    return static_cast<int>(scene->nodeCount());
}

NameMaker* Core::Impl::NewNameMaker(bool initialize) {
    return new SceneNameMaker(initialize ? makers : nullptr);
}

int Core::Impl::GetTexmapCount() const {
    return static_cast<int>(scene->texmaps().size());
}

Texmap* Core::Impl::GetTexmap(int index) const {
    if (index < 0 || index >= GetTexmapCount()) return nullptr;
    return scene->texmaps()[static_cast<std::size_t>(index)];
}

void Core::Impl::AddTexmap(Texmap* map) {
    scene->addTexmap(map);
}

bool Core::Impl::RemoveTexmap(Texmap* map) {
    return scene->removeTexmap(map);
}

int Core::Impl::GetSelNodeCount() const {
    return static_cast<int>(scene->selection().size());
}

INode* Core::Impl::GetSelNode(int index) const {
    if (index < 0 || index >= GetSelNodeCount()) return nullptr;
    return scene->selection().at(static_cast<std::size_t>(index));
}

void Core::Impl::SelectNode(INode* node, bool clearSel) {
    if (!scene->contains(node) || node == scene->root()) return;
    const auto& selected = scene->selection();
    if (clearSel && selected.size() == 1 && node->Selected()) return;
    keepSelection();
    bool changed = clearSel && scene->clearSelection();
    changed |= scene->select(own(node));
    if (changed) sceneNotifies(NOTIFY_SELECTION_CHANGED, nullptr);
}

void Core::Impl::DeSelectNode(INode* node) {
    keepSelection();
    if (scene->contains(node) && scene->deselect(own(node)))
        sceneNotifies(NOTIFY_SELECTION_CHANGED, nullptr);
}

void Core::Impl::ClearNodeSelection() {
    keepSelection();
    if (scene->clearSelection()) sceneNotifies(NOTIFY_SELECTION_CHANGED, nullptr);
}

INode* Core::Impl::GroupNodes(const Tab<INode*>& nodes, const char* name) {
    std::unordered_set<const INode*> listed;
    std::vector<INode*> members;
    for (INode* const node : nodes)
        if (scene->contains(node) && node != scene->root() && listed.insert(node).second)
            members.push_back(node);
    std::erase_if(members, [&](const INode* node) { return isBelowAny(node, listed); });
    if (members.empty()) return nullptr;

    Box3 positions;
    for (const INode* const node : members) positions += node->GetNodeTM(time).GetTrans();
    INode* const parent = commonParent(members, scene->root());
    const std::string headName = name ? name : nodeNames.numbered("Group");
    UndoScope all(nullptr);
    OwnedPtr<DummyObject> dummy(new DummyObject);
    INode* const head = CreateObjectNode(dummy.get(), headName.c_str());
    if (!head) return nullptr;
    static_cast<void>(dummy.release());  // the head's now
    parent->AttachChild(head, true);
    head->SetNodeTM(time, TransMatrix(positions.Center()));
    head->SetGroupHead(true);
    head->SetGroupMember(parent->IsGroupHead());
    for (INode* const node : members) {
        head->AttachChild(node, true);
        node->SetGroupMember(true);
    }
    all.Commit();
    return head;
}

bool Core::Impl::UngroupNode(INode* head) {
    if (!scene->contains(head) || head == scene->root() || !head->IsGroupHead()) return false;
    UndoScope all(nullptr);
    INode* const parent = head->GetParentNode();
    while (head->NumberOfChildren() > 0) {
        INode* const child = head->GetChildNode(0);
        if (!parent->AttachChild(child, true)) return false;
        child->SetGroupMember(parent->IsGroupHead());
    }
    DeleteNode(head);
    all.Commit();
    return true;
}

void Core::Impl::RedrawViews(TimeValue t, DWORD flags, Animatable* changed) {
    if (isAside) return;
    noteRedraw();
    window->redrawViews(t, flags, changed);
}

void Core::Impl::ZoomToSelection() {
    window->zoomToSelection();
}

HWND Core::Impl::GetKilnHWND() const {
    return window->mainWindow();
}

HWND Core::Impl::AddRollupPage(HINSTANCE module, int dialogId, DLGPROC dialogProcedure,
                               const char* title, LPARAM param, DWORD flags, int category) {
    return window->addRollupPage(module, dialogId, dialogProcedure, title, param, flags, category);
}

void Core::Impl::DeleteRollupPage(HWND page) {
    if (page) window->deleteRollupPage(page);
}

void Core::Impl::RollupMouseMessage(HWND page, UINT message, WPARAM wParam, LPARAM lParam) {
    window->rollupMouseMessage(page, message, wParam, lParam);
}

void Core::Impl::PushPrompt(const char* text) {
    window->pushPrompt(text);
}

const char* Core::Impl::GetDir(int id) const {
    if (id < 0 || static_cast<std::size_t>(id) >= directories.size()) return "";
    return directories[static_cast<std::size_t>(id)].c_str();
}

void Core::Impl::sceneNotifies(int code, void* parameter) {
    if (isAside) return;
    BroadcastNotification(code, parameter);
    if (code != NOTIFY_SELECTION_CHANGED || !utility) return;
    try {
        utility->SelectionSetChanged(this, this);
    } catch (...) {
        // The selection has changed whether the utility copes with it or not.
    }
}

void Core::Impl::sceneNodeInvalidated(Node* node) {
    noteLookChanged(*node);
    window->nodeInvalidated(node);
}

}  // namespace kiln

const char* GetDir(int id) noexcept {
    Interface* const host = GetCOREInterface();
    return host ? host->GetDir(id) : "";
}

Interface* GetCOREInterface() noexcept {
    kiln::Core* const core = kiln::Core::get();
    return core ? &core->hostInterface() : nullptr;
}
