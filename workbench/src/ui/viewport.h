// The window that shows the scene.
#pragma once

#include <framework/cwnd.h>
#include <render/renderer.h>
#include <workbench/selectionband.h>
#include <workbench/transformhandles.h>

#include <optional>
#include <span>
#include <string>

namespace workbench {

/// What a viewport asks of, and tells, the one who owns the scene.
class ViewportClient {
public:
    virtual ~ViewportClient() = default;
    /// What to draw; stays valid and unchanged while the viewport draws.
    virtual const render::SceneModel& sceneToDraw() = 0;
    /// A click on an item, or on nothing (render::kNoItem). `add` adds to or takes from the
    /// selection.
    virtual void onPick(render::ItemIndex item, bool add) = 0;
    /// A rubber band was drawn around items, or over some of them.
    virtual void onPickMany(std::span<const render::ItemIndex> items, bool add) = 0;
    /// Escape was pressed: nothing is to be selected.
    virtual void onPickNothing() = 0;
    /// The context menu of an item, or of the scene (render::kNoItem), is to be shown.
    virtual void onMenu(render::ItemIndex item, POINT screen) = 0;
    /// The mouse has come over another item, or left it (render::kNoItem).
    virtual void onHover(render::ItemIndex item) = 0;

    /// Where handles for what is selected stand, as `TransformHandles` takes it; nothing without a
    /// selection.
    virtual std::optional<Matrix3> handleFrame(HandleMode mode) = 0;
    /// The mouse has taken hold of a handle.
    virtual void onHandleTaken(HandleMode mode) = 0;
    /// The grid that it keeps to as the user has set, or with `otherWay` as the user has not.
    virtual HandleGrid handleGrid(bool otherWay) = 0;
    /// The scene is to go through `change`, instead of the one before.
    virtual void onHandleDrag(const Matrix3& change) = 0;
    /// The mouse has let go, and what was done stays, or it is to be taken back.
    virtual void onHandleLeft(bool keep) = 0;
};

/// Left click selects, with Ctrl adds. A rubber band selects what lies whole in it when it is drawn
/// to the right, and all that is seen in it when it is drawn to the left; Escape ends it, and
/// otherwise deselects. A right click, or the menu key, asks for the context menu. The middle
/// button, or Alt with the left one, orbits; with Shift, and with the right button, it pans; with
/// Ctrl it zooms. The wheel zooms towards the mouse. Each goes by what is under the mouse: that is
/// what follows it. Arrow keys orbit, with Ctrl they pan, plus and minus zoom. With handles shown,
/// dragging one of them with the left button changes what is selected, with Ctrl on the grid or
/// free of it; Escape takes that back.
class Viewport : public framework::CWnd {
public:
    explicit Viewport(ViewportClient& client) : client_(client) {}

    bool Create(HWND parent, UINT id);

    render::Camera& camera() { return camera_; }
    render::RenderOptions& options() { return options_; }
    /// Draws anew at the next paint; the pixels before are not trusted any more for picking.
    void redraw();
    /// Frames the whole scene, or what is selected in it.
    void viewAll();
    void viewSelected();
    void setView(render::View view);
    /// Shows a view that was saved; a beep when there is none.
    void showView(const std::optional<render::CameraStand>& view);
    /// Which handles are shown at what is selected.
    HandleMode handleMode() const { return handleMode_; }
    void showHandles(HandleMode mode);
    /// Whether the mouse has hold of one: keys are then the viewport's.
    bool isHandleHeld() const { return drag_.kind == DragKind::kHandle; }
    /// Lets go of whatever the mouse has hold of, and takes back what it has changed.
    void endDrag();
    /// The text in the upper left corner, for example "透视  |  着色".
    std::string label() const;
    /// Shows, in the upper right corner, how long frames take to draw.
    void showFrameRate(bool shown) { frameRateShown_ = shown; }
    bool showsFrameRate() const { return frameRateShown_; }
    /// How long the last frame took to draw, in milliseconds.
    double frameMilliseconds() const { return frameMilliseconds_; }

protected:
    void OnSize(UINT type, int width, int height) override;
    void OnPaint() override;
    bool OnEraseBackground(HDC) override { return true; }
    bool OnSetCursor(HWND under, UINT hitTest, UINT message) override;
    void OnLButtonDown(UINT keys, POINT at) override;
    void OnLButtonUp(UINT keys, POINT at) override;
    void OnLButtonDblClk(UINT keys, POINT at) override { OnLButtonDown(keys, at); }
    void OnMButtonDown(UINT keys, POINT at) override;
    void OnMButtonUp(UINT keys, POINT at) override;
    void OnRButtonDown(UINT keys, POINT at) override;
    void OnRButtonUp(UINT keys, POINT at) override;
    void OnMouseMove(UINT keys, POINT at) override;
    void OnMouseWheel(UINT keys, int delta, POINT screen) override;
    void OnCaptureChanged(HWND gaining) override;
    void OnKeyDown(UINT key, UINT repeat, UINT flags) override;
    UINT OnGetDlgCode(const MSG* message) override;
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    enum class DragKind { kNone, kClick, kBand, kOrbit, kPan, kZoom, kHandle };

    struct Drag {
        DragKind kind = DragKind::kNone;
        POINT start{}, last{};
        HandlePart part = HandlePart::kNone;  // what a click has taken, or is held
        bool isDone = false;                  // by the button, and not given up
    };

    /// What was drawn, as the platform takes it.
    struct Bitmap {
        framework::GdiBitmap handle;
        render::Color* bits = nullptr;  // of the handle
        int width = 0, height = 0;
    };

    void startDrag(DragKind kind, POINT at);
    /// Whether the mouse is about where it was pressed.
    bool isClick(POINT at) const;
    PixelArea bandArea() const;
    void drawBand(HDC dc) const;
    void pickInBand(bool add);
    void showMenu(LPARAM place);
    static DragKind dragOf(UINT keys);
    /// Makes what is drawn near a pixel the camera's measure.
    void focusUnder(POINT at);
    void draw();
    /// Puts together what is seen: what was drawn, and the labels and handles over it.
    void compose(HDC dc);
    void recompose();
    void placeHandles();
    void drawHandles(HDC dc);
    HandlePart handleAt(POINT at) const;
    void pointAtHandle(HandlePart part);
    void takeHandle();
    void dragHandle(bool otherWay);
    void drawLabels(HDC dc);
    void drawLabel(HDC dc, const std::string& text, bool right);
    bool ensureBitmap(int width, int height);
    render::ItemIndex itemAt(POINT at);
    void hover(render::ItemIndex item);
    /// Tells anew what the mouse is over, after the picture has become another one.
    void hoverAgain();

    ViewportClient& client_;
    render::Camera camera_;
    render::Canvas canvas_;
    render::Renderer renderer_;
    render::RenderOptions options_;
    Bitmap bitmap_;
    bool stale_ = true;
    bool composed_ = false;  // what was drawn last is in the bitmap
    double frameMilliseconds_ = 0;
    bool frameRateShown_ = false;
    Drag drag_;
    render::ItemIndex hovered_ = render::kNoItem;
    HandleMode handleMode_ = HandleMode::kNone;
    std::optional<TransformHandles> handles_;  // as they are shown
    std::optional<TransformHandles> held_;     // as they were when the mouse took hold
    HandlePart pointedAt_ = HandlePart::kNone;
    HandleChange change_;  // since then
};

}  // namespace workbench
