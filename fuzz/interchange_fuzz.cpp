// Any bytes as a file: imported or refused, and what was imported goes out and comes in again.
#include "expect.h"

#include <fltkilnutil/kilnflt.h>
#include <interchange/export.h>
#include <interchange/import.h>
#include <interchange/nodelooks.h>
#include <kiln/host/host.h>
#include <kiln/memory.h>
#include <quillon/fltfilereader.h>

#include <sanitizer/allocator_interface.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

namespace {

class SilentReport final : public ImpExpReport {
public:
    void Error(const char* message) override { error = message; }
    void Summary(const char*) override {}
    bool Progress(double, const char*) override { return true; }
    bool Cancelled() const override { return false; }

    std::string error;
};

/// A file of this process, gone when it ends.
struct ScratchFile {
    std::filesystem::path path = std::filesystem::temp_directory_path() /
                                 ("interchange_fuzz-" + std::to_string(std::random_device()()));
    ~ScratchFile() {
        std::error_code ignored;
        std::filesystem::remove(path, ignored);
    }
};

// What an import may take, beside the file: so much for any, and so much for each of its bytes. A
// record of 4 bytes is enough for a node with a record of full length, a name and an object.
constexpr std::ptrdiff_t kMemoryOfAnyFile = 1 << 20;
constexpr std::ptrdiff_t kMemoryPerByte = 400;

/// Counts the bytes in use on this thread, by whomever they were allocated.
class MemoryWatch {
public:
    MemoryWatch() { __sanitizer_install_malloc_and_free_hooks(&allocated, &freed); }

    /// What was in use at most since `restart`, beyond what was in use then.
    static std::ptrdiff_t peak() { return most_ - start_; }
    static void restart() { start_ = most_ = inUse_; }

private:
    static void allocated(const volatile void*, std::size_t size) {
        inUse_ += static_cast<std::ptrdiff_t>(size);
        most_ = std::max(most_, inUse_);
    }
    static void freed(const volatile void* block) {
        inUse_ -= static_cast<std::ptrdiff_t>(
            __sanitizer_get_allocated_size(const_cast<const void*>(block)));
    }

    static inline thread_local std::ptrdiff_t inUse_ = 0;
    static inline thread_local std::ptrdiff_t most_ = 0;
    static inline thread_local std::ptrdiff_t start_ = 0;
};

bool import(std::span<const std::uint8_t> bytes, Interface& host) {
    SilentReport report;
    try {
        const interchange::FileIndex index = interchange::readFileIndex(bytes);
        expect(index.nodes.size() * 4 <= bytes.size(), "each node has a record");
        expect(index.attached.size() * 4 <= bytes.size(),
               "each attached record stands in the file");
        expect(index.corners.size() * 4 <= bytes.size(), "each corner stands in a list");
        interchange::buildScene(index, "fuzz", report, host);
        return true;
    } catch (const FltFileError& error) {
        expect(error.offset() <= bytes.size(), "the damage lies in the file");
        return false;
    }
}

/// What the nodes are, parents before children: name, kind, record as far as it goes, comment.
std::vector<std::string> nodesOf(Interface& host) {
    std::vector<std::string> all;
    std::vector<INode*> open{host.GetRootNode()};
    while (!open.empty()) {
        INode* const node = open.back();
        open.pop_back();
        std::string text = node->GetName();
        std::string comment;
        FltNodeKind kind{};
        if (fltGetKind(node, false, kind)) {
            text += '|' + std::to_string(static_cast<int>(kind));
        }
        if (fltGetComment(node, comment)) text += '|' + comment;
        all.push_back(text);
        for (int i = node->NumberOfChildren(); i-- > 0;) open.push_back(node->GetChildNode(i));
    }
    return all;
}

constexpr int kMostLayers = 8;

/// Every node can be asked how it looks.
void lookAtAll(Interface& host) {
    interchange::NodeLooks looks;
    looks.BeginLooks(&host);
    std::vector<INode*> open{host.GetRootNode()};
    while (!open.empty()) {
        INode* const node = open.back();
        open.pop_back();
        NodeLook look;
        if (looks.GetLook(node, look)) {
            expect(look.opacity >= 0 && look.opacity <= 1, "an opacity is a share");
            expect(std::abs(look.layer) <= kMostLayers, "there are so many layers");
        }
        INode* const shown = looks.GetInstanced(node);
        static_cast<void>(looks.IsOnlyInstanced(node));
        expect(shown == nullptr || host.IsNodeInScene(shown), "what is shown is there");
        for (int i = node->NumberOfChildren(); i-- > 0;) open.push_back(node->GetChildNode(i));
    }
    looks.EndLooks();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static kiln::Core& core = kiln::Core::create();
    static const ScratchFile scratch;
    static const MemoryWatch watch;
    Interface& host = core.hostInterface();
    const std::vector<std::uint8_t> block(data, data + size);
    core.newScene();
    MemoryWatch::restart();
    const bool imported = import(block, host);
    expect(MemoryWatch::peak() <= kMemoryOfAnyFile + kMemoryPerByte * std::ssize(block),
           "the memory is bounded by the length of the file");
    if (!imported) {
        expect(host.GetNodeCount() == 0, "a refused file leaves no node");
        expect(host.GetTexmapCount() == 0, "a refused file leaves no picture");
        return 0;
    }
    lookAtAll(host);
    const std::vector<std::string> before = nodesOf(host);
    SilentReport report;
    const std::string path = scratch.path.string();
    const int result = interchange::exportFile(path.c_str(), {}, report, host);
    if (result != IMPEXP_SUCCESS) {
        // Levels that were left open to the last one have no room for those that are missing.
        expect(report.error.find("deeper than") != std::string::npos, report.error.c_str());
        return 0;
    }
    const FltFileBytes again = FltFileBytes::load(path);
    core.newScene();
    expect(import(again.bytes(), host), "what was written can be read");
    expect(nodesOf(host) == before, "the nodes are what they were");
    return 0;
}
