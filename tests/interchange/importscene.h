// A host with an empty scene for each test, to import into.
#pragma once

#include "../support/spokenlanguage.h"

#include <gtest/gtest.h>
#include <interchange/import.h>
#include <kiln/host/host.h>
#include <quillon/fltfilereader.h>

#include <string>

/// Remembers what it is told, and cancels when it is told to.
class RecordingReport : public ImpExpReport {
public:
    void Error(const char* message) override { error = message; }
    void Summary(const char* line) override { summary = line; }
    bool Progress(double fraction, const char*) override {
        EXPECT_GE(fraction, progress);
        progress = fraction;
        return !Cancelled();
    }
    bool Cancelled() const override { return progress >= cancelAt; }

    std::string error;
    std::string summary;
    double progress = 0;
    double cancelAt = 2;
};

class ImportScene : public testing::Test {
protected:
    ImportScene() : core(kiln::Core::create()), host(core.hostInterface()) { core.newScene(); }
    ~ImportScene() override { core.newScene(); }

    /// Imports a file; returns the node of the database.
    INode* import(std::span<const std::uint8_t> file, const char* name = "airfield") {
        report.progress = 0;
        return interchange::buildScene(interchange::readFileIndex(file), name, report, host);
    }

    /// The names of the scene's nodes, "a(b,c(d))".
    std::string tree() const { return namesBelow(*host.GetRootNode()); }

    const SpokenLanguage language{KILN_LANGUAGE_ENGLISH};
    kiln::Core& core;
    Interface& host;
    RecordingReport report;

private:
    static std::string namesBelow(INode& node) {
        std::string names;
        for (int i = 0; i < node.NumberOfChildren(); ++i) {
            INode& child = *node.GetChildNode(i);
            const std::string below = namesBelow(child);
            if (i != 0) names += ',';
            names += child.GetName();
            if (!below.empty()) names.append("(").append(below).append(")");
        }
        return names;
    }
};
