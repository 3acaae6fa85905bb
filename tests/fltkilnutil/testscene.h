// A scene of its own for each test.
#pragma once

#include <kiln/host/core.h>
#include <kiln/kiln.h>

#include <gtest/gtest.h>

#include <filesystem>

class TestScene : public testing::Test {
protected:
    /// Makes the host. The caption library lies in the folder that the tests are run in.
    TestScene() {
        kiln::Core::create().setDirectory(KILN_PLUGIN_DIR,
                                          std::filesystem::current_path().string());
    }
    ~TestScene() override { kiln::Core::destroy(); }

    INode* node(Object* object) { return GetCOREInterface()->CreateObjectNode(object); }
    INode* dummy() { return node(new DummyObject); }
};
