// A host with an empty scene for each test.
#pragma once

#include "../support/spokenlanguage.h"
#include "../support/temporaryfolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kiln/host/host.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

class HostTest : public ::testing::Test {
protected:
    HostTest() : core(kiln::Core::create()), host(core.hostInterface()), root(host.GetRootNode()) {}
    ~HostTest() override {
        kiln::Core::destroy();
        EXPECT_EQ(kiln::allocatedBlocks(), blocksBefore) << "blocks of the host allocator leaked";
    }

    INode* addNode(const char* name, INode* parent = nullptr) {
        INode* const node = host.CreateObjectNode(new DummyObject, name);
        if (parent) parent->AttachChild(node);
        return node;
    }

    static std::vector<std::string> childNames(INode* parent) {
        std::vector<std::string> names;
        names.reserve(static_cast<std::size_t>(parent->NumberOfChildren()));
        for (int i = 0; i < parent->NumberOfChildren(); ++i)
            names.emplace_back(parent->GetChildNode(i)->GetName());
        return names;
    }

    std::size_t blocksBefore = kiln::allocatedBlocks();
    const SpokenLanguage english{KILN_LANGUAGE_ENGLISH};
    kiln::Core& core;
    Interface& host;
    INode* root;
};

/// Writes down the notifications of one test.
class Recorder {
public:
    explicit Recorder(std::vector<int> codes) : codes_(std::move(codes)) {
        for (const int code : codes_) RegisterNotification(record, this, code);
    }
    ~Recorder() {
        for (const int code : codes_) UnRegisterNotification(record, this, code);
    }
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    std::vector<int> seen;
    std::function<void(int code, void* parameter)> onNotification;

private:
    static void record(void* param, NotifyInfo* info) {
        auto& self = *static_cast<Recorder*>(param);
        self.seen.push_back(info->intcode);
        if (self.onNotification) self.onNotification(info->intcode, info->callParam);
    }

    std::vector<int> codes_;
};

/// A block of the host allocator with the bytes of `text`.
inline void* hostBlock(const std::string& text) {
    void* const block = KILN_malloc(text.size());
    std::memcpy(block, text.data(), text.size());
    return block;
}

inline std::string bytesOf(const AppDataChunk* chunk) {
    return chunk ? std::string(static_cast<const char*>(chunk->data), chunk->length) : "(none)";
}

/// The largest difference between two transforms' numbers.
inline double difference(const Matrix3& a, const Matrix3& b) {
    double largest = 0;
    for (int row = 0; row < 4; ++row)
        largest = std::max(largest, Length(a.GetRow(row) - b.GetRow(row)));
    return largest;
}
