#include "rawrecords.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace raw {

namespace {

template <typename T>
void put(std::uint8_t* out, T value) {
    if constexpr (sizeof(T) == 1) {
        *out = static_cast<std::uint8_t>(value);
    } else if constexpr (sizeof(T) == 2) {
        std::uint16_t bits = 0;
        std::memcpy(&bits, &value, 2);
        bits = __builtin_bswap16(bits);
        std::memcpy(out, &bits, 2);
    } else if constexpr (sizeof(T) == 4) {
        std::uint32_t bits = 0;
        std::memcpy(&bits, &value, 4);
        bits = __builtin_bswap32(bits);
        std::memcpy(out, &bits, 4);
    } else {
        std::uint64_t bits = 0;
        std::memcpy(&bits, &value, 8);
        bits = __builtin_bswap64(bits);
        std::memcpy(out, &bits, 8);
    }
}

template <typename T>
T get(const std::uint8_t* in) {
    T value{};
    std::memcpy(&value, in, sizeof value);
    if constexpr (sizeof(T) == 2) {
        std::uint16_t bits = 0;
        std::memcpy(&bits, in, 2);
        bits = __builtin_bswap16(bits);
        std::memcpy(&value, &bits, 2);
    } else if constexpr (sizeof(T) == 4) {
        std::uint32_t bits = 0;
        std::memcpy(&bits, in, 4);
        bits = __builtin_bswap32(bits);
        std::memcpy(&value, &bits, 4);
    } else if constexpr (sizeof(T) == 8) {
        std::uint64_t bits = 0;
        std::memcpy(&bits, in, 8);
        bits = __builtin_bswap64(bits);
        std::memcpy(&value, &bits, 8);
    }
    return value;
}

void putStart(std::uint8_t* out, std::uint16_t opcode, std::uint16_t length) {
    put(out, opcode);
    put(out + 2, length);
}

// The stated length of a record of `opcode` that holds at least `need` bytes, all of them there; 0
// for anything else.
std::size_t lengthOf(const std::uint8_t* in, std::size_t size, std::uint16_t opcode,
                     std::size_t need) {
    if (size < 4 || get<std::uint16_t>(in) != opcode) return 0;
    const std::size_t length = get<std::uint16_t>(in + 2);
    return length >= need && length <= size ? length : 0;
}

// A finite double as a finite float.
void putNarrowed(std::uint8_t* out, double value) {
    constexpr float kLargest = std::numeric_limits<float>::max();
    if (std::fabs(value) > double{kLargest} && !std::isinf(value))
        return put(out, value < 0 ? -kLargest : kLargest);
    put(out, static_cast<float>(value));
}

void setIfUnset(FltPoint3d& point, const FltPoint3d& value) {
    if (point.x == -1e8 && point.y == -1e8 && point.z == -1e8) point = value;
}

}  // namespace

std::size_t write(std::uint8_t* out, std::size_t room, const FltHeader& r) {
    if (room < 328) return 0;
    putStart(out, 1, 328);
    std::memcpy(out + 4, r.asciiId, 8);
    put(out + 12, r.formatRevision);
    put(out + 16, r.editRevision);
    std::memcpy(out + 20, r.dateTime, 32);
    put(out + 52, r.nextGroupId);
    put(out + 54, r.nextLodId);
    put(out + 56, r.nextObjectId);
    put(out + 58, r.nextFaceId);
    put(out + 60, r.unitMultiplier);
    put(out + 62, r.vertexCoordinateUnits);
    put(out + 63, r.textureWhite);
    put(out + 64, r.flags);
    std::memset(out + 68, 0, 24);
    put(out + 92, r.projectionType);
    std::memset(out + 96, 0, 28);
    put(out + 124, r.nextDofId);
    put(out + 126, r.vertexStorageType);
    put(out + 128, r.databaseOrigin);
    put(out + 132, r.southWestX);
    put(out + 140, r.southWestY);
    put(out + 148, r.deltaX);
    put(out + 156, r.deltaY);
    put(out + 164, r.nextSoundId);
    put(out + 166, r.nextPathId);
    std::memset(out + 168, 0, 8);
    put(out + 176, r.nextClipRegionId);
    put(out + 178, r.nextTextId);
    put(out + 180, r.nextBspId);
    put(out + 182, r.nextSwitchId);
    std::memset(out + 184, 0, 4);
    put(out + 188, r.southWestLatitude);
    put(out + 196, r.southWestLongitude);
    put(out + 204, r.northEastLatitude);
    put(out + 212, r.northEastLongitude);
    put(out + 220, r.originLatitude);
    put(out + 228, r.originLongitude);
    put(out + 236, r.lambertUpperLatitude);
    put(out + 244, r.lambertLowerLatitude);
    put(out + 252, r.nextLightSourceId);
    put(out + 254, r.nextLightSourceId);
    put(out + 256, r.nextLightPointId);
    put(out + 258, r.nextRoadId);
    put(out + 260, r.nextCatId);
    std::memset(out + 262, 0, 8);
    put(out + 270, r.earthEllipsoidModel);
    put(out + 274, r.nextAdaptiveId);
    put(out + 276, r.nextCurveId);
    put(out + 278, r.utmZone);
    std::memset(out + 280, 0, 6);
    put(out + 286, r.deltaZ);
    put(out + 294, r.radius);
    put(out + 302, r.nextMeshId);
    put(out + 304, r.nextLightPointSystemId);
    std::memset(out + 306, 0, 4);
    put(out + 310, r.earthMajorAxis);
    put(out + 318, r.earthMinorAxis);
    std::memset(out + 326, 0, 2);
    return 328;
}

