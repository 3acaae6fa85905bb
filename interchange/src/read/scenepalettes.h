// The palettes of a file that is read, and what becomes of them in the scene.
#pragma once

#include <interchange/fileindex.h>

#include <kiln/kiln.h>
#include <quillon/fltcolorpalette.h>
#include <quillon/fltlightsourcepalette.h>

#include <map>

namespace interchange {

/// The color, light source and texture palettes. Where several entries of one palette have the
/// same index, the first is the one that counts.
class ScenePalettes {
public:
    ScenePalettes(const FileIndex& file, Interface& host);

    /// Makes a texture map for each entry of the texture palette, marked as one that was read.
    void makeTextures();

    const FltColorPalette& colors() const noexcept { return colors_; }
    /// The light source palette entry of that index, the defaults where there is none.
    const FltLightSourcePalette& light(std::int32_t index) const;
    /// The texture map of that entry; null where there is none.
    BitmapTex* texture(std::int32_t index) const;

private:
    void readLights();
    void makeTexture(const FltRecordView& record);

    const FileIndex& file_;
    Interface& host_;
    FltColorPalette colors_;
    std::map<std::int32_t, FltLightSourcePalette> lights_;
    FltLightSourcePalette defaultLight_;
    std::map<std::int32_t, BitmapTex*> textures_;
};

}  // namespace interchange
