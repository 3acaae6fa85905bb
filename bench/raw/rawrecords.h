// The bare limit: every record moved by straight-line code at known offsets.
#pragma once

#include <quillon/fltbsp.h>
#include <quillon/fltclipregion.h>
#include <quillon/fltcomment.h>
#include <quillon/fltdof.h>
#include <quillon/fltface.h>
#include <quillon/fltgroup.h>
#include <quillon/fltheader.h>
#include <quillon/fltinstance.h>
#include <quillon/fltlightpoint.h>
#include <quillon/fltlightsource.h>
#include <quillon/fltlightsourcepalette.h>
#include <quillon/fltlod.h>
#include <quillon/fltmaterial.h>
#include <quillon/fltobject.h>
#include <quillon/fltswitch.h>
#include <quillon/flttexture.h>
#include <quillon/flttransform.h>
#include <quillon/fltvertex.h>
#include <quillon/fltvertexlist.h>
#include <quillon/fltxref.h>

#include <cstddef>
#include <cstdint>

namespace raw {

// `write` puts the whole record as it stands in a file at revision 1580, padding included, to
// `out` and returns its length, or 0 when that is more than the `room` there. `read` takes it from
// the `size` bytes at `in` and returns its length, or 0 for another record or one that is too short
// or leads beyond the bytes.
std::size_t write(std::uint8_t* out, std::size_t room, const FltHeader& r);
std::size_t read(const std::uint8_t* in, std::size_t size, FltHeader& r);
std::size_t write(std::uint8_t* out, std::size_t room, const FltGroup& r);
std::size_t read(const std::uint8_t* in, std::size_t size, FltGroup& r);
std::size_t write(std::uint8_t* out, std::size_t room, const FltObject& r);
std::size_t read(const std::uint8_t* in, std::size_t size, FltObject& r);
std::size_t write(std::uint8_t* out, std::size_t room, const FltFace& r);
std::size_t read(const std::uint8_t* in, std::size_t size, FltFace& r);
std::size_t write(std::uint8_t* out, std::size_t room, const FltDof& r);
std::size_t read(const std::uint8_t* in, std::size_t size, FltDof& r);
std::size_t write(std::uint8_t* out, std::size_t room, const FltBsp& r);
std::size_t read(const std::uint8_t* in, std::size_t size, FltBsp& r);
std::size_t write(std::uint8_t* out, std::size_t room, const FltInstanceRef& r);
std::size_t read(const std::uint8_t* in, std::size_t size, FltInstanceRef& r);
std::size_t write(std::uint8_t* out, std::size_t room, const FltInstanceDef& r);
std::size_t read(const std::uint8_t* in, std::size_t size, FltInstanceDef& r);
std::size_t write(std::uint8_t* out, std::size_t room, const FltXRef& r);
std::size_t read(const std::uint8_t* in, std::size_t size, FltXRef& r);
std::size_t write(std::uint8_t* out, std::size_t room, const FltLod& r);
std::size_t read(const std::uint8_t* in, std::size_t size, FltLod& r);
std::size_t write(std::uint8_t* out, std::size_t room, const FltClipRegion& r);
std::size_t read(const std::uint8_t* in, std::size_t size, FltClipRegion& r);
std::size_t write(std::uint8_t* out, std::size_t room, const FltLightSource& r);
std::size_t read(const std::uint8_t* in, std::size_t size, FltLightSource& r);
std::size_t write(std::uint8_t* out, std::size_t room, const FltLightSourcePalette& r);
std::size_t read(const std::uint8_t* in, std::size_t size, FltLightSourcePalette& r);
std::size_t write(std::uint8_t* out, std::size_t room, const FltLightPoint& r);
std::size_t read(const std::uint8_t* in, std::size_t size, FltLightPoint& r);
std::size_t write(std::uint8_t* out, std::size_t room, const FltComment& r);
std::size_t read(const std::uint8_t* in, std::size_t size, FltComment& r);
std::size_t write(std::uint8_t* out, std::size_t room, const FltSwitch& r);
std::size_t read(const std::uint8_t* in, std::size_t size, FltSwitch& r);
std::size_t write(std::uint8_t* out, std::size_t room, const FltVertex& r);
std::size_t read(const std::uint8_t* in, std::size_t size, FltVertex& r);
std::size_t write(std::uint8_t* out, std::size_t room, const FltVertexList& r);
std::size_t read(const std::uint8_t* in, std::size_t size, FltVertexList& r);
std::size_t write(std::uint8_t* out, std::size_t room, const FltMatrix& r);
std::size_t read(const std::uint8_t* in, std::size_t size, FltMatrix& r);
std::size_t write(std::uint8_t* out, std::size_t room, const FltMaterial& r);
std::size_t read(const std::uint8_t* in, std::size_t size, FltMaterial& r);
std::size_t write(std::uint8_t* out, std::size_t room, const FltTexture& r);
std::size_t read(const std::uint8_t* in, std::size_t size, FltTexture& r);

}  // namespace raw
