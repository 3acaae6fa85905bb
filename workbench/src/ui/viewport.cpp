#include "viewport.h"

#include "look.h"

#include <base/utf16.h>
#include <framework/module.h>
#include <workbench/texts.h>

#include <windowsx.h>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

using framework::SelectScope, framework::heightOf, framework::makePixelBitmap, framework::widthOf,
    framework::windowDpi;

namespace workbench {
namespace {

constexpr wchar_t kClassName[] = L"WorkbenchViewport";
constexpr int kPickReach = 4;       // pixels at 100 %
constexpr int kClickTolerance = 3;  // a click may tremble this much
constexpr float kZoomPerPixel = 0.05f;
constexpr float kKeyOrbit = 16;  // pixels of mouse movement that an arrow key stands for
constexpr int kHandleReach = 7;  // pixels at 100 %
constexpr int kArm = 80;         // of handles, pixels at 100 %

render::ScreenPoint pixelOf(POINT at) {
    return {static_cast<float>(at.x), static_cast<float>(at.y)};
}

COLORREF colorOf(HandlePart part) {
    switch (part) {
        case HandlePart::kX:
            return RGB(235, 80, 70);
        case HandlePart::kY:
            return RGB(120, 205, 70);
        case HandlePart::kZ:
            return RGB(90, 150, 255);
        default:
            return RGB(235, 235, 235);
    }
}

bool isDown(int key) {
    return ::GetKeyState(key) < 0;
}

}  // namespace

bool Viewport::Create(HWND parent, UINT id) {
    RegisterWindowClass(kClassName, CS_DBLCLKS, nullptr, nullptr);
    return CreateEx(0, kClassName, "", WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS, {0, 0, 10, 10},
                    parent, id);
}

void Viewport::redraw() {
    stale_ = true;
    Invalidate(false);
}

void Viewport::viewAll() {
    camera_.frame(client_.sceneToDraw().box());
    redraw();
}

void Viewport::viewSelected() {
    const render::Box box = client_.sceneToDraw().selectedBox();
    if (box.empty()) return viewAll();
    camera_.frame(box);
    redraw();
}

void Viewport::setView(render::View view) {
    camera_.setView(view);
    redraw();
}

void Viewport::showView(const std::optional<render::CameraStand>& view) {
    if (view && camera_.setStand(*view))
        redraw();
    else
        ::MessageBeep(MB_OK);
}

void Viewport::showHandles(HandleMode mode) {
    endDrag();
    handleMode_ = mode;
    recompose();
}

std::string Viewport::label() const {
    static constexpr TextId kViews[] = {TextId::kPerspective, TextId::kTop,   TextId::kFront,
                                        TextId::kLeft,        TextId::kRight, TextId::kBack,
                                        TextId::kBottom};
    static constexpr TextId kModes[] = {TextId::kShaded, TextId::kShadedEdges, TextId::kWireframe};
    static constexpr TextId kTimes[] = {TextId::kAnyTime, TextId::kDay, TextId::kDusk,
                                        TextId::kNight};
    std::string text = textOf(kViews[static_cast<int>(camera_.view())]) + "  |  " +
                       textOf(kModes[static_cast<int>(options_.mode)]);
    if (options_.time != render::TimeOfDay::kAny)
        text += "  |  " + textOf(kTimes[static_cast<int>(options_.time)]);
    if (options_.levelsByEye) {
        char distance[32];
        std::snprintf(distance, sizeof distance, "%.1f", camera_.distance());
        text += "  |  " + textOf(TextId::kEyeDistance,
                                 {distance, std::to_string(renderer_.trianglesDrawn())});
    }
    return text;
}

void Viewport::OnSize(UINT, int width, int height) {
    if (width > 0 && height > 0) camera_.setPictureSize(width, height);
    redraw();
}

bool Viewport::ensureBitmap(int width, int height) {
    if (bitmap_.handle && width == bitmap_.width && height == bitmap_.height) return true;
    bitmap_.handle = makePixelBitmap(width, height, bitmap_.bits);
    bitmap_.width = width;
    bitmap_.height = height;
    stale_ = true;
    return static_cast<bool>(bitmap_.handle);
}

void Viewport::draw() {
    const auto start = std::chrono::steady_clock::now();
    options_.pixelScale = static_cast<float>(windowDpi(Handle())) / 96;
    options_.seconds = static_cast<double>(::GetTickCount64()) / 1000;
    canvas_.resize(bitmap_.width, bitmap_.height);
    renderer_.draw(client_.sceneToDraw(), camera_, options_, canvas_);
    composed_ = false;
    frameMilliseconds_ =
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    stale_ = false;
}

void Viewport::compose(HDC dc) {
    ::GdiFlush();
    std::memcpy(bitmap_.bits, canvas_.pixels(),
                sizeof(render::Color) * static_cast<std::size_t>(bitmap_.width) *
                    static_cast<std::size_t>(bitmap_.height));
    placeHandles();
    drawHandles(dc);
    drawLabels(dc);
    composed_ = true;
}

void Viewport::recompose() {
    composed_ = false;
    Invalidate(false);
}

void Viewport::OnPaint() {
    PAINTSTRUCT paint;
    const HDC dc = ::BeginPaint(Handle(), &paint);
    const RECT area = ClientRect();
    const bool fresh = stale_;
    if (widthOf(area) > 0 && heightOf(area) > 0 && ensureBitmap(widthOf(area), heightOf(area))) {
        if (stale_) draw();
        const HDC memory = ::CreateCompatibleDC(dc);
        {
            const SelectScope selected(memory, bitmap_.handle.get());
            if (!composed_) compose(memory);
            ::BitBlt(dc, 0, 0, bitmap_.width, bitmap_.height, memory, 0, 0, SRCCOPY);
        }
        if (drag_.kind == DragKind::kBand) drawBand(dc);
        ::DeleteDC(memory);
    }
    ::EndPaint(Handle(), &paint);
    if (fresh) hoverAgain();
}

void Viewport::drawLabels(HDC dc) {
    drawLabel(dc, label(), false);
    if (!frameRateShown_) return;
    char time[32], rate[32];
    std::snprintf(time, sizeof time, "%.1f", frameMilliseconds_);
    std::snprintf(rate, sizeof rate, "%.0f", 1000 / std::max(frameMilliseconds_, 0.01));
    drawLabel(dc, textOf(TextId::kFrameRate, {time, rate}), true);
}

void Viewport::drawLabel(HDC dc, const std::string& text, bool right) {
    const SelectScope font(dc, Look::of(Handle()).bold());
    ::SetBkMode(dc, TRANSPARENT);
    const std::wstring shown = base::toWide(text);
    const auto put = [&](COLORREF color, int shift) {
        RECT area{Scaled(10) + shift, Scaled(8) + shift, bitmap_.width - Scaled(10) + shift,
                  bitmap_.height};
        ::SetTextColor(dc, color);
        ::DrawTextW(dc, shown.c_str(), -1, &area,
                    DT_SINGLELINE | DT_NOPREFIX | (right ? DT_RIGHT : DT_LEFT));
    };
    put(RGB(30, 36, 42), 1);
    put(RGB(232, 236, 240), 0);
}

// ---------------------------------------------------------------- handles

// While one is held they go where it has brought them, whatever becomes of the selection's box.
void Viewport::placeHandles() {
    if (isHandleHeld()) {
        handles_ = held_->moved(change_);
        return;
    }
    handles_.reset();
    if (handleMode_ == HandleMode::kNone) return;
    if (const std::optional<Matrix3> frame = client_.handleFrame(handleMode_))
        handles_.emplace(handleMode_, *frame, static_cast<float>(Scaled(kArm)));
}

// Each has a dark rim, so that it is seen before any surface.
void Viewport::drawHandles(HDC dc) {
    if (!handles_) return;
    constexpr COLORREF kPointedAt = RGB(255, 225, 60), kRim = RGB(30, 36, 42);
    const HandlePart inHand = isHandleHeld() ? drag_.part : pointedAt_;
    const auto pixel = [](float place) {
        constexpr float kFarthest = 30'000;  // that the platform draws to
        return std::lround(std::clamp(place, -kFarthest, kFarthest));
    };
    const auto put = [&](const HandleLine& line, COLORREF color, int width) {
        std::vector<POINT> points;
        for (const render::ScreenPoint& point : line.points)
            points.push_back({pixel(point.x), pixel(point.y)});
        const HPEN pen = ::CreatePen(PS_SOLID, width, color);
        const HBRUSH brush = ::CreateSolidBrush(color);
        {
            const SelectScope selectedPen(dc, pen), selectedBrush(dc, brush);
            const int count = static_cast<int>(points.size());
            if (line.isFilled)
                ::Polygon(dc, points.data(), count);
            else
                ::Polyline(dc, points.data(), count);
        }
        ::DeleteObject(pen);
        ::DeleteObject(brush);
    };
    const std::vector<HandleLine> lines = handles_->lines(camera_);
    for (const HandleLine& line : lines) put(line, kRim, Scaled(line.isFilled ? 3 : 4));
    for (const HandleLine& line : lines)
        put(line, line.part == inHand ? kPointedAt : colorOf(line.part),
            line.isFilled ? 1 : Scaled(2));
    if (!isHandleHeld()) return;
    const SelectScope font(dc, Look::of(Handle()).bold());
    ::SetBkMode(dc, OPAQUE);
    ::SetBkColor(dc, kRim);
    ::SetTextColor(dc, kPointedAt);
    const std::wstring amount = base::toWide(change_.text);
    ::TextOutW(dc, drag_.last.x + Scaled(16), drag_.last.y + Scaled(16), amount.c_str(),
               static_cast<int>(amount.size()));
}

HandlePart Viewport::handleAt(POINT at) const {
    if (!handles_ || stale_) return HandlePart::kNone;
    const render::ScreenPoint pixel = pixelOf(at);
    return handles_->partAt(camera_, pixel.x, pixel.y, static_cast<float>(Scaled(kHandleReach)));
}

void Viewport::pointAtHandle(HandlePart part) {
    if (part == pointedAt_) return;
    pointedAt_ = part;
    recompose();
}

void Viewport::takeHandle() {
    drag_.kind = DragKind::kHandle;
    held_ = handles_;
    change_ = {};
    client_.onHandleTaken(handleMode_);
}

void Viewport::dragHandle(bool otherWay) {
    change_ = held_->dragged(camera_, drag_.part, pixelOf(drag_.start), pixelOf(drag_.last),
                             client_.handleGrid(otherWay));
    client_.onHandleDrag(change_.matrix);
    redraw();
    // At once: where a change takes long, the mouse would move on before there is time to paint.
    Update();
}

bool Viewport::OnSetCursor(HWND under, UINT hitTest, UINT message) {
    if (pointedAt_ == HandlePart::kNone || hitTest != HTCLIENT)
        return CWnd::OnSetCursor(under, hitTest, message);
    ::SetCursor(::LoadCursorW(nullptr, IDC_SIZEALL));
    return true;
}

// ---------------------------------------------------------------- the mouse

render::ItemIndex Viewport::itemAt(POINT at) {
    // What is on the screen may be older than the scene: its item numbers mean nothing then.
    if (stale_ || canvas_.width() != bitmap_.width) Update();
    if (stale_) return render::kNoItem;
    return canvas_.pick(static_cast<int>(at.x), static_cast<int>(at.y), Scaled(kPickReach));
}

void Viewport::focusUnder(POINT at) {
    if (stale_ || at.x < 0 || at.y < 0 || at.x >= canvas_.width() || at.y >= canvas_.height())
        return;
    const float depth = canvas_.depth(static_cast<int>(at.x), static_cast<int>(at.y));
    if (depth != render::Canvas::kFarthest) camera_.focusAt(camera_.distanceOf(depth));
}

Viewport::DragKind Viewport::dragOf(UINT keys) {
    return keys & MK_SHIFT     ? DragKind::kPan
           : keys & MK_CONTROL ? DragKind::kZoom
                               : DragKind::kOrbit;
}

void Viewport::startDrag(DragKind kind, POINT at) {
    SetFocus();
    if (kind != DragKind::kClick) focusUnder(at);
    drag_ = {kind, at, at};
    ::SetCapture(Handle());
    if (kind != DragKind::kClick || handleMode_ == HandleMode::kNone) return;
    if (stale_ || !composed_) Update();
    drag_.part = handleAt(at);
}

void Viewport::endDrag() {
    if (drag_.kind != DragKind::kNone) ::ReleaseCapture();
}

void Viewport::OnLButtonDown(UINT keys, POINT at) {
    if (isHandleHeld()) return;
    startDrag(isDown(VK_MENU) ? dragOf(keys) : DragKind::kClick, at);
}

void Viewport::OnLButtonUp(UINT keys, POINT at) {
    const bool add = (keys & MK_CONTROL) != 0;
    const DragKind kind = drag_.kind;
    drag_.last = at;
    drag_.isDone = true;
    if (kind == DragKind::kBand) pickInBand(add);
    const bool click = kind == DragKind::kClick && isClick(at);
    endDrag();
    if (click) client_.onPick(itemAt(at), add);
}

bool Viewport::isClick(POINT at) const {
    return std::abs(at.x - drag_.start.x) <= Scaled(kClickTolerance) &&
           std::abs(at.y - drag_.start.y) <= Scaled(kClickTolerance);
}

PixelArea Viewport::bandArea() const {
    return {std::min(drag_.start.x, drag_.last.x), std::min(drag_.start.y, drag_.last.y),
            std::max(drag_.start.x, drag_.last.x) + 1, std::max(drag_.start.y, drag_.last.y) + 1};
}

// A band to the left, which takes what it touches, has a broken line.
void Viewport::drawBand(HDC dc) const {
    const PixelArea area = bandArea();
    const int style = drag_.last.x < drag_.start.x ? PS_DOT : PS_SOLID;
    const HPEN pen = ::CreatePen(style, 1, RGB(255, 196, 64));
    {
        const SelectScope selectedPen(dc, pen), hollow(dc, ::GetStockObject(NULL_BRUSH));
        ::SetBkMode(dc, OPAQUE);
        ::SetBkColor(dc, RGB(30, 36, 42));
        ::Rectangle(dc, area.left, area.top, area.right, area.bottom);
    }
    ::DeleteObject(pen);
}

void Viewport::pickInBand(bool add) {
    if (stale_) Update();
    if (stale_) return;
    const bool touching = drag_.last.x < drag_.start.x;
    client_.onPickMany(touching ? itemsTouched(canvas_, bandArea())
                                : itemsWithin(client_.sceneToDraw(), camera_, bandArea()),
                       add);
}

void Viewport::OnMButtonDown(UINT keys, POINT at) {
    if (!isHandleHeld()) startDrag(dragOf(keys), at);
}

void Viewport::OnMButtonUp(UINT, POINT) {
    if (!isHandleHeld()) endDrag();
}

// With a handle in hand it gives up, as Escape does.
void Viewport::OnRButtonDown(UINT, POINT at) {
    if (isHandleHeld()) return endDrag();
    startDrag(isDown(VK_MENU) ? DragKind::kZoom : DragKind::kPan, at);
}

void Viewport::OnRButtonUp(UINT, POINT at) {
    const bool click = drag_.kind == DragKind::kPan && isClick(at);
    endDrag();
    if (click) client_.onMenu(itemAt(at), ToScreen(at));
}

// From the keyboard: in the middle, for what is selected.
void Viewport::showMenu(LPARAM place) {
    if (place != -1) return;
    const RECT area = ClientRect();
    client_.onMenu(render::kNoItem, ToScreen({area.right / 2, area.bottom / 2}));
}

void Viewport::OnCaptureChanged(HWND) {
    const Drag ended = std::exchange(drag_, {});
    if (ended.kind == DragKind::kBand) Invalidate(false);
    if (ended.kind != DragKind::kHandle) return;
    client_.onHandleLeft(ended.isDone);
    pointedAt_ = HandlePart::kNone;
    recompose();
}

void Viewport::OnMouseMove(UINT keys, POINT at) {
    const float dx = static_cast<float>(at.x - drag_.last.x);
    const float dy = static_cast<float>(at.y - drag_.last.y);
    drag_.last = at;
    switch (drag_.kind) {
        case DragKind::kOrbit:
            camera_.orbit(dx, dy);
            return redraw();
        case DragKind::kPan:
            camera_.pan(dx, dy);
            return redraw();
        case DragKind::kZoom:
            camera_.zoom(-dy * kZoomPerPixel, static_cast<float>(drag_.start.x),
                         static_cast<float>(drag_.start.y));
            return redraw();
        case DragKind::kClick:
            if (isClick(at)) return;
            if (drag_.part != HandlePart::kNone && handles_) {
                takeHandle();
                return dragHandle((keys & MK_CONTROL) != 0);
            }
            drag_.kind = DragKind::kBand;
            [[fallthrough]];
        case DragKind::kBand:
            return Invalidate(false);
        case DragKind::kHandle:
            return dragHandle((keys & MK_CONTROL) != 0);
        case DragKind::kNone:
            break;
    }
    TRACKMOUSEEVENT leave{sizeof leave, TME_LEAVE, Handle(), 0};
    ::TrackMouseEvent(&leave);
    if (stale_) return;
    pointAtHandle(handleAt(at));
    hover(itemAt(at));
}

void Viewport::hover(render::ItemIndex item) {
    if (item == hovered_) return;
    hovered_ = item;
    client_.onHover(item);
}

// An item of the same number may be another one now.
void Viewport::hoverAgain() {
    POINT at;
    ::GetCursorPos(&at);
    const render::ItemIndex former = hovered_;
    hovered_ = ::WindowFromPoint(at) == Handle() ? itemAt(ToClient(at)) : render::kNoItem;
    if (hovered_ != render::kNoItem || former != render::kNoItem) client_.onHover(hovered_);
}

void Viewport::OnMouseWheel(UINT, int delta, POINT screen) {
    if (isHandleHeld()) return;
    const POINT at = ToClient(screen);
    focusUnder(at);
    camera_.zoom(static_cast<float>(delta) / WHEEL_DELTA, static_cast<float>(at.x),
                 static_cast<float>(at.y));
    redraw();
}

void Viewport::OnKeyDown(UINT key, UINT, UINT) {
    if (isHandleHeld() && key != VK_ESCAPE) return;
    const float x = static_cast<float>(bitmap_.width) / 2,
                y = static_cast<float>(bitmap_.height) / 2;
    const auto turn = [this](float dx, float dy) {
        if (::GetKeyState(VK_CONTROL) < 0)
            camera_.pan(-dx, -dy);
        else
            camera_.orbit(dx, dy);
    };
    switch (key) {
        case VK_LEFT:
            turn(-kKeyOrbit, 0);
            break;
        case VK_RIGHT:
            turn(kKeyOrbit, 0);
            break;
        case VK_UP:
            turn(0, -kKeyOrbit);
            break;
        case VK_DOWN:
            turn(0, kKeyOrbit);
            break;
        case VK_ESCAPE:
            if (drag_.kind == DragKind::kNone) return client_.onPickNothing();
            return endDrag();
        case VK_ADD:
        case VK_OEM_PLUS:
            camera_.zoom(1, x, y);
            break;
        case VK_SUBTRACT:
        case VK_OEM_MINUS:
            camera_.zoom(-1, x, y);
            break;
        default:
            Default();
            return;
    }
    redraw();
}

UINT Viewport::OnGetDlgCode(const MSG*) {
    return DLGC_WANTARROWS;
}

LRESULT Viewport::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_MOUSELEAVE) {
        hover(render::kNoItem);
        if (!isHandleHeld()) pointAtHandle(HandlePart::kNone);
    }
    if (message == WM_CONTEXTMENU) return showMenu(lParam), 0;
    return CWnd::WindowProc(message, wParam, lParam);
}

}  // namespace workbench
