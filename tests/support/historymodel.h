// A model of the history: random changes of every kind, undone, redone, rolled back and without
// memory, each time compared with what the scene was.
#pragma once

#include <kiln/host/host.h>

#include <array>
#include <functional>
#include <new>
#include <string>
#include <utility>
#include <vector>

/// A custom attribute with one number, which is changed in place.
class ModelAttrib final : public CustAttrib {
public:
    Class_ID ClassID() const override { return {0x4D6F6465, 0x6C}; }
    std::vector<BYTE> SaveState() const override { return {number}; }
    bool LoadState(const BYTE* bytes, std::size_t length) override {
        if (length != 1) return false;
        number = *bytes;
        return true;
    }
    BYTE number = 0;
};

class HistoryModel {
public:
    static constexpr int kMostNodes = 40;  // at which no more are made

    /// `choose` returns a number below its argument.
    HistoryModel(kiln::Core& core, std::function<unsigned(unsigned)> choose)
        : core_(core), host_(core.hostInterface()), choose_(std::move(choose)) {
        core_.newScene();
    }

    std::size_t changes = 0, undone = 0, rolledBack = 0, outOfMemory = 0;

    /// Further changes for every third one within a scope; what is wrong with one, or an empty
    /// text.
    std::function<std::string()> further;

    /// Does one thing; what is wrong afterwards, or an empty text.
    std::string step() {
        switch (choose_(12)) {
            case 0:
            case 1:
                return undo();
            case 2:
                return redo();
            case 3:
                return goAnywhere();
            case 4:
                return rollBack();
            case 5:
                return withoutMemory();
            case 6:
                core_.setModified(false);
                saved_ = static_cast<long>(position());
                return check("saving", state());
            case 7:
                return outsideOfScopes();
            default:
                return action();
        }
    }

private:
    struct Step {
        std::string before, after;
    };

    std::size_t position() { return core_.history().doneCount(); }

    /// Whatever can be seen of the scene: what is saved, and who has which handle and name.
    std::string state() {
        std::string text = core_.sceneText();
        ForEachInSubtree(host_.GetRootNode(), [&](INode& node) {
            const auto add = [&](const INode* one) {
                text += one ? std::to_string(one->GetHandle()) + ' ' : "none ";
            };
            add(&node);
            add(host_.GetINodeByHandle(node.GetHandle()));
            add(host_.GetINodeByName(node.GetName()));
            for (int i = 0; i < node.NumberOfChildren(); ++i)
                if (node.GetChildIndex(node.GetChildNode(i)) != i) text += "order";
            text += host_.IsNodeInScene(&node) ? "in\n" : "out\n";
        });
        return text + std::to_string(host_.GetNodeCount());
    }

    std::string check(const char* what, const std::string& expected) {
        if (!wrong_.empty()) return wrong_;
        if (state() != expected)
            return std::string(what) + ": the scene differs\n" + state() + "\ninstead of\n" +
                   expected;
        if (core_.history().stepCount() != steps_.size())
            return std::string(what) + ": other steps than expected";
        if (core_.isModified() != (saved_ != static_cast<long>(position())))
            return std::string(what) + ": is it modified?";
        return {};
    }

    std::string undo() {
        const std::size_t at = position();
        if (core_.history().undo() != (at > 0)) return "undo was refused, or was not";
        if (at == 0) return {};
        ++undone;
        return check("undo", steps_[at - 1].before);
    }
    std::string redo() {
        const std::size_t at = position();
        if (core_.history().redo() != (at < steps_.size())) return "redo was refused, or was not";
        return at == steps_.size() ? std::string() : check("redo", steps_[at].after);
    }
    std::string goAnywhere() {
        const std::size_t from = position();
        const std::size_t to = choose_(static_cast<unsigned>(steps_.size()) + 1);
        if (!core_.history().goTo(to)) return "a step was out of reach";
        if (from == to) return {};
        return check("a jump", to < from ? steps_[to].before : steps_[to - 1].after);
    }

    /// Writes down a step that may have been made.
    std::string made(std::size_t at, const std::string& before) {
        if (position() == at) return check("an action that did nothing", state());
        if (position() != at + 1) return "an action was not one step";
        ++changes;
        if (saved_ > static_cast<long>(at)) saved_ = -1;  // it was undone, and now it is gone
        steps_.resize(at);
        steps_.push_back({before, state()});
        return check("an action", steps_.back().after);
    }

    std::string action() {
        const std::size_t at = position();
        const std::string before = state();
        UndoScope scope("action");
        changeSeveral();
        const std::string middle = state();
        if (choose_(4) == 0) {
            UndoScope within("within");
            changeSeveral();
            if (choose_(2) == 0) {
                within.RollBack();
                if (state() != middle)
                    return "a rollback within differs:\n" + state() + "\ninstead of\n" + middle;
            } else {
                within.Commit();
            }
            changeSeveral();
        }
        scope.Commit();
        return made(at, before);
    }

    std::string outsideOfScopes() {
        const std::size_t at = position();
        const std::string before = state();
        changeSeveral(false);
        core_.history().endCommand();
        return made(at, before);
    }

