#include "lights.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace interchange {

namespace {

Class_ID classOf(std::int32_t lightType) {
    switch (lightType) {
        case 0:
            return DIR_LIGHT_CLASS_ID;
        case 2:
            return FSPOT_LIGHT_CLASS_ID;
        default:
            return OMNI_LIGHT_CLASS_ID;
    }
}

/// 0 to 1 as 0 to 255; what is no number as 0.
COLORREF component(float value) {
    return value > 0 ? static_cast<COLORREF>(std::lround(std::fmin(value, 1.0F) * 255)) : 0;
}

double radians(float degrees) {
    return degrees * std::numbers::pi / 180;
}

}  // namespace

Object* makeLight(const FltLightSourcePalette& palette) {
    auto* light = new GenLight(classOf(palette.lightType));
    light->SetColor(component(palette.diffuseRed) | component(palette.diffuseGreen) << 8 |
                    component(palette.diffuseBlue) << 16);
    return light;
}

Matrix3 placeOf(const FltLightSource& source) {
    const double sum = source.positionX + source.positionY + source.positionZ + double{source.yaw} +
                       double{source.pitch};
    if (!std::isfinite(sum)) return {};
    const double yaw = radians(source.yaw), pitch = radians(source.pitch);
    const Point3 z{std::cos(pitch) * std::cos(yaw), std::cos(pitch) * std::sin(yaw),
                   std::sin(pitch)};
    const Point3 x{-std::sin(yaw), std::cos(yaw), 0};
    return {x, CrossProd(z, x), z, {source.positionX, source.positionY, source.positionZ}};
}

bool hasSamePlace(const FltLightSource& a, const FltLightSource& b) {
    return a.positionX == b.positionX && a.positionY == b.positionY && a.positionZ == b.positionZ &&
           a.yaw == b.yaw && a.pitch == b.pitch;
}

bool moveTo(FltLightSource& source, const Matrix3& place) {
    constexpr double kTolerance = 1e-6;
    const Point3 z = place.GetRow(2);
    if (!(std::abs(Length(z) - 1) < kTolerance)) return false;
    FltLightSource moved = source;
    moved.positionX = place.GetTrans().x;
    moved.positionY = place.GetTrans().y;
    moved.positionZ = place.GetTrans().z;
    moved.pitch =
        static_cast<float>(std::asin(std::clamp(z.z, -1.0, 1.0)) * 180 / std::numbers::pi);
    // Straight up and down the x axis alone says how it is turned.
    const Point3 x = place.GetRow(0);
    const double yaw =
        std::hypot(z.x, z.y) > kTolerance ? std::atan2(z.y, z.x) : std::atan2(-x.x, x.y);
    moved.yaw = static_cast<float>(yaw * 180 / std::numbers::pi);
    const Matrix3 reached = placeOf(moved);
    for (int row = 0; row < 3; ++row) {
        if (!(Length(reached.GetRow(row) - place.GetRow(row)) < kTolerance)) return false;
    }
    source = moved;
    return true;
}

FltLightSourcePalette paletteFor(const GenLight& light) {
    FltLightSourcePalette entry;
    entry.lightType = light.ClassID() == OMNI_LIGHT_CLASS_ID  ? 1
                      : light.ClassID() == DIR_LIGHT_CLASS_ID ? 0
                                                              : 2;
    const COLORREF color = light.GetColor();
    entry.diffuseRed = static_cast<float>(color & 0xFF) / 255;
    entry.diffuseGreen = static_cast<float>(color >> 8 & 0xFF) / 255;
    entry.diffuseBlue = static_cast<float>(color >> 16 & 0xFF) / 255;
    return entry;
}

KilnLight optionsOf(const FltLightSourcePalette& palette) {
    KilnLight options;
    options.palette = palette;
    return options;
}

}  // namespace interchange