std::size_t read(const std::uint8_t* in, std::size_t size, FltHeader& r) {
    const std::size_t length = lengthOf(in, size, 1, 326);
    if (length == 0 || get<std::int32_t>(in + 12) < 1580) return 0;
    std::memcpy(r.asciiId, in + 4, 8);
    r.formatRevision = get<std::int32_t>(in + 12);
    r.editRevision = get<std::int32_t>(in + 16);
    std::memcpy(r.dateTime, in + 20, 32);
    r.nextGroupId = get<std::int16_t>(in + 52);
    r.nextLodId = get<std::int16_t>(in + 54);
    r.nextObjectId = get<std::int16_t>(in + 56);
    r.nextFaceId = get<std::int16_t>(in + 58);
    r.unitMultiplier = get<std::int16_t>(in + 60);
    r.vertexCoordinateUnits = get<std::uint8_t>(in + 62);
    r.textureWhite = get<std::uint8_t>(in + 63);
    r.flags = get<std::uint32_t>(in + 64);
    r.projectionType = get<std::int32_t>(in + 92);
    r.nextDofId = get<std::int16_t>(in + 124);
    r.vertexStorageType = get<std::int16_t>(in + 126);
    r.databaseOrigin = get<std::int32_t>(in + 128);
    r.southWestX = get<double>(in + 132);
    r.southWestY = get<double>(in + 140);
    r.deltaX = get<double>(in + 148);
    r.deltaY = get<double>(in + 156);
    r.nextSoundId = get<std::int16_t>(in + 164);
    r.nextPathId = get<std::int16_t>(in + 166);
    r.nextClipRegionId = get<std::int16_t>(in + 176);
    r.nextTextId = get<std::int16_t>(in + 178);
    r.nextBspId = get<std::int16_t>(in + 180);
    r.nextSwitchId = get<std::int16_t>(in + 182);
    r.southWestLatitude = get<double>(in + 188);
    r.southWestLongitude = get<double>(in + 196);
    r.northEastLatitude = get<double>(in + 204);
    r.northEastLongitude = get<double>(in + 212);
    r.originLatitude = get<double>(in + 220);
    r.originLongitude = get<double>(in + 228);
    r.lambertUpperLatitude = get<double>(in + 236);
    r.lambertLowerLatitude = get<double>(in + 244);
    r.nextLightSourceId = get<std::int16_t>(in + 252);
    r.nextLightSourceId = get<std::int16_t>(in + 254);
    r.nextLightPointId = get<std::int16_t>(in + 256);
    r.nextRoadId = get<std::int16_t>(in + 258);
    r.nextCatId = get<std::int16_t>(in + 260);
    r.earthEllipsoidModel = get<std::int32_t>(in + 270);
    r.nextAdaptiveId = get<std::int16_t>(in + 274);
    r.nextCurveId = get<std::int16_t>(in + 276);
    r.utmZone = get<std::int16_t>(in + 278);
    r.deltaZ = get<double>(in + 286);
    r.radius = get<double>(in + 294);
    r.nextMeshId = get<std::int16_t>(in + 302);
    r.nextLightPointSystemId = get<std::int16_t>(in + 304);
    r.earthMajorAxis = get<double>(in + 310);
    r.earthMinorAxis = get<double>(in + 318);
    return length;
}

std::size_t write(std::uint8_t* out, std::size_t room, const FltGroup& r) {
    if (room < 32) return 0;
    putStart(out, 2, 32);
    std::memcpy(out + 4, r.asciiId, 8);
    put(out + 12, r.relativePriority);
    std::memset(out + 14, 0, 2);
    put(out + 16, r.flags);
    put(out + 20, r.specialEffect1);
    put(out + 22, r.specialEffect2);
    put(out + 24, r.significance);
    put(out + 26, r.layerCode);
    std::memset(out + 27, 0, 5);
    return 32;
}

std::size_t read(const std::uint8_t* in, std::size_t size, FltGroup& r) {
    const std::size_t length = lengthOf(in, size, 2, 32);
    if (length == 0) return 0;
    std::memcpy(r.asciiId, in + 4, 8);
    r.relativePriority = get<std::int16_t>(in + 12);
    r.flags = get<std::int32_t>(in + 16);
    r.specialEffect1 = get<std::int16_t>(in + 20);
    r.specialEffect2 = get<std::int16_t>(in + 22);
    r.significance = get<std::int16_t>(in + 24);
    r.layerCode = get<std::int8_t>(in + 26);
    return length;
}

std::size_t write(std::uint8_t* out, std::size_t room, const FltObject& r) {
    if (room < 32) return 0;
    putStart(out, 4, 32);
    std::memcpy(out + 4, r.asciiId, 8);
    put(out + 12, r.flags);
    put(out + 16, r.relativePriority);
    put(out + 18, r.transparency);
    put(out + 20, r.specialEffect1);
    put(out + 22, r.specialEffect2);
    put(out + 24, r.significance);
    std::memset(out + 26, 0, 2);
    std::memset(out + 28, 0, 4);
    return 32;
}

std::size_t read(const std::uint8_t* in, std::size_t size, FltObject& r) {
    const std::size_t length = lengthOf(in, size, 4, 28);
    if (length == 0) return 0;
    std::memcpy(r.asciiId, in + 4, 8);
    r.flags = get<std::int32_t>(in + 12);
    r.relativePriority = get<std::int16_t>(in + 16);
    r.transparency = get<std::int16_t>(in + 18);
    r.specialEffect1 = get<std::int16_t>(in + 20);
    r.specialEffect2 = get<std::int16_t>(in + 22);
    r.significance = get<std::int16_t>(in + 24);
    return length;
}

