// The scene: what it holds, making, naming, linking, showing and moving nodes.
#include "hostfiles.h"
#include "published.h"
#include "texts.h"

#include <script/engine.h>

#include <kiln/host/core.h>
#include <kiln/kiln.h>

#include <array>
#include <cmath>
#include <numbers>
#include <string_view>

namespace script {

namespace {

Interface& host() {
    Interface* const host = GetCOREInterface();
    if (!host) throw Failure(textOf(TextId::kNoScene));
    return *host;
}

kiln::History& history() {
    static_cast<void>(host());
    return kiln::Core::get()->history();
}

INode* nodeIn(const Value& value) {
    const auto* const reference = value.as<NodeReference>();
    if (!reference) throw Failure("a node was expected, not " + value.described());
    return &livingNode(*reference);
}

Matrix3 moved(Matrix3 matrix, const Point3& position) {
    matrix.SetTrans(position);
    return matrix;
}

// Everything below `top`, parents first.
void collect(INode& top, std::vector<Value>& nodes) {
    ForEachInSubtree(&top, [&](INode& node) {
        if (&node != &top) nodes.push_back(Value::ofNode(&node));
    });
}

void link(INode* child, INode* parent) {
    if (!parent || parent->IsRootNode()) {
        child->Detach(host().GetTime());
    } else if (!parent->AttachChild(child)) {
        throw Failure(textOf(TextId::kCannotLink,
                             {quotedText(child->GetName()), quotedText(parent->GetName())}));
    }
}

// Creation.

void place(INode* node, const Arguments& arguments, std::size_t position, std::size_t parent) {
    if (arguments.has(position))
        node->SetNodeTM(host().GetTime(), moved(Matrix3(), arguments.point(position)));
    if (arguments.has(parent)) link(node, arguments.node(parent));
}

// Arguments 0 to 2 are name, position and parent, and are looked at before anything is made.
Value create(const Arguments& arguments, Object* object) {
    object->AddReference();
    const std::shared_ptr<Object> release(object, [](Object* one) { one->ReleaseReference(); });
    const std::string* const name = arguments.has(0) ? &arguments.text(0) : nullptr;
    if (arguments.has(1)) arguments.point(1);
    if (arguments.has(2)) arguments.node(2);
    INode* const node =
        name ? host().CreateObjectNode(object, name->c_str()) : host().CreateObjectNode(object);
    if (!node) throw Failure(textOf(TextId::kNodeNotMade));
    place(node, arguments, 1, 2);
    return Value::ofNode(node);
}

Value createDummy(const Arguments& arguments) {
    const double size = arguments.number(3, 10);
    auto* const dummy = new DummyObject;
    dummy->SetSize(size);
    return create(arguments, dummy);
}

Value createBox(const Arguments& arguments) {
    const double length = arguments.number(3, 10);
    const double width = arguments.number(4, 10);
    const double height = arguments.number(5, 10);
    return create(arguments, new BoxObject(length, width, height));
}

Value createLight(const Arguments& arguments) {
    static constexpr std::array<std::pair<std::string_view, Class_ID>, 4> kKinds = {
        {{"omni", OMNI_LIGHT_CLASS_ID},
         {"spot", SPOT_LIGHT_CLASS_ID},
         {"directional", DIR_LIGHT_CLASS_ID},
         {"freespot", FSPOT_LIGHT_CLASS_ID}}};
    const std::string kind = arguments.has(3) ? arguments.text(3) : "omni";
    for (const auto& [name, id] : kKinds)
        if (name == kind) return create(arguments, new GenLight(id));
    throw Failure("the kind of a light is \"omni\", \"spot\", \"directional\" or \"freespot\"");
}

Value bitmapTexture(const Arguments& arguments) {
    auto* const map = new BitmapTex;
    map->SetMapName(arguments.text(0).c_str());
    map->SetName((arguments.has(1) ? arguments.text(1) : arguments.text(0)).c_str());
    host().AddTexmap(map);
    return Value::ofMap(map);
}

// The history.

void addHistory(Engine& engine) {
    engine.addVerb("undo", "", [&engine](const Arguments&) {
        return Value(engine.betweenSteps([] { return history().undo(); }));
    });
    engine.addVerb("redo", "", [&engine](const Arguments&) {
        return Value(engine.betweenSteps([] { return history().redo(); }));
    });
}

void addCreation(Engine& engine) {
    engine.addVerb("createDummy", "name? position? parent? size?", createDummy);
    engine.addVerb("createBox", "name? position? parent? length? width? height?", createBox);
    engine.addVerb("createLight", "name? position? parent? kind?", createLight);
    engine.addVerb("bitmapTexture", "file name?", bitmapTexture);
    engine.addVerb("delete", "nodes", [](const Arguments& arguments) {
        std::vector<DWORD> handles;
        for (const INode* node : arguments.nodes(0)) handles.push_back(node->GetHandle());
        // One may lie below another and go with it.
        for (const DWORD handle : handles)
            if (INode* const node = host().GetINodeByHandle(handle)) host().DeleteNode(node);
        return Value(Done{});
    });
}

// Selection and visibility.

template <typename Action>
Verb onNodes(Action action) {
    return [action](const Arguments& arguments) {
        for (INode* node : arguments.nodes(0)) action(*node);
        return Value(Done{});
    };
}

Value selection() {
    std::vector<Value> nodes;
    nodes.reserve(static_cast<std::size_t>(host().GetSelNodeCount()));
    for (int i = 0; i < host().GetSelNodeCount(); ++i)
        nodes.push_back(Value::ofNode(host().GetSelNode(i)));
    return Value::ofArray(std::move(nodes));
}

void addSelection(Engine& engine) {
    engine.addVerb("select", "nodes", [](const Arguments& arguments) {
        const std::vector<INode*> nodes = arguments.nodes(0);
        host().ClearNodeSelection();
        for (INode* node : nodes) host().SelectNode(node, false);
        return Value(Done{});
    });
    engine.addVerb("selectMore", "nodes",
                   onNodes([](INode& node) { host().SelectNode(&node, false); }));
    engine.addVerb("deselect", "nodes", onNodes([](INode& node) { host().DeSelectNode(&node); }));
    engine.addVerb("clearSelection", "", [](const Arguments&) {
        host().ClearNodeSelection();
        return Value(Done{});
    });
    engine.addVerb("hide", "nodes", onNodes([](INode& node) { node.Hide(true); }));
    engine.addVerb("unhide", "nodes", onNodes([](INode& node) { node.Hide(false); }));
    engine.addValue("selection", selection);
    engine.addValue("objects", [] {
        std::vector<Value> nodes;
        collect(*host().GetRootNode(), nodes);
        return Value::ofArray(std::move(nodes));
    });
    engine.addValue("rootNode", [] { return Value::ofNode(host().GetRootNode()); });
    engine.addVerb("nodeByName", "name", [](const Arguments& arguments) {
        return Value::ofNode(host().GetINodeByName(arguments.text(0).c_str()));
    });
}

// Linking and groups.

Value group(const Arguments& arguments) {
    Tab<INode*> nodes;
    for (INode* node : arguments.nodes(0)) nodes.Append(1, &node);
    const char* const name = arguments.has(1) ? arguments.text(1).c_str() : nullptr;
    INode* const head = host().GroupNodes(nodes, name);
    if (!head) throw Failure(textOf(TextId::kCannotGroup));
    return Value::ofNode(head);
}

void addLinking(Engine& engine) {
    engine.addVerb("link", "child parent", [](const Arguments& arguments) {
        INode* const parent = arguments.node(1);
        for (INode* child : arguments.nodes(0)) link(child, parent);
        return Value(Done{});
    });
    engine.addVerb("unlink", "nodes", onNodes([](INode& node) { node.Detach(host().GetTime()); }));
    engine.addVerb("group", "nodes name?", group);
    engine.addVerb("ungroup", "head", [](const Arguments& arguments) {
        if (!host().UngroupNode(arguments.node(0))) throw Failure(textOf(TextId::kNoGroup));
        return Value(Done{});
    });
}

// Transforms.

void transform(INode* node, const Matrix3& by) {
    node->SetNodeTM(host().GetTime(), by);
}

Value rotate(const Arguments& arguments) {
    const Point3 axis = Normalize(arguments.point(1));
    if (Length(axis) == 0) throw Failure("the axis has no direction");
    const double angle = arguments.number(2) * std::numbers::pi / 180;
    for (INode* node : arguments.nodes(0)) {
        const Matrix3 world = node->GetNodeTM(host().GetTime());
        // About the node's own place.
        transform(node,
                  moved(moved(world, {}) * RotAngleAxisMatrix(axis, angle), world.GetTrans()));
    }
    return Value(Done{});
}

Value scale(const Arguments& arguments) {
    const Point3 factors =
        arguments[1].isNumber() ? Point3{1, 1, 1} * arguments.number(1) : arguments.point(1);
    if (factors.x == 0 || factors.y == 0 || factors.z == 0)
        throw Failure("a node cannot be scaled by 0");
    for (INode* node : arguments.nodes(0))
        transform(node, ScaleMatrix(factors) * node->GetNodeTM(host().GetTime()));
    return Value(Done{});
}

void addTransforms(Engine& engine) {
    engine.addVerb("move", "nodes offset", [](const Arguments& arguments) {
        const Point3 offset = arguments.point(1);
        for (INode* node : arguments.nodes(0)) {
            const Matrix3 world = node->GetNodeTM(host().GetTime());
            transform(node, moved(world, world.GetTrans() + offset));
        }
        return Value(Done{});
    });
    engine.addVerb("rotate", "nodes axis degrees", rotate);
    engine.addVerb("scale", "nodes factors", scale);
    engine.addVerb("resetTransform", "nodes",
                   onNodes([](INode& node) { node.SetNodeTM(host().GetTime(), Matrix3()); }));
}

// Properties of nodes.

void setName(INode& node, const Value& value) {
    if (!value.text()) throw Failure("a name is a string, not " + value.described());
    node.SetName(value.text()->c_str());
}

void setParent(INode& node, const Value& value) {
    link(&node, value.isUndefined() ? nullptr : nodeIn(value));
}

bool booleanIn(const Value& value) {
    const auto* const boolean = value.as<bool>();
    if (!boolean) throw Failure("true or false was expected, not " + value.described());
    return *boolean;
}

void setPosition(INode& node, const Value& value) {
    const auto* const point = value.as<Point3>();
    if (!point) throw Failure("a position is a point such as [1, 2, 3], not " + value.described());
    if (!std::isfinite(point->x) || !std::isfinite(point->y) || !std::isfinite(point->z))
        throw Failure("this point is infinite");
    transform(&node, moved(node.GetNodeTM(host().GetTime()), *point));
}

Value children(INode& node) {
    std::vector<Value> nodes;
    nodes.reserve(static_cast<std::size_t>(node.NumberOfChildren()));
    for (int i = 0; i < node.NumberOfChildren(); ++i)
        nodes.push_back(Value::ofNode(node.GetChildNode(i)));
    return Value::ofArray(std::move(nodes));
}

void addProperties(Engine& engine) {
    engine.addNodeProperty(
        "name", [](INode& node) { return Value(node.GetName()); }, setName);
    engine.addNodeProperty(
        "parent",
        [](INode& node) {
            INode* const parent = node.GetParentNode();
            return parent && !parent->IsRootNode() ? Value::ofNode(parent) : Value();
        },
        setParent);
    engine.addNodeProperty("children", children);
    engine.addNodeProperty(
        "hidden", [](INode& node) { return Value(node.IsHidden()); },
        [](INode& node, const Value& value) { node.Hide(booleanIn(value)); });
    engine.addNodeProperty(
        "selected", [](INode& node) { return Value(node.Selected()); },
        [](INode& node, const Value& value) {
            if (booleanIn(value))
                host().SelectNode(&node, false);
            else
                host().DeSelectNode(&node);
        });
    engine.addNodeProperty(
        "position", [](INode& node) { return Value(node.GetNodeTM(host().GetTime()).GetTrans()); },
        setPosition);
    engine.addNodeProperty("object", [](INode& node) {
        Object* const object = node.GetObjectRef();
        return object ? Value(object->GetObjectName()) : Value();
    });
}

}  // namespace

void addHostVerbs(Engine& engine) {
    addHistory(engine);
    addCreation(engine);
    addSelection(engine);
    addLinking(engine);
    addTransforms(engine);
    addProperties(engine);
    addFileVerbs(engine);
}

}  // namespace script