    std::string rollBack() {
        const std::string before = state();
        try {
            UndoScope scope("fails");
            changeSeveral();
            {
                UndoScope within("joins");
                changeSeveral();
                within.Commit();
            }
            throw 1;
        } catch (int) {
            ++rolledBack;
        }
        return check("a rollback", before);
    }

    std::string withoutMemory() {
        const std::size_t at = position();
        const std::string before = state();
        bool kept = false;
        try {
            const kiln::AllocationLimit limit(choose_(12));
            UndoScope scope("short of memory");
            changeSeveral();
            scope.Commit();
            kept = true;
        } catch (const std::bad_alloc&) {
            ++outOfMemory;
        }
        return kept ? made(at, before) : check("a rollback for want of memory", before);
    }

    // ------------------------------------------------------------ changes

    void changeSeveral(bool inScope = true) {
        for (unsigned count = 1 + choose_(4); count > 0; --count) {
            if (!inScope || !further || choose_(3) != 0)
                changeOne();
            else if (std::string wrong = further(); wrong_.empty())
                wrong_ = std::move(wrong);
        }
    }

    INode& anyNode() {
        std::vector<INode*> nodes;
        ForEachInSubtree(host_.GetRootNode(), [&](INode& node) { nodes.push_back(&node); });
        return *nodes[choose_(static_cast<unsigned>(nodes.size()))];
    }
    Texmap* anyMap() {
        const auto count = static_cast<unsigned>(host_.GetTexmapCount());
        return count == 0 ? nullptr : host_.GetTexmap(static_cast<int>(choose_(count)));
    }
    Animatable& anyThing() {
        INode& node = anyNode();
        switch (choose_(4)) {
            case 0:
                if (node.GetObjectRef()) return *node.GetObjectRef();
                break;
            case 1:
                if (Texmap* const map = anyMap()) return *map;
                break;
            default:
                break;
        }
        return node;
    }
    const char* anyName() {
        constexpr std::array kNames = {"a", "b", "g001", "g002", "长名字", ""};
        return kNames[choose_(kNames.size())];
    }
    Matrix3 anyTransform() {
        const auto number = [&] { return static_cast<double>(choose_(7)) - 3; };
        Matrix3 tm = RotAngleAxisMatrix({0, 0, 1}, number()) * ScaleMatrix({1, number(), 2});
        tm.SetTrans({number(), number(), 0.1});
        return tm;
    }
    OwnedPtr<Object> anyObject() {
        switch (choose_(6)) {
            case 0:
                return OwnedPtr<Object>(new BoxObject);
            case 1:
                return OwnedPtr<Object>(new SplineShape);
            case 2:
                return OwnedPtr<Object>(new GenLight(OMNI_LIGHT_CLASS_ID));
            case 3:
                return OwnedPtr<Object>(new DummyObject);
            default:
                return OwnedPtr<Object>(new TriObject);
        }
    }

    void create() {
        if (host_.GetNodeCount() >= kMostNodes) return;
        OwnedPtr<Object> object = anyObject();
        INode* const node = choose_(3) == 0 ? host_.CreateObjectNode(object.get(), anyName())
                                            : host_.CreateObjectNode(object.get());
        if (!node) throw std::bad_alloc();
        static_cast<void>(object.release());
        if (choose_(2) == 0) anyNode().AttachChild(node, choose_(2) == 0);
        if (choose_(3) == 0) node->SetName(anyName());
        if (choose_(3) == 0) changeChunk(*node);
        if (choose_(4) == 0) node->SetLocalTM(0, anyTransform());
    }

    void changeObject(Object* object) {
        if (auto* const light = dynamic_cast<GenLight*>(object)) {
            light->SetColor(choose_(9));
            light->SetIntensity(choose_(3));
            light->SetUseLight(choose_(2) == 0);
        } else if (auto* const box = dynamic_cast<BoxObject*>(object)) {
            box->SetSize(1 + choose_(3), 2, 1 + choose_(2));
        } else if (auto* const dummy = dynamic_cast<DummyObject*>(object)) {
            dummy->SetSize(choose_(5));
        } else if (auto* const spline = dynamic_cast<SplineShape*>(object)) {
            spline->SetClosed(choose_(2) == 0);
            spline->SetRenderable(choose_(2) == 0);
            if (spline->AboutToChange()) spline->GetPoints().Append({1.0 * choose_(9), 2, 3});
        } else if (auto* const tri = dynamic_cast<TriObject*>(object)) {
            if (!tri->AboutToChange()) return;
            Mesh& mesh = tri->GetMesh();
            mesh.verts.Append({1.0 * choose_(9), 2, 3});
            const auto last = static_cast<DWORD>(mesh.verts.Count() - 1);
            if (choose_(2) == 0) mesh.faces.Append({{last, 0, last / 2}, 1, 0});
            if (choose_(9) == 0) mesh.Clear();
        }
    }

