// A browser without windows: keeps the tree that its client fills and counts what it is asked for.
#pragma once

#include <tessera/browserexports.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

struct _TREEITEM {
    _TREEITEM() = default;
    _TREEITEM(_TREEITEM&&) = default;
    _TREEITEM& operator=(_TREEITEM&&) = default;
    ~_TREEITEM() { clear(); }

    /// Trees of tests are deeper than the call stack is.
    void clear() {
        std::vector<std::unique_ptr<_TREEITEM>> gone = std::move(children);
        children.clear();
        while (!gone.empty()) {
            const std::unique_ptr<_TREEITEM> item = std::move(gone.back());
            gone.pop_back();
            for (auto& child : item->children) gone.push_back(std::move(child));
            item->children.clear();
        }
    }

    _TREEITEM* parent = nullptr;
    std::string text;
    tessera::NodeHandle node = 0;
    std::vector<std::unique_ptr<_TREEITEM>> children;
};

struct RecordingBrowser {
    /// What the next creations answer once the client agrees; 0 for a form.
    std::int32_t refusal = tessera::kBrowserDone;
    bool exists = false;
    bool shown = false;
    int sceneChanges = 0;
    int refreshes = 0;
    int resets = 0;
    int selectionChanges = 0;  ///< of the host
    int beeps = 0;             ///< of the client
    std::string title;
    tessera::BrowserCallback callback = nullptr;
    void* clientData = nullptr;
    const tessera::NodeCommands* commands = nullptr;
    _TREEITEM top;
    tessera::BrowserItem selected = nullptr;

    /// Sends an event as the form would.
    void send(tessera::BrowserEvent event, tessera::BrowserItem first = nullptr,
              tessera::BrowserItem second = nullptr, std::uintptr_t argument = 0,
              std::uintptr_t argument2 = 0) const;

    /// The first item with that text, depth first; null for none.
    tessera::BrowserItem find(const std::string& text) const;

    /// The whole tree as "a(b,c(d))".
    std::string outline() const;
};

RecordingBrowser& recordingBrowser();
