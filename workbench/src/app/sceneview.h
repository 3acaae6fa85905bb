// The scene in the viewport: what is drawn, and what clicks on it select.
#pragma once

#include "../ui/viewport.h"

#include <workbench/shownscene.h>

#include <string>
#include <vector>

namespace workbench {

/// What a scene view tells the window around it.
class SceneViewClient {
public:
    virtual ~SceneViewClient() = default;
    /// What is drawn is out of date.
    virtual void sceneOutdated() = 0;
    /// It has been drawn. `failures`: pictures that could not be shown, one sentence each.
    virtual void sceneDrawn(const std::vector<std::string>& failures) = 0;
    /// The mouse has come over a node; null for none.
    virtual void nodeHovered(const INode* node) = 0;
};

class SceneView : public ViewportClient {
public:
    SceneView(Interface& host, SceneViewClient& client)
        : host_(host), client_(client), scene_(host, [&client] { client.sceneOutdated(); }) {}

    ShownScene& scene() { return scene_; }
    /// Selects the node with the tallest surface, as a click on it would; false without one.
    bool selectTallest();

    // ViewportClient
    const render::SceneModel& sceneToDraw() override;
    void onPick(render::ItemIndex item, bool add) override;
    void onHover(render::ItemIndex item) override;

private:
    Interface& host_;
    SceneViewClient& client_;
    ShownScene scene_;
};

}  // namespace workbench
