#include "lights.h"

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

KilnLight optionsOf(const FltLightSourcePalette& palette) {
    KilnLight options;
    options.palette = palette;
    return options;
}

}  // namespace interchange
