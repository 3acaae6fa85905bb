// The status bar: a message and a few standing figures.
#pragma once

#include <framework/cwnd.h>

#include <array>
#include <string>

namespace workbench {

class StatusBar : public framework::CWnd {
public:
    enum Part { kMessage, kNodes, kFaces, kSelection, kTime, kPartCount };

    bool Create(HWND parent, UINT id);
    /// Its own height, in pixels.
    int height() const;
    /// Lays the parts out for a width, and moves the bar to the bottom of its parent.
    void place(int width);
    void setText(Part part, const std::string& text);

private:
    std::array<std::string, kPartCount> texts_;
};

}  // namespace workbench