std::size_t write(std::uint8_t* out, std::size_t room, const FltFace& r) {
    if (room < 80) return 0;
    putStart(out, 5, 80);
    std::memcpy(out + 4, r.asciiId, 8);
    put(out + 12, r.irColorCode);
    put(out + 16, r.relativePriority);
    put(out + 18, r.drawType);
    put(out + 19, r.textureWhite);
    put(out + 20, r.colorNameIndex);
    put(out + 22, r.alternateColorNameIndex);
    std::memset(out + 24, 0, 1);
    put(out + 25, r.billboard);
    put(out + 26, r.detailTextureIndex);
    put(out + 28, r.textureIndex);
    put(out + 30, r.materialIndex);
    put(out + 32, r.surfaceMaterialCode);
    put(out + 34, r.featureId);
    put(out + 36, r.irMaterialCode);
    put(out + 40, r.transparency);
    put(out + 42, r.lodGenerationControl);
    put(out + 43, r.lineStyleIndex);
    put(out + 44, r.flags);
    put(out + 48, r.lightMode);
    std::memset(out + 49, 0, 7);
    std::memset(out + 56, 0, 4);
    std::memset(out + 60, 0, 4);
    put(out + 64, r.textureMappingIndex);
    std::memset(out + 66, 0, 2);
    put(out + 68, r.primaryColorIndex);
    put(out + 72, r.alternateColorIndex);
    std::memset(out + 76, 0, 4);
    return 80;
}

std::size_t read(const std::uint8_t* in, std::size_t size, FltFace& r) {
    const std::size_t length = lengthOf(in, size, 5, 80);
    if (length == 0) return 0;
    std::memcpy(r.asciiId, in + 4, 8);
    r.irColorCode = get<std::int32_t>(in + 12);
    r.relativePriority = get<std::int16_t>(in + 16);
    r.drawType = get<std::uint8_t>(in + 18);
    r.textureWhite = get<std::uint8_t>(in + 19);
    r.colorNameIndex = get<std::int16_t>(in + 20);
    r.alternateColorNameIndex = get<std::int16_t>(in + 22);
    r.billboard = get<std::uint8_t>(in + 25);
    r.detailTextureIndex = get<std::int16_t>(in + 26);
    r.textureIndex = get<std::int16_t>(in + 28);
    r.materialIndex = get<std::int16_t>(in + 30);
    r.surfaceMaterialCode = get<std::int16_t>(in + 32);
    r.featureId = get<std::int16_t>(in + 34);
    r.irMaterialCode = get<std::int32_t>(in + 36);
    r.transparency = get<std::uint16_t>(in + 40);
    r.lodGenerationControl = get<std::uint8_t>(in + 42);
    r.lineStyleIndex = get<std::uint8_t>(in + 43);
    r.flags = get<std::uint32_t>(in + 44);
    r.lightMode = get<std::uint8_t>(in + 48);
    r.packedPrimaryColor.alpha = in[56];
    r.packedPrimaryColor.blue = in[57];
    r.packedPrimaryColor.green = in[58];
    r.packedPrimaryColor.red = in[59];
    r.packedAlternateColor.alpha = in[60];
    r.packedAlternateColor.blue = in[61];
    r.packedAlternateColor.green = in[62];
    r.packedAlternateColor.red = in[63];
    r.textureMappingIndex = get<std::int16_t>(in + 64);
    r.primaryColorIndex = get<std::uint32_t>(in + 68);
    r.alternateColorIndex = get<std::uint32_t>(in + 72);
    return length;
}

std::size_t write(std::uint8_t* out, std::size_t room, const FltDof& r) {
    if (room < 384) return 0;
    putStart(out, 14, 384);
    std::memcpy(out + 4, r.asciiId, 8);
    std::memset(out + 12, 0, 4);
    put(out + 16, r.origin.x);
    put(out + 24, r.origin.y);
    put(out + 32, r.origin.z);
    put(out + 40, r.pointOnXAxis.x);
    put(out + 48, r.pointOnXAxis.y);
    put(out + 56, r.pointOnXAxis.z);
    put(out + 64, r.pointInXyPlane.x);
    put(out + 72, r.pointInXyPlane.y);
    put(out + 80, r.pointInXyPlane.z);
    put(out + 88, r.zTranslationMin);
    put(out + 96, r.zTranslationMax);
    put(out + 104, r.zTranslationCurrent);
    put(out + 112, r.zTranslationIncrement);
    put(out + 120, r.yTranslationMin);
    put(out + 128, r.yTranslationMax);
    put(out + 136, r.yTranslationCurrent);
    put(out + 144, r.yTranslationIncrement);
    put(out + 152, r.xTranslationMin);
    put(out + 160, r.xTranslationMax);
    put(out + 168, r.xTranslationCurrent);
    put(out + 176, r.xTranslationIncrement);
    put(out + 184, r.pitchMin);
    put(out + 192, r.pitchMax);
    put(out + 200, r.pitchCurrent);
    put(out + 208, r.pitchIncrement);
    put(out + 216, r.rollMin);
    put(out + 224, r.rollMax);
    put(out + 232, r.rollCurrent);
    put(out + 240, r.rollIncrement);
    put(out + 248, r.yawMin);
    put(out + 256, r.yawMax);
    put(out + 264, r.yawCurrent);
    put(out + 272, r.yawIncrement);
    put(out + 280, r.zScaleMin);
    put(out + 288, r.zScaleMax);
    put(out + 296, r.zScaleCurrent);
    put(out + 304, r.zScaleIncrement);
    put(out + 312, r.yScaleMin);
    put(out + 320, r.yScaleMax);
    put(out + 328, r.yScaleCurrent);
    put(out + 336, r.yScaleIncrement);
    put(out + 344, r.xScaleMin);
    put(out + 352, r.xScaleMax);
    put(out + 360, r.xScaleCurrent);
    put(out + 368, r.xScaleIncrement);
    put(out + 376, r.flags);
    std::memset(out + 380, 0, 4);
    return 384;
}

