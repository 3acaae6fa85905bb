// Where the form's controls are, and how they follow its size.
#pragma once

#include <framework/cwnd.h>

namespace tessera {

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

    /// Limits how small the user can make the window.
    void limit(MINMAXINFO& info) const;

    /// Moves the form to the corner of the screen, with the size that its controls are laid out
    /// for.
    void resetPosition() const;

private:
    void alignControls() const;
    void meet(SIZE base);
    void grow(int growX, int growY) const;
    void restorePlacement() const;

    const framework::CWnd& form_;
    SIZE base_{};           ///< of the client area, as the template means it
    SIZE size_{};           ///< of the client area, as the controls are laid out for
    SIZE smallestTrack_{};  ///< of the window
};

}  // namespace tessera
