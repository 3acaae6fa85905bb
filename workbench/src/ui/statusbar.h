// The status bar: a message and a few standing figures.
#pragma once

#include <framework/cwnd.h>

#include <array>
#include <string>

namespace workbench {

class StatusBar : public framework::CWnd {
public:
    /// The one of what is missing is there with its sign while it has a text.
    enum Part { kMessage, kMissing, kNodes, kFaces, kSelection, kTime, kPartCount };

    bool Create(HWND parent, UINT id);
    /// Its own height, in pixels.
    int height() const;
    /// Lays the parts out for a width, and moves the bar to the bottom of its parent. The figures
    /// have the room that their texts need; a long name of what is selected is cut.
    void place(int width);
    void setText(Part part, const std::string& text);
    /// Whether a place of the screen is over that part.
    bool isOver(Part part, POINT screen) const;

private:
    int widthOfText(Part part) const;

    std::array<std::string, kPartCount> texts_;
    int width_ = 0;
};

}  // namespace workbench