std::size_t read(const std::uint8_t* in, std::size_t size, FltDof& r) {
    const std::size_t length = lengthOf(in, size, 14, 380);
    if (length == 0) return 0;
    std::memcpy(r.asciiId, in + 4, 8);
    r.origin.x = get<double>(in + 16);
    r.origin.y = get<double>(in + 24);
    r.origin.z = get<double>(in + 32);
    r.pointOnXAxis.x = get<double>(in + 40);
    r.pointOnXAxis.y = get<double>(in + 48);
    r.pointOnXAxis.z = get<double>(in + 56);
    r.pointInXyPlane.x = get<double>(in + 64);
    r.pointInXyPlane.y = get<double>(in + 72);
    r.pointInXyPlane.z = get<double>(in + 80);
    r.zTranslationMin = get<double>(in + 88);
    r.zTranslationMax = get<double>(in + 96);
    r.zTranslationCurrent = get<double>(in + 104);
    r.zTranslationIncrement = get<double>(in + 112);
    r.yTranslationMin = get<double>(in + 120);
    r.yTranslationMax = get<double>(in + 128);
    r.yTranslationCurrent = get<double>(in + 136);
    r.yTranslationIncrement = get<double>(in + 144);
    r.xTranslationMin = get<double>(in + 152);
    r.xTranslationMax = get<double>(in + 160);
    r.xTranslationCurrent = get<double>(in + 168);
    r.xTranslationIncrement = get<double>(in + 176);
    r.pitchMin = get<double>(in + 184);
    r.pitchMax = get<double>(in + 192);
    r.pitchCurrent = get<double>(in + 200);
    r.pitchIncrement = get<double>(in + 208);
    r.rollMin = get<double>(in + 216);
    r.rollMax = get<double>(in + 224);
    r.rollCurrent = get<double>(in + 232);
    r.rollIncrement = get<double>(in + 240);
    r.yawMin = get<double>(in + 248);
    r.yawMax = get<double>(in + 256);
    r.yawCurrent = get<double>(in + 264);
    r.yawIncrement = get<double>(in + 272);
    r.zScaleMin = get<double>(in + 280);
    r.zScaleMax = get<double>(in + 288);
    r.zScaleCurrent = get<double>(in + 296);
    r.zScaleIncrement = get<double>(in + 304);
    r.yScaleMin = get<double>(in + 312);
    r.yScaleMax = get<double>(in + 320);
    r.yScaleCurrent = get<double>(in + 328);
    r.yScaleIncrement = get<double>(in + 336);
    r.xScaleMin = get<double>(in + 344);
    r.xScaleMax = get<double>(in + 352);
    r.xScaleCurrent = get<double>(in + 360);
    r.xScaleIncrement = get<double>(in + 368);
    r.flags = get<std::int32_t>(in + 376);
    setIfUnset(r.origin, {0, 0, 0});
    setIfUnset(r.pointOnXAxis, {1, 0, 0});
    setIfUnset(r.pointInXyPlane, {0, 1, 0});
    return length;
}

std::size_t write(std::uint8_t* out, std::size_t room, const FltBsp& r) {
    if (room < 48) return 0;
    putStart(out, 55, 48);
    std::memcpy(out + 4, r.asciiId, 8);
    std::memset(out + 12, 0, 4);
    put(out + 16, r.planeA);
    put(out + 24, r.planeB);
    put(out + 32, r.planeC);
    put(out + 40, r.planeD);
    return 48;
}

std::size_t read(const std::uint8_t* in, std::size_t size, FltBsp& r) {
    const std::size_t length = lengthOf(in, size, 55, 48);
    if (length == 0) return 0;
    std::memcpy(r.asciiId, in + 4, 8);
    r.planeA = get<double>(in + 16);
    r.planeB = get<double>(in + 24);
    r.planeC = get<double>(in + 32);
    r.planeD = get<double>(in + 40);
    return length;
}

std::size_t write(std::uint8_t* out, std::size_t room, const FltInstanceRef& r) {
    if (room < 8) return 0;
    putStart(out, 61, 8);
    std::memset(out + 4, 0, 2);
    put(out + 6, r.instanceNumber);
    return 8;
}

std::size_t read(const std::uint8_t* in, std::size_t size, FltInstanceRef& r) {
    const std::size_t length = lengthOf(in, size, 61, 8);
    if (length == 0) return 0;
    r.instanceNumber = get<std::int16_t>(in + 6);
    return length;
}

std::size_t write(std::uint8_t* out, std::size_t room, const FltInstanceDef& r) {
    if (room < 8) return 0;
    putStart(out, 62, 8);
    std::memset(out + 4, 0, 2);
    put(out + 6, r.instanceNumber);
    return 8;
}

std::size_t read(const std::uint8_t* in, std::size_t size, FltInstanceDef& r) {
    const std::size_t length = lengthOf(in, size, 62, 8);
    if (length == 0) return 0;
    r.instanceNumber = get<std::int16_t>(in + 6);
    return length;
}

std::size_t write(std::uint8_t* out, std::size_t room, const FltXRef& r) {
    if (room < 216) return 0;
    putStart(out, 63, 216);
    std::memcpy(out + 4, r.fileName, 200);
    std::memset(out + 204, 0, 4);
    put(out + 208, r.flags);
    std::memset(out + 212, 0, 2);
    std::memset(out + 214, 0, 2);
    return 216;
}

