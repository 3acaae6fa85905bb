// An engine over an empty scene, with what it printed.
#pragma once

#include "../support/spokenlanguage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kiln/host/host.h>
#include <script/engine.h>

#include <string>

class EngineTest : public testing::Test {
protected:
    EngineTest() : core(kiln::Core::create()), host(core.hostInterface()) {
        script::addHostVerbs(engine);
        engine.setOutput([this](std::string_view line) { printed += std::string(line) + "\n"; });
    }
    ~EngineTest() override { kiln::Core::destroy(); }

    /// The value of a script that must run, as a listing shows it.
    std::string good(const std::string& text) {
        try {
            return engine.run(text, "test.ks").printed();
        } catch (const script::Error& error) {
            ADD_FAILURE() << error.what();
            return error.what();
        }
    }
    /// What is wrong with a script, with its place.
    std::string bad(const std::string& text) {
        try {
            ADD_FAILURE() << text << " gave " << engine.run(text, "test.ks").printed();
        } catch (const script::Error& error) {
            return error.what();
        }
        return {};
    }

    const SpokenLanguage english{KILN_LANGUAGE_ENGLISH};
    kiln::Core& core;
    Interface& host;
    script::Engine engine;
    std::string printed;
};
