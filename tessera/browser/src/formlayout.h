// Where the form's controls are, and how they follow its size and its splitter.
#pragma once

#include <framework/cwnd.h>

#include <vector>

namespace tessera {

/// The layout of the form. The tree and the property side share its width; the splitter is the
/// space between their frames.
class FormLayout {
public:
    explicit FormLayout(const framework::CWnd& form) noexcept : form_(form) {}

    /// Takes the form as it is now for the layout that the template means.
    void initialise();

    /// The controls stand as another template means them for a client area of `base`. They, and the
    /// window, are then as much larger than that as they were than the template before.
    void renew(SIZE base);

    /// The client area has another size. False when the controls have nothing to follow: the form
    /// is minimised, or not set up yet.
    bool follow(int width, int height);

    /// A control has another window now, in the same place.
    void replaced(HWND former, HWND made);

    /// Limits how small the user can make the window: everything in it stays whole.
    void limit(MINMAXINFO& info) const;

    /// Moves the form to the corner of the screen, with the size that its controls are laid out
    /// for.
    void resetPosition() const;

    /// Moves the form, which has not been shown yet, where it covers none of `kept` (in screen
    /// coordinates; may be empty) if the screen has room for that.
    void keepClearOf(const RECT& kept) const;
    /// Moves the form back onto a screen when its title bar is on none.
    void keepOnScreen() const;

    /// How much wider the tree is than in the template, in pixels. While the form has no room for
    /// all of it, the tree is less wide.
    int splitter() const noexcept { return splitter_; }
    void setSplitter(int wider);

    /// Makes room for a line above the tree, or gives that back to it.
    void setSearchLine(bool shown);
    /// Where that room is.
    RECT searchLine() const;

    /// Moves it as far as there is room; true when it has moved.
    bool moveSplitter(int by);

    // Pulling the splitter with the mouse, in client coordinates.

    bool isOverSplitter(POINT at) const;
    void beginPull(POINT at);
    bool isPulling() const noexcept { return pulling_; }
    /// The mouse has moved; true when the splitter has.
    bool pull(POINT at);
    void endPull() noexcept { pulling_ = false; }

private:
    /// What a control does when there is more room or the splitter moves.
    struct Rule {
        bool moves = false;  ///< it stands right of the splitter
        bool wide = false;   ///< it reaches to the right end of its side
        bool high = false;   ///< it reaches to the lower end of the form
    };
    struct Placed {
        HWND control;
        RECT area;  ///< in the form as the template means it
        Rule rule;
    };

    void alignControls() const;
    void meet(SIZE base);
    void noteControls();
    Rule ruleOf(const framework::CWnd& control) const;
    int splitterFor(int width) const;
    const Placed& placed(int id) const;
    int searchLineHeight() const;
    RECT areaFor(const Placed& placed, int splitter) const;
    void arrange() const;
    void restorePlacement() const;
    RECT screen() const;
    void moveTo(POINT corner) const;

    const framework::CWnd& form_;
    SIZE template_{};       ///< of the client area in the template
    SIZE size_{};           ///< of the client area, as the controls are laid out for
    SIZE smallestTrack_{};  ///< of the window
    std::vector<Placed> controls_;
    int splitter_ = 0;
    bool searchLine_ = false;
    bool pulling_ = false;
    int pulledFrom_ = 0;  ///< where the mouse was when the splitter was where the template has it
};

}  // namespace tessera