std::size_t read(const std::uint8_t* in, std::size_t size, FltXRef& r) {
    const std::size_t length = lengthOf(in, size, 63, 214);
    if (length == 0) return 0;
    std::memcpy(r.fileName, in + 4, 200);
    r.flags = get<std::int32_t>(in + 208);
    return length;
}

std::size_t write(std::uint8_t* out, std::size_t room, const FltLod& r) {
    if (room < 72) return 0;
    putStart(out, 73, 72);
    std::memcpy(out + 4, r.asciiId, 8);
    std::memset(out + 12, 0, 4);
    put(out + 16, r.switchInDistance);
    put(out + 24, r.switchOutDistance);
    put(out + 32, r.specialEffect1);
    put(out + 34, r.specialEffect2);
    put(out + 36, r.flags);
    put(out + 40, r.centerX);
    put(out + 48, r.centerY);
    put(out + 56, r.centerZ);
    put(out + 64, r.transitionRange);
    return 72;
}

std::size_t read(const std::uint8_t* in, std::size_t size, FltLod& r) {
    const std::size_t length = lengthOf(in, size, 73, 72);
    if (length == 0) return 0;
    std::memcpy(r.asciiId, in + 4, 8);
    r.switchInDistance = get<double>(in + 16);
    r.switchOutDistance = get<double>(in + 24);
    r.specialEffect1 = get<std::int16_t>(in + 32);
    r.specialEffect2 = get<std::int16_t>(in + 34);
    r.flags = get<std::int32_t>(in + 36);
    r.centerX = get<double>(in + 40);
    r.centerY = get<double>(in + 48);
    r.centerZ = get<double>(in + 56);
    r.transitionRange = get<double>(in + 64);
    return length;
}

std::size_t write(std::uint8_t* out, std::size_t room, const FltClipRegion& r) {
    if (room < 280) return 0;
    putStart(out, 98, 280);
    std::memcpy(out + 4, r.asciiId, 8);
    std::memset(out + 12, 0, 6);
    put(out + 18, r.edgeClip0);
    put(out + 19, r.edgeClip1);
    put(out + 20, r.edgeClip2);
    put(out + 21, r.edgeClip3);
    put(out + 22, r.edgeClip4);
    std::memset(out + 23, 0, 1);
    put(out + 24, r.corner0X);
    put(out + 32, r.corner0Y);
    put(out + 40, r.corner0Z);
    put(out + 48, r.corner1X);
    put(out + 56, r.corner1Y);
    put(out + 64, r.corner1Z);
    put(out + 72, r.corner2X);
    put(out + 80, r.corner2Y);
    put(out + 88, r.corner2Z);
    put(out + 96, r.corner3X);
    put(out + 104, r.corner3Y);
    put(out + 112, r.corner3Z);
    put(out + 120, r.plane0A);
    put(out + 128, r.plane1A);
    put(out + 136, r.plane2A);
    put(out + 144, r.plane3A);
    put(out + 152, r.plane4A);
    put(out + 160, r.plane0B);
    put(out + 168, r.plane1B);
    put(out + 176, r.plane2B);
    put(out + 184, r.plane3B);
    put(out + 192, r.plane4B);
    put(out + 200, r.plane0C);
    put(out + 208, r.plane1C);
    put(out + 216, r.plane2C);
    put(out + 224, r.plane3C);
    put(out + 232, r.plane4C);
    put(out + 240, r.plane0D);
    put(out + 248, r.plane1D);
    put(out + 256, r.plane2D);
    put(out + 264, r.plane3D);
    put(out + 272, r.plane4D);
    return 280;
}

std::size_t read(const std::uint8_t* in, std::size_t size, FltClipRegion& r) {
    const std::size_t length = lengthOf(in, size, 98, 280);
    if (length == 0) return 0;
    std::memcpy(r.asciiId, in + 4, 8);
    r.edgeClip0 = get<std::int8_t>(in + 18);
    r.edgeClip1 = get<std::int8_t>(in + 19);
    r.edgeClip2 = get<std::int8_t>(in + 20);
    r.edgeClip3 = get<std::int8_t>(in + 21);
    r.edgeClip4 = get<std::int8_t>(in + 22);
    r.corner0X = get<double>(in + 24);
    r.corner0Y = get<double>(in + 32);
    r.corner0Z = get<double>(in + 40);
    r.corner1X = get<double>(in + 48);
    r.corner1Y = get<double>(in + 56);
    r.corner1Z = get<double>(in + 64);
    r.corner2X = get<double>(in + 72);
    r.corner2Y = get<double>(in + 80);
    r.corner2Z = get<double>(in + 88);
    r.corner3X = get<double>(in + 96);
    r.corner3Y = get<double>(in + 104);
    r.corner3Z = get<double>(in + 112);
    r.plane0A = get<double>(in + 120);
    r.plane1A = get<double>(in + 128);
    r.plane2A = get<double>(in + 136);
    r.plane3A = get<double>(in + 144);
    r.plane4A = get<double>(in + 152);
    r.plane0B = get<double>(in + 160);
    r.plane1B = get<double>(in + 168);
    r.plane2B = get<double>(in + 176);
    r.plane3B = get<double>(in + 184);
    r.plane4B = get<double>(in + 192);
    r.plane0C = get<double>(in + 200);
    r.plane1C = get<double>(in + 208);
    r.plane2C = get<double>(in + 216);
    r.plane3C = get<double>(in + 224);
    r.plane4C = get<double>(in + 232);
    r.plane0D = get<double>(in + 240);
    r.plane1D = get<double>(in + 248);
    r.plane2D = get<double>(in + 256);
    r.plane3D = get<double>(in + 264);
    r.plane4D = get<double>(in + 272);
    return length;
}

