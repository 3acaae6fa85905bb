// The levels of detail by the eye's distance.
#pragma once

#include <framework/cdialog.h>
#include <kiln/interface.h>
#include <workbench/levelbands.h>

#include <functional>
#include <string>
#include <vector>

namespace workbench {

class Viewport;

/// Shows how far away the eye is, and the bands of distances as a strip on which the present one is
/// marked. A click on a band, or a step nearer or farther by button, brings the eye there and has
/// levels of detail show by its distance. Another button shows all levels again.
class LevelsWindow : public framework::CDialog {
public:
    /// `unhideAll` shows nodes that are hidden, as levels are by a plug-in that steps through them.
    LevelsWindow(Interface& host, Viewport& viewport, std::function<void()> unhideAll)
        : host_(host), viewport_(viewport), unhideAll_(std::move(unhideAll)) {}

    /// Shows the window in the upper right corner of `area` of the screen, the first time, or hides
    /// it when it is shown.
    void toggle(HWND owner, const RECT& area);
    /// The scene is another one than when its bands were looked for.
    void sceneChanged() noexcept { known_ = false; }
    /// Shows where the eye is now; nothing while the window is not shown.
    void refresh();
    /// Speaks the language of now.
    void followLanguage();

protected:
    bool OnInitDialog() override;
    void OnClose() override { Hide(); }
    bool OnCommand(int id, UINT code, HWND control) override;
    bool OnNotify(int id, NMHDR& header, LRESULT& result) override;
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    void drawStrip(const DRAWITEMSTRUCT& item) const;
    RECT areaOf(std::size_t band, const RECT& strip) const;
    void clickStrip();
    void step(int bands);
    void goTo(std::size_t band);
    void showAll();
    std::string describe(const LevelBand& band) const;

    Interface& host_;
    Viewport& viewport_;
    std::function<void()> unhideAll_;
    std::vector<LevelBand> bands_;
    std::optional<std::size_t> present_;
    std::string shown_;
    bool known_ = false;  // the bands are those of the scene
};

}  // namespace workbench