    void changeChunk(Animatable& thing) {
        const Class_ID id{7, choose_(2)};
        const DWORD sub = choose_(3);
        switch (choose_(6)) {
            case 0:
                thing.RemoveAppDataChunk(id, 1, sub);
                return;
            case 1:
                if (choose_(4) == 0) thing.ClearAllAppData();
                return;
            case 2:
            case 3: {
                AppDataChunk* const chunk = thing.GetAppDataChunk(id, 1, sub);
                if (!chunk || chunk->length == 0) return;
                const DWORD from = choose_(chunk->length);
                const DWORD count = choose_(chunk->length - from) + 1;
                if (!thing.AboutToChangeAppData(*chunk, from, count)) return;
                for (DWORD i = 0; i < count; ++i)
                    static_cast<BYTE*>(chunk->data)[from + i] ^= static_cast<BYTE>(1 + choose_(99));
                thing.NotifyAppDataChanged();
                return;
            }
            default: {
                const DWORD length = choose_(20);
                auto* const block = static_cast<BYTE*>(KILN_malloc(length));
                if (!block) return;
                for (DWORD i = 0; i < length; ++i) block[i] = static_cast<BYTE>(choose_(256));
                if (!thing.AddAppDataChunk(id, 1, sub, length, block)) KILN_free(block);
            }
        }
    }

    void changeAttributes(Animatable& thing) {
        if (choose_(6) == 0) return thing.DeleteCustAttribContainer();
        ICustAttribContainer* const container = thing.AllocCustAttribContainer();
        if (!container) return;
        const int count = container->GetNumCustAttribs();
        const int index = static_cast<int>(choose_(static_cast<unsigned>(count) + 1));
        if (index < count && choose_(2) == 0) {
            auto* const attrib = static_cast<ModelAttrib*>(container->GetCustAttrib(index));
            if (choose_(2) == 0) {
                container->RemoveCustAttrib(index);
            } else if (attrib->AboutToChange()) {
                attrib->number = static_cast<BYTE>(choose_(256));
            }
        } else {
            OwnedPtr<ModelAttrib> attrib(new ModelAttrib);
            if (container->InsertCustAttrib(index, attrib.get()))
                static_cast<void>(attrib.release());
        }
    }

    void changeMaps() {
        switch (choose_(5)) {
            case 0:
                if (host_.GetTexmapCount() < 6) {
                    OwnedPtr<BitmapTex> map(new BitmapTex);
                    map->SetMapName("picture.rgb");
                    host_.AddTexmap(map.get());
                    static_cast<void>(map.release());
                }
                return;
            case 1:
                if (Texmap* const map = anyMap()) host_.RemoveTexmap(map);
                return;
            case 2:
                if (Texmap* const map = anyMap()) map->SetName(anyName());
                return;
            case 3:
                if (auto* const map = static_cast<BitmapTex*>(anyMap())) map->SetMapName(anyName());
                return;
            default:
                anyNode().SetTexmap(anyMap());
        }
    }

    void changeSelection() {
        INode& node = anyNode();
        if (choose_(5) == 0) return host_.ClearNodeSelection();
        if (choose_(3) == 0) return host_.DeSelectNode(&node);
        host_.SelectNode(&node, choose_(3) == 0);
    }

    void changeOne() {
        INode& node = anyNode();
        switch (choose_(24)) {
            case 0:
                if (choose_(2) == 0) host_.DeleteNode(&node);
                return;
            case 1:
            case 2:
                return node.SetName(anyName());
            case 3:
            case 4:
                anyNode().AttachChild(&node, choose_(2) == 0);
                return;
            case 5:
                return node.Detach(0, choose_(2) == 0);
            case 6:
                return node.SetLocalTM(0, anyTransform());
            case 7:
                return node.SetNodeTM(0, anyTransform());
            case 8:
                return node.Hide(choose_(2) == 0);
            case 9:
                return node.SetWireColor(choose_(5));
            case 10:
                node.SetGroupHead(choose_(2) == 0);
                return node.SetGroupMember(choose_(2) == 0);
            case 11: {
                if (choose_(2) == 0) return node.SetObjectRef(anyNode().GetObjectRef());
                OwnedPtr<Object> object = anyObject();
                node.SetObjectRef(object.get());
                if (object->NumReferences() > 0) static_cast<void>(object.release());
                return;
            }
            case 12:
            case 13:
                return changeObject(node.GetObjectRef());
            case 14:
            case 15:
            case 16:
                return changeChunk(anyThing());
            case 17:
                return changeAttributes(anyThing());
            case 18:
                return changeMaps();
            case 19:
                return changeSelection();
            case 20:
                if (choose_(3) == 0) host_.GroupNodes({&node, &anyNode()});
                return;
            case 21:
                host_.UngroupNode(&node);
                return;
            default:
                return create();
        }
    }

    kiln::Core& core_;
    Interface& host_;
    std::function<unsigned(unsigned)> choose_;
    std::vector<Step> steps_;
    std::string wrong_;  // with a further change
    long saved_ = 0;     // how many steps were done when it was saved; -1: that cannot be again
};