std::size_t write(std::uint8_t* out, std::size_t room, const FltLightSource& r) {
    if (room < 64) return 0;
    putStart(out, 101, 64);
    std::memcpy(out + 4, r.asciiId, 8);
    std::memset(out + 12, 0, 4);
    put(out + 16, r.paletteIndex);
    std::memset(out + 20, 0, 4);
    put(out + 24, r.flags);
    std::memset(out + 28, 0, 4);
    put(out + 32, r.positionX);
    put(out + 40, r.positionY);
    put(out + 48, r.positionZ);
    put(out + 56, r.yaw);
    put(out + 60, r.pitch);
    return 64;
}

std::size_t read(const std::uint8_t* in, std::size_t size, FltLightSource& r) {
    const std::size_t length = lengthOf(in, size, 101, 64);
    if (length == 0) return 0;
    std::memcpy(r.asciiId, in + 4, 8);
    r.paletteIndex = get<std::int32_t>(in + 16);
    r.flags = get<std::int32_t>(in + 24);
    r.positionX = get<double>(in + 32);
    r.positionY = get<double>(in + 40);
    r.positionZ = get<double>(in + 48);
    r.yaw = get<float>(in + 56);
    r.pitch = get<float>(in + 60);
    return length;
}

std::size_t write(std::uint8_t* out, std::size_t room, const FltLightSourcePalette& r) {
    if (room < 240) return 0;
    putStart(out, 102, 240);
    put(out + 4, r.paletteIndex);
    std::memset(out + 8, 0, 8);
    std::memcpy(out + 16, r.name, 20);
    std::memset(out + 36, 0, 4);
    put(out + 40, r.ambientRed);
    put(out + 44, r.ambientGreen);
    put(out + 48, r.ambientBlue);
    put(out + 52, r.ambientAlpha);
    put(out + 56, r.diffuseRed);
    put(out + 60, r.diffuseGreen);
    put(out + 64, r.diffuseBlue);
    put(out + 68, r.diffuseAlpha);
    put(out + 72, r.specularRed);
    put(out + 76, r.specularGreen);
    put(out + 80, r.specularBlue);
    put(out + 84, r.specularAlpha);
    put(out + 88, r.lightType);
    std::memset(out + 92, 0, 40);
    put(out + 132, r.spotExponentialDropoff);
    put(out + 136, r.spotCutoffAngle);
    put(out + 140, r.yaw);
    put(out + 144, r.pitch);
    put(out + 148, r.constantAttenuation);
    put(out + 152, r.linearAttenuation);
    put(out + 156, r.quadraticAttenuation);
    put(out + 160, r.activeDuringModeling);
    std::memset(out + 164, 0, 76);
    return 240;
}

std::size_t read(const std::uint8_t* in, std::size_t size, FltLightSourcePalette& r) {
    const std::size_t length = lengthOf(in, size, 102, 240);
    if (length == 0) return 0;
    r.paletteIndex = get<std::int32_t>(in + 4);
    std::memcpy(r.name, in + 16, 20);
    r.ambientRed = get<float>(in + 40);
    r.ambientGreen = get<float>(in + 44);
    r.ambientBlue = get<float>(in + 48);
    r.ambientAlpha = get<float>(in + 52);
    r.diffuseRed = get<float>(in + 56);
    r.diffuseGreen = get<float>(in + 60);
    r.diffuseBlue = get<float>(in + 64);
    r.diffuseAlpha = get<float>(in + 68);
    r.specularRed = get<float>(in + 72);
    r.specularGreen = get<float>(in + 76);
    r.specularBlue = get<float>(in + 80);
    r.specularAlpha = get<float>(in + 84);
    r.lightType = get<std::int32_t>(in + 88);
    r.spotExponentialDropoff = get<float>(in + 132);
    r.spotCutoffAngle = get<float>(in + 136);
    r.yaw = get<float>(in + 140);
    r.pitch = get<float>(in + 144);
    r.constantAttenuation = get<float>(in + 148);
    r.linearAttenuation = get<float>(in + 152);
    r.quadraticAttenuation = get<float>(in + 156);
    r.activeDuringModeling = get<std::int32_t>(in + 160);
    return length;
}

std::size_t write(std::uint8_t* out, std::size_t room, const FltLightPoint& r) {
    if (room < 160) return 0;
    putStart(out, 111, 160);
    std::memcpy(out + 4, r.asciiId, 8);
    put(out + 12, r.surfaceMaterialCode);
    put(out + 14, r.featureId);
    put(out + 16, r.backColor);
    put(out + 20, r.displayMode);
    put(out + 24, r.intensity);
    put(out + 28, r.backIntensity);
    put(out + 32, r.minDefocus);
    put(out + 36, r.maxDefocus);
    put(out + 40, r.fadingMode);
    put(out + 44, r.fogPunchMode);
    put(out + 48, r.directionalMode);
    put(out + 52, r.rangeMode);
    put(out + 56, r.minPixelSize);
    put(out + 60, r.maxPixelSize);
    put(out + 64, r.actualPixelSize);
    put(out + 68, r.transparentFalloffPixelSize);
    put(out + 72, r.transparentFalloffExponent);
    put(out + 76, r.transparentFalloffScalar);
    put(out + 80, r.transparentFalloffClamp);
    put(out + 84, r.fogScalar);
    put(out + 88, r.reserved);
    put(out + 92, r.sizeDifferenceThreshold);
    put(out + 96, r.directionalType);
    put(out + 100, r.horizontalLobeAngle);
    put(out + 104, r.verticalLobeAngle);
    put(out + 108, r.lobeRollAngle);
    put(out + 112, r.directionalFalloffExponent);
    put(out + 116, r.directionalAmbientIntensity);
    put(out + 120, r.animationPeriod);
    put(out + 124, r.animationPhaseDelay);
    put(out + 128, r.animationEnabledPeriod);
    put(out + 132, r.significance);
    put(out + 136, r.calligraphicDrawOrder);
    put(out + 140, r.flags);
    putNarrowed(out + 144, r.axisX);
    putNarrowed(out + 148, r.axisY);
    putNarrowed(out + 152, r.axisZ);
    std::memset(out + 156, 0, 4);
    return 160;
}

