// The degrees of freedom of the scene, moved by hand or by themselves.
#pragma once

#include <framework/cdialog.h>
#include <kiln/interface.h>
#include <kiln/scenewatch.h>
#include <workbench/joints.h>
#include <workbench/shownscene.h>

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace workbench {

class Viewport;

/// Has a slider and a field for each motion of the joints that are selected, or are the nearest
/// above what is. They move the picture alone, of several joints each within its own limits, until
/// the user has the scene take it over, as one step of the history, or goes back. Playing moves all
/// joints of the scene to and fro; afterwards they stand as they did before. A hidden window moves
/// nothing.
class JointsWindow : public framework::CDialog {
public:
    JointsWindow(Interface& host, ShownScene& scene, Viewport& viewport)
        : host_(host), scene_(scene), viewport_(viewport), watch_([](void*) {}, nullptr) {}

    /// Shows the window in the lower left corner of `area` of the screen, the first time, or hides
    /// it when it is shown.
    void toggle(HWND owner, const RECT& area);
    /// Other nodes are selected.
    void selectionChanged() noexcept { known_ = false; }
    /// The nodes are about to go: nothing is moved any more.
    void forget();
    /// Shows where the joints are now; nothing while the window is not shown.
    void refresh();
    /// Speaks the language of now.
    void followLanguage();

protected:
    bool OnInitDialog() override;
    void OnClose() override { close(); }
    void OnOK() override;
    void OnCancel() override { close(); }
    void OnTimer(UINT_PTR id) override;
    void OnHScroll(UINT code, int position, HWND control) override;
    bool OnCommand(int id, UINT code, HWND control) override;
    bool OnNotify(int id, NMHDR& header, LRESULT& result) override;

private:
    static constexpr std::size_t kMotions = NodeJoint::kMotions;

    /// A line as it is shown.
    struct Row {
        std::optional<MotionRange> range;
        double value = 0;
    };

    void close();
    bool isPlaying() const { return play_.has_value(); }
    void beginPlay();
    void endPlay();
    void keep();
    void goBack();
    void show(render::Poses poses, render::FilePoses inFiles = {});
    const render::Poses& shownPoses() const { return isPlaying() ? played_ : poses_; }
    double reach() const;
    void findJoints();
    void showTitle();
    void showRow(std::size_t motion);
    void showRows();
    void showButtons();
    void enable(int id, bool enabled);
    void moveTo(std::size_t motion, double value);
    void takeField(std::size_t motion);
    std::string tipOf(int id) const;

    Interface& host_;
    ShownScene& scene_;
    Viewport& viewport_;
    SceneWatch watch_;
    bool known_ = false;  // the joints are those that are selected
    std::vector<KnownJoint> joints_;
    std::array<std::optional<Row>, kMotions> rows_;  // as shown
    render::Poses poses_;                            // by hand
    render::Poses played_;
    std::optional<JointPlay> play_;
    std::vector<INode*> filesPlayed_;  // whose joints play, too
    ULONGLONG begun_ = 0;              // in milliseconds
    double reach_ = 1;                 // of the joints, along an axis
};

}  // namespace workbench
