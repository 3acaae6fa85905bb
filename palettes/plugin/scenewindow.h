// What the windows of the plug-in have in common.
#pragma once

#include <framework/anchoredcontrols.h>
#include <framework/cdialog.h>
#include <kiln/scenewatch.h>
#include <palettes/edits.h>

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

class Interface;

namespace palettes {

/// A modeless window beside the host's that follows the scene, whoever changes it, and whose
/// controls follow its size. What it says stands in the label `status`.
class SceneWindow : public framework::CDialog {
public:
    /// Speaks the host's language of now.
    void followLanguage();

protected:
    /// `anchors` outlive this.
    SceneWindow(std::span<const framework::Anchor> anchors, int status)
        : controls_(anchors), status_(status) {}
    ~SceneWindow() override;

    /// False when there is no window and none can be made.
    bool create(UINT dialog, Interface& host);
    /// Reads the scene, shows the window in front and gives `focus` the keyboard.
    void present(HWND focus);
    /// Asked for by whatever has changed: reads the scene soon, when nothing is being typed.
    void refreshLater();
    void refresh();
    /// Whether the scene is still as it was read.
    bool isRead() const noexcept { return watch_ && !watch_->HasChanged(); }

    Interface& host() const noexcept { return *host_; }
    void say(const std::string& text);
    /// Carries an edit out, shows what has become of it, and tells why it is not made.
    bool attempt(const std::function<void()>& edit);
    /// Asks the user for another color; none if it is to stay.
    std::optional<Rgb> askColor(Rgb now) const;
    void layout();

    /// Reads the scene and shows it.
    virtual void readScene() = 0;
    /// What the template does not say is worded in the host's language.
    virtual void nameTexts() = 0;
    /// The controls have other places.
    virtual void arranged() = 0;
    /// What is being typed is not to be lost.
    virtual bool isEditing() const = 0;

    bool OnInitDialog() override;
    void OnSize(UINT type, int width, int height) override;
    void OnMinMaxInfo(MINMAXINFO& info) override;
    void OnTimer(UINT_PTR timer) override;
    void OnDestroy() override;
    void OnClose() override { Hide(); }

private:
    Interface* host_ = nullptr;
    std::unique_ptr<SceneWatch> watch_;
    bool isStale_ = false;  ///< to be read anew, when the timer says so
    SIZE smallest_{};
    framework::AnchoredControls controls_;
    int status_;
};

}  // namespace palettes