std::size_t read(const std::uint8_t* in, std::size_t size, FltLightPoint& r) {
    const std::size_t length = lengthOf(in, size, 111, 156);
    if (length == 0) return 0;
    std::memcpy(r.asciiId, in + 4, 8);
    r.surfaceMaterialCode = get<std::int16_t>(in + 12);
    r.featureId = get<std::int16_t>(in + 14);
    r.backColor = get<std::uint32_t>(in + 16);
    r.displayMode = get<std::int32_t>(in + 20);
    r.intensity = get<float>(in + 24);
    r.backIntensity = get<float>(in + 28);
    r.minDefocus = get<float>(in + 32);
    r.maxDefocus = get<float>(in + 36);
    r.fadingMode = get<std::int32_t>(in + 40);
    r.fogPunchMode = get<std::int32_t>(in + 44);
    r.directionalMode = get<std::int32_t>(in + 48);
    r.rangeMode = get<std::int32_t>(in + 52);
    r.minPixelSize = get<float>(in + 56);
    r.maxPixelSize = get<float>(in + 60);
    r.actualPixelSize = get<float>(in + 64);
    r.transparentFalloffPixelSize = get<float>(in + 68);
    r.transparentFalloffExponent = get<float>(in + 72);
    r.transparentFalloffScalar = get<float>(in + 76);
    r.transparentFalloffClamp = get<float>(in + 80);
    r.fogScalar = get<float>(in + 84);
    r.reserved = get<float>(in + 88);
    r.sizeDifferenceThreshold = get<float>(in + 92);
    r.directionalType = get<std::int32_t>(in + 96);
    r.horizontalLobeAngle = get<float>(in + 100);
    r.verticalLobeAngle = get<float>(in + 104);
    r.lobeRollAngle = get<float>(in + 108);
    r.directionalFalloffExponent = get<float>(in + 112);
    r.directionalAmbientIntensity = get<float>(in + 116);
    r.animationPeriod = get<float>(in + 120);
    r.animationPhaseDelay = get<float>(in + 124);
    r.animationEnabledPeriod = get<float>(in + 128);
    r.significance = get<float>(in + 132);
    r.calligraphicDrawOrder = get<std::int32_t>(in + 136);
    r.flags = get<std::uint32_t>(in + 140);
    r.axisX = static_cast<double>(get<float>(in + 144));
    r.axisY = static_cast<double>(get<float>(in + 148));
    r.axisZ = static_cast<double>(get<float>(in + 152));
    return length;
}

std::size_t write(std::uint8_t* out, std::size_t room, const FltComment& r) {
    const std::size_t size = std::strlen(r.text()) + 1;
    const std::size_t length = (4 + size + 7) / 8 * 8;
    if (room < length || length > 0xFFFF) return 0;
    putStart(out, 31, static_cast<std::uint16_t>(length));
    std::memcpy(out + 4, r.text(), size);
    std::memset(out + 4 + size, 0, length - 4 - size);
    return length;
}

std::size_t read(const std::uint8_t* in, std::size_t size, FltComment& r) {
    const std::size_t length = lengthOf(in, size, 31, 4);
    if (length == 0) return 0;
    r.setSize(static_cast<std::int32_t>(length - 4 + 1));
    std::memcpy(r.text(), in + 4, length - 4);
    return length;
}

std::size_t write(std::uint8_t* out, std::size_t room, const FltSwitch& r) {
    const std::int32_t words = r.maskWords.count();
    const std::size_t end = 28 + 4 * static_cast<std::size_t>(words);
    const std::size_t length = (end + 7) / 8 * 8;
    if (room < length || length > 0xFFFF) return 0;
    putStart(out, 96, static_cast<std::uint16_t>(length));
    std::memcpy(out + 4, r.asciiId, 8);
    std::memset(out + 12, 0, 4);
    put(out + 16, r.currentMask);
    put(out + 20, r.wordsPerMask > 0 ? words / r.wordsPerMask : 0);
    put(out + 24, r.wordsPerMask);
    const std::uint32_t* word = r.maskWords.data();
    for (std::int32_t i = 0; i < words; ++i) put(out + 28 + 4 * i, word[i]);
    if (length > end) std::memset(out + end, 0, 4);
    return length;
}

std::size_t read(const std::uint8_t* in, std::size_t size, FltSwitch& r) {
    const std::size_t length = lengthOf(in, size, 96, 28);
    if (length == 0) return 0;
    std::memcpy(r.asciiId, in + 4, 8);
    r.currentMask = get<std::int32_t>(in + 16);
    const auto masks = get<std::int32_t>(in + 20);
    r.wordsPerMask = get<std::int32_t>(in + 24);
    const std::int64_t words = std::int64_t{masks} * r.wordsPerMask;
    if (masks < 0 || r.wordsPerMask < 0 || words > static_cast<std::int64_t>(length - 28) / 4)
        return 0;
    r.maskWords.resize(static_cast<std::int32_t>(words));
    std::uint32_t* word = r.maskWords.data();
    for (std::int64_t i = 0; i < words; ++i) word[i] = get<std::uint32_t>(in + 28 + 4 * i);
    return length;
}

