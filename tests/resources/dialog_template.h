#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

// An extended dialog template taken apart. Positions and sizes in dialog units; class names of the
// six built-in classes are spelt out.
struct DialogTemplate {
    struct Control {
        std::int32_t id;  // -1 for a control without a number
        std::string className;
        std::string caption;
        int x, y, width, height;
        std::uint32_t style;
    };

    std::uint32_t style;
    int width, height;
    std::string caption;
    std::string font;
    int pointSize;
    std::vector<Control> controls;

    // The first control with this number; throws std::out_of_range without one.
    const Control& control(std::int32_t id) const;
};

// Throws std::out_of_range when the bytes end early, std::invalid_argument for the old format.
DialogTemplate parseDialog(std::span<const std::byte> bytes);

// The template with a font of `percent` of its size, from which the system makes a dialog as large
// as it is at that display scaling. Throws as `parseDialog` does.
std::vector<std::byte> scaledDialog(std::span<const std::byte> bytes, int percent);
