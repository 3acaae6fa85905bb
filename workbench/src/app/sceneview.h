// The scene in the viewport: what is drawn, and what clicks on it select.
#pragma once

#include "../ui/viewport.h"

#include <workbench/shownscene.h>
#include <workbench/transforms.h>

#include <optional>
#include <span>
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
    /// The context menu of what is selected, or of the scene, is to be shown.
    virtual void viewMenuWanted(POINT screen) = 0;
};

class SceneView : public ViewportClient {
public:
    /// `snap`, which outlives this, is the grid that handles keep to.
    SceneView(Interface& host, SceneViewClient& client, const GridSnap& snap)
        : host_(host),
          client_(client),
          snap_(snap),
          scene_(host, [&client] { client.sceneOutdated(); }) {}

    ShownScene& scene() { return scene_; }
    /// Selects the node with the tallest surface, as a click on it would; false without one.
    bool selectTallest();

    /// Whether a click takes the whole that a face is a piece of, and the face itself only within
    /// a whole that is in hand already.
    bool picksWholes() const { return picksWholes_; }
    void pickWholes(bool on) { picksWholes_ = on; }

    // ViewportClient
    const render::SceneModel& sceneToDraw() override;
    void onPick(render::ItemIndex item, bool add) override;
    void onPickMany(std::span<const render::ItemIndex> items, bool add) override;
    void onPickNothing() override;
    void onMenu(render::ItemIndex item, POINT screen) override;
    void onHover(render::ItemIndex item) override;
    std::optional<Matrix3> handleFrame(HandleMode mode) override;
    void onHandleTaken(HandleMode mode) override;
    HandleGrid handleGrid(bool otherWay) override;
    void onHandleDrag(const Matrix3& change) override;
    void onHandleLeft(bool keep) override;

private:
    INode* wholeOf(INode* node) const;
    INode* meantBy(INode* node, bool add) const;

    Interface& host_;
    SceneViewClient& client_;
    const GridSnap& snap_;
    ShownScene scene_;
    bool picksWholes_ = true;
    std::optional<TransformDrag> drag_;
    Point3 dragStart_;
};

}  // namespace workbench