// Only the longest kind, with a normal and texture coordinates.
std::size_t write(std::uint8_t* out, std::size_t room, const FltVertex& r) {
    if (room < 64 || !r.hasNormal || !r.hasTexture) return 0;
    putStart(out, 70, 64);
    put(out + 4, r.colorNameIndex);
    put(out + 6, r.flags);
    put(out + 8, r.position.x);
    put(out + 16, r.position.y);
    put(out + 24, r.position.z);
    put(out + 32, r.normal.x);
    put(out + 36, r.normal.y);
    put(out + 40, r.normal.z);
    put(out + 44, r.texture.u);
    put(out + 48, r.texture.v);
    out[52] = r.packedColor.alpha;
    out[53] = r.packedColor.blue;
    out[54] = r.packedColor.green;
    out[55] = r.packedColor.red;
    put(out + 56, r.colorIndex);
    std::memset(out + 60, 0, 4);
    return 64;
}

std::size_t read(const std::uint8_t* in, std::size_t size, FltVertex& r) {
    const std::size_t length = lengthOf(in, size, 70, 60);
    if (length == 0) return 0;
    r.hasNormal = r.hasTexture = true;
    r.colorNameIndex = get<std::int16_t>(in + 4);
    r.flags = get<std::uint16_t>(in + 6);
    r.position = {get<double>(in + 8), get<double>(in + 16), get<double>(in + 24)};
    r.normal = {get<float>(in + 32), get<float>(in + 36), get<float>(in + 40)};
    r.texture = {get<float>(in + 44), get<float>(in + 48)};
    r.packedColor = {in[52], in[53], in[54], in[55]};
    r.colorIndex = get<std::uint32_t>(in + 56);
    return length;
}

std::size_t write(std::uint8_t* out, std::size_t room, const FltVertexList& r) {
    const std::size_t length = 4 + 4 * r.offsets.size();
    if (room < length || length > 0xFFFF) return 0;
    putStart(out, 72, static_cast<std::uint16_t>(length));
    for (std::size_t i = 0; i < r.offsets.size(); ++i) put(out + 4 + 4 * i, r.offsets[i]);
    return length;
}

std::size_t read(const std::uint8_t* in, std::size_t size, FltVertexList& r) {
    const std::size_t length = lengthOf(in, size, 72, 4);
    if (length == 0) return 0;
    r.offsets.resize((length - 4) / 4);
    for (std::size_t i = 0; i < r.offsets.size(); ++i)
        r.offsets[i] = get<std::uint32_t>(in + 4 + 4 * i);
    return length;
}

std::size_t write(std::uint8_t* out, std::size_t room, const FltMatrix& r) {
    if (room < 72) return 0;
    putStart(out, 49, 72);
    for (int i = 0; i < 16; ++i) put(out + 4 + 4 * i, r.rows[i / 4][i % 4]);
    std::memset(out + 68, 0, 4);
    return 72;
}

std::size_t read(const std::uint8_t* in, std::size_t size, FltMatrix& r) {
    const std::size_t length = lengthOf(in, size, 49, 68);
    if (length == 0) return 0;
    for (int i = 0; i < 16; ++i) r.rows[i / 4][i % 4] = get<float>(in + 4 + 4 * i);
    return length;
}

std::size_t write(std::uint8_t* out, std::size_t room, const FltMaterial& r) {
    if (room < 88) return 0;
    putStart(out, 113, 88);
    put(out + 4, r.index);
    std::memcpy(out + 8, r.name, 12);
    put(out + 20, r.flags);
    std::uint8_t* place = out + 24;
    for (const FltColor3f* color : {&r.ambient, &r.diffuse, &r.specular, &r.emissive}) {
        put(place, color->red);
        put(place + 4, color->green);
        put(place + 8, color->blue);
        place += 12;
    }
    put(out + 72, r.shininess);
    put(out + 76, r.alpha);
    std::memset(out + 80, 0, 8);
    return 88;
}

std::size_t read(const std::uint8_t* in, std::size_t size, FltMaterial& r) {
    const std::size_t length = lengthOf(in, size, 113, 84);
    if (length == 0) return 0;
    r.index = get<std::int32_t>(in + 4);
    std::memcpy(r.name, in + 8, 12);
    r.flags = get<std::uint32_t>(in + 20);
    const std::uint8_t* place = in + 24;
    for (FltColor3f* color : {&r.ambient, &r.diffuse, &r.specular, &r.emissive}) {
        *color = {get<float>(place), get<float>(place + 4), get<float>(place + 8)};
        place += 12;
    }
    r.shininess = get<float>(in + 72);
    r.alpha = get<float>(in + 76);
    return length;
}

std::size_t write(std::uint8_t* out, std::size_t room, const FltTexture& r) {
    if (room < 216) return 0;
    putStart(out, 64, 216);
    std::memcpy(out + 4, r.fileName, 200);
    put(out + 204, r.index);
    put(out + 208, r.paletteX);
    put(out + 212, r.paletteY);
    return 216;
}

std::size_t read(const std::uint8_t* in, std::size_t size, FltTexture& r) {
    const std::size_t length = lengthOf(in, size, 64, 216);
    if (length == 0) return 0;
    std::memcpy(r.fileName, in + 4, 200);
    r.index = get<std::int32_t>(in + 204);
    r.paletteX = get<std::int32_t>(in + 208);
    r.paletteY = get<std::int32_t>(in + 212);
    return length;
}

}  // namespace raw
