// What plug-ins do to a scene, for the model of the history.
#pragma once

#include <fltscene.h>
#include <kiln/host/host.h>
#include <quillon/fltgroup.h>
#include <quillon/fltlod.h>
#include <quillon/fltmaterial.h>
#include <quillon/fltobject.h>
#include <quillon/fltswitch.h>
#include <quillon/flttext.h>
#include <quillon/fltxref.h>
#include <script/engine.h>

#include <functional>
#include <new>
#include <string>
#include <utility>

#include "historymodel.h"

/// A database of a few nodes that has something for each action.
inline samples::FltScene databaseToChange() {
    samples::FltScene scene;
    scene.colors = {{200, 40, 30}, {30, 90, 200}, {200, 40, 30}};
    for (const char* file : {"walls.rgb", "roof.rgb"}) scene.addTexture(file);
    for (const int index : {3, 1, 3}) {  // with a gap, and one twice
        FltMaterial material;
        material.index = index;
        fltSetText(material.name, "paint");
        scene.addPalette(material);
    }
    samples::Node& group = scene.root.add(FltGroup());
    samples::Node& object = group.add(FltLod()).add(FltObject());
    object.addFace({{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {0, 10, 0}}, 0, 0);
    object.addFace({{10.2, 0, 0}, {20, 0, 0}, {20, 10, 0}, {10.2, 5, 0}, {10.2, 10, 0}}, 1, 1);
    object
        .addFace({{0, 0, 5}, {10, 0, 5}, {5, 0, 5}}, 2)  // without area
        .changeFace([](FltFace& face) { face.materialIndex = 3; })
        .addSubface({{1, 0, 5}, {2, 0, 5}, {2, 0, 6}}, 0);
    group.add(FltSwitch());
    group.add(FltXRef()).comment("refers to nothing");
    return scene;
}

/// One action of the plug-ins, carried out as a script, on nodes and with values as `choose` says.
/// The plug-ins are loaded.
class PluginActions {
public:
    /// `file` is one with `databaseToChange`.
    PluginActions(kiln::Core& core, std::function<unsigned(unsigned)> choose,
                  const std::string& file)
        : core_(core), host_(core.hostInterface()), choose_(std::move(choose)) {
        script::addHostVerbs(engine_);
        engine_.setVariable("file", file);
    }

    std::size_t changed = 0, refused = 0;

    /// Imports the file, which is then where the history begins. Throws `script::Error`.
    void begin() {
        engine_.run("importFile file", "begin.ks");
        core_.history().clear();
        core_.setModified(false);
    }

    /// What is wrong with it, or an empty text.
    std::string operator()() {
        constexpr const char* kActions[] = {
            "importFile file",
            "FltGeometry.weld (i * 0.5) n",
            "FltGeometry.triangulate n",
            "FltGeometry.flip n",
            "FltGeometry.dropDegenerate n",
            "FltGeometry.normals (i * 20.0) n",
            "FltGeometry.fitBounds n",
            "FltGeometry.changeUnits #(\"metres\", \"feet\", \"miles\")[1 + mod i 3] n",
            "FltPalettes.add n p \"new\"",
            "FltPalettes.copy n p i",
            "FltPalettes.set n p i (FltPalettes.fields p)[1 + mod j 5] \"1 0.5 0\"",
            "FltPalettes.set n p i (FltPalettes.fields p)[1 + mod j 5] \"other\"",
            "FltPalettes.remove n p i",
            "FltPalettes.assign n p (i - 1)",
            "FltPalettes.compact n p",
            "FltPalettes.findOrAddColor n (i * 20) 40 30",
            "FltPalettes.import n p file",
            "FltCheck.run \"general\"; FltCheck.mend (1 + mod j (max 1 (FltCheck.count())))",
            "k = attrKeys n; setAttr n k[1 + mod j k.count] i",
            "Aviary.CreateGroup()",
            "Aviary.CreateLOD()",
            "Aviary.CreateLightPoint()",
            "Aviary.CopyData n m",
            "Aviary.RemoveData n",
            "Aviary.PutComment n \"said\"",
            "Aviary.SetKeepTriangles n (i > 4)",
            "Aviary.PutExternalRefFilename n \"other.flt\"",
            "Aviary.PutExternalRefFlags n j",
            "Aviary.LodLessDetail()",
            "Aviary.LodMostDetail()",
            "link n m",
            "group #(n, m)",
            "rotate n [0, 0, 1] (i * 10)",
            "scale n [1, 2, i]",
        };
        constexpr const char* kPalettes[] = {"color",   "material", "texture",
                                             "mapping", "light",    "appearance"};
        const char* const action = kActions[choose_(std::size(kActions))];
        if (action == kActions[0] && host_.GetNodeCount() >= HistoryModel::kMostNodes) return {};
        engine_.setVariable("n", anyNode());
        engine_.setVariable("m", anyNode());
        engine_.setVariable("p", kPalettes[choose_(std::size(kPalettes))]);
        engine_.setVariable("i", static_cast<std::int32_t>(choose_(8)));
        engine_.setVariable("j", static_cast<std::int32_t>(choose_(256)));
        const std::string before = core_.sceneText();
        try {
            const script::Value value = engine_.run(action, "action.ks");
            changed += core_.sceneText() != before ? 1 : 0;
            const bool* const accepted = value.as<bool>();
            // `CopyData` that fails may have copied the kind.
            if (!accepted || *accepted || std::string_view(action).starts_with("Aviary.Copy"))
                return {};
        } catch (const script::Error&) {
            ++refused;
        } catch (const std::bad_alloc&) {
            return std::string(action) + ": a script without memory ends with an error of its own";
        }
        if (core_.sceneText() == before) return {};
        return std::string(action) + ": it was refused and has changed the scene";
    }

private:
    script::Value anyNode() {
        const auto count = static_cast<unsigned>(host_.GetNodeCount());
        unsigned left = choose_(count + 1);
        INode* found = nullptr;
        ForEachInSubtree(host_.GetRootNode(), [&](INode& node) {
            if (left-- == 0) found = &node;
        });
        return script::Value::ofNode(found);
    }

    kiln::Core& core_;
    Interface& host_;
    std::function<unsigned(unsigned)> choose_;
    script::Engine engine_;
};
