// The palettes of a file that is being written: what was read, and what edits add to it.
#pragma once

#include "../sourcerecords.h"
#include "recordmerge.h"

#include <kiln/platform.h>
#include <quillon/fltcolorpalette.h>
#include <quillon/fltlightsourcepalette.h>

#include <map>
#include <set>
#include <string>

class FltStream;

namespace interchange {

/// The light source, texture and material palettes. First every user of an entry says what it
/// needs, then the palettes are written.
class FilePalettes {
public:
    /// Starts from the palettes among the attached records of the database's node.
    void read(const SourceRecords& kept);

    /// The color palette; empty without one.
    const FltColorPalette& colors() const noexcept { return colors_; }

    /// The index of the light source palette entry to use for a light that says `index` and looks
    /// like `wanted`: `index` unless another light already made that entry look different.
    std::int32_t light(std::int32_t index, const FltLightSourcePalette& wanted);

    /// Whether there is a light source palette entry of that index.
    bool hasLight(std::int32_t index) const { return lights_.contains(index); }

    /// Whether the texture palette has an entry of that index.
    bool hasTexture(std::int32_t index) const { return textures_.contains(index); }
    /// The index, from 0 to 32767, of the entry for a picture file (UTF-8), which is added when
    /// there is none. Throws `ExportError` when the palette is full.
    std::int32_t texture(const std::string& fileName);

    /// The index of a new material that gives back light in that color; one for each color.
    /// Throws `ExportError` when the palette is full.
    std::int16_t material(COLORREF color);

    /// Writes `record`, a light source palette entry that was read, as it is to be now.
    void write(FltStream& stream, const FltRecordView& record);
    /// Writes the entries that were not read.
    void writeNew(FltStream& stream);

private:
    struct Light {
        FltRecordView read;  ///< as it was read; empty for a new one
        FltLightSourcePalette entry;
        bool edited = false;   ///< differs from what was read
        bool claimed = false;  ///< some light looks like it
    };

    void readLight(const FltRecordView& record);
    void readColors(const FltRecordView& record);
    void readTexture(const FltRecordView& record);
    void readMaterial(const FltRecordView& record);
    void addTexture(std::int32_t index, const std::string& name);
    static void writeMaterial(FltStream& stream, std::int16_t index, COLORREF color);
    void writeLight(FltStream& stream, const Light& light);

    FltColorPalette colors_;
    bool hasColors_ = false;
    std::uint32_t revision_ = 0;
    std::map<std::int32_t, Light> lights_;
    std::int32_t freeLight_ = 0;                     ///< below it every index has an entry
    std::map<std::int32_t, std::string> textures_;   ///< file names by index
    std::map<std::string, std::int32_t> textureOf_;  ///< the first index of a name that fits a face
    std::int32_t freeTexture_ = 0;
    std::set<std::int32_t> newTextures_;
    std::set<std::int32_t> materials_;               ///< indices in use
    std::map<COLORREF, std::int16_t> newMaterials_;  ///< their indices by color
    std::int32_t freeMaterial_ = 0;
    RecordMerger merger_;
};

}  // namespace interchange
