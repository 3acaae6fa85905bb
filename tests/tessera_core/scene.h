// A host with an empty scene for each test.
#pragma once

#include "recordingbrowser.h"

#include <fltkilnutil/kilnflt.h>
#include <gtest/gtest.h>
#include <kiln/host/host.h>
#include <quillon/fltlod.h>
#include <tessera/aviaryutil.h>

#include <filesystem>
#include <string>
#include <vector>

/// Notes what the viewports are asked to do.
class NotingWindow final : public kiln::HostWindow {
public:
    void redrawViews(TimeValue t, DWORD, Animatable*) override { redraws.push_back(t); }
    void nodeInvalidated(INode*) override { ++invalidated; }

    std::vector<TimeValue> redraws;
    int invalidated = 0;
};

class SceneTest : public testing::Test {
protected:
    /// The caption library lies in the folder that the tests are run in.
    SceneTest() : core(kiln::Core::create()), host(core.hostInterface()) {
        core.setDirectory(KILN_PLUGIN_DIR, std::filesystem::current_path().string());
        recordingBrowser() = RecordingBrowser{};
    }
    ~SceneTest() override { kiln::Core::destroy(); }

    /// A dummy below `parent` (null for the top level), of OpenFlight kind `kind` unless that is 0.
    INode* add(INode* parent, const char* name, int kind = 0) {
        INode* const node = host.CreateObjectNode(new DummyObject, name);
        if (parent) parent->AttachChild(node, false);
        if (kind) fltEnsureKind(node, FltNodeKind{static_cast<std::uint16_t>(kind)}, kFltRevision);
        return node;
    }

    INode* addLod(INode* parent, const char* name, double switchOut, double switchIn) {
        INode* const node = add(parent, name, 73);
        FltLod record;
        record.switchOutDistance = switchOut;
        record.switchInDistance = switchIn;
        EXPECT_TRUE(fltPutRecord(node, record));
        return node;
    }

    INode* addMesh(INode* parent, const char* name) {
        INode* const node = host.CreateObjectNode(new BoxObject(1, 1, 1), name);
        if (parent) parent->AttachChild(node, false);
        return node;
    }

    /// The names of a node's children, "a,b,c".
    static std::string childNames(INode* node) {
        std::string names;
        for (int i = 0; i < node->NumberOfChildren(); ++i)
            names += std::string(i ? "," : "") + node->GetChildNode(i)->GetName();
        return names;
    }

    kiln::Core& core;
    Interface& host;
    IAviaryUtil& aviary = tessera::aviaryUtil();
};
