// What the status bar says.
#pragma once

#include "../ui/statusbar.h"

#include <kiln/interface.h>
#include <render/scenefeed.h>

#include <string>

namespace workbench {

class StatusTexts {
public:
    StatusTexts(Interface& host, StatusBar& bar) : host_(host), bar_(bar) {}

    /// A plug-in's line; null clears it.
    void setPrompt(const char* text);
    /// The node under the mouse; null shows the prompt again.
    void showHovered(const INode* node);
    /// The figures, of the scene as it was drawn last.
    /// `missing`: how many references find nothing.
    void refresh(const render::SceneCounts& counts, std::size_t missing);

private:
    std::string selection() const;

    Interface& host_;
    StatusBar& bar_;
    std::string prompt_;
};

}  // namespace workbench
