#include "terrainfile.h"

#include <quillon/fltcomment.h>
#include <quillon/fltface.h>
#include <quillon/fltgroup.h>
#include <quillon/fltheader.h>
#include <quillon/fltobject.h>
#include <quillon/fltstream.h>
#include <quillon/fltvertex.h>
#include <quillon/fltvertexlist.h>

#include <cmath>

#include "ownprocess.h"

namespace bench {

namespace {

constexpr std::uint32_t kVerticesPerObject = (Terrain::kColumns + 1) * (Terrain::kRows + 1);

FltVertex newVertex() {
    return FltVertex(true, true);
}

class FileMaker {
public:
    FileMaker(const Terrain& terrain, const std::string& path) : terrain_(terrain) {
        if (!stream_.open(path)) fail("the file cannot be created");
    }

    void make() {
        palette();
        stream_.writeControl(kFltPushLevel);
        for (int group = 0; group < terrain_.groups; ++group) {
            FltGroup record;
            record.write(stream_);
            FltComment("A part of the terrain").write(stream_);
            stream_.writeControl(kFltPushLevel);
            for (int i = 0; i < Terrain::kObjectsPerGroup; ++i) object();
            stream_.writeControl(kFltPopLevel);
        }
        stream_.writeControl(kFltPopLevel);
        if (!stream_.close()) fail("the file cannot be written");
    }

private:
    void palette() {
        FltVertexPalette record;
        record.length = Terrain::offsetOf(terrain_.vertices());
        record.write(stream_);
        for (int patch = 0; patch < terrain_.objects(); ++patch) {
            for (int row = 0; row <= Terrain::kRows; ++row) {
                for (int column = 0; column <= Terrain::kColumns; ++column)
                    vertex(patch, row, column);
            }
        }
    }

    void vertex(int patch, int row, int column) {
        const double x = 10.0 * (column + Terrain::kColumns * (patch % 110));
        const double y = 10.0 * (row + Terrain::kRows * (patch / 110));
        FltVertex record = newVertex();
        record.colorNameIndex = 0;
        record.position = {x, y, std::sin(x / 100) * std::cos(y / 70)};
        record.normal = {0, 0, 1};
        record.texture = {static_cast<float>(column) / Terrain::kColumns,
                          static_cast<float>(row) / Terrain::kRows};
        record.write(stream_);
    }

    void object() {
        FltObject record;
        record.write(stream_);
        stream_.writeControl(kFltPushLevel);
        for (std::uint32_t row = 0; row < Terrain::kRows; ++row) {
            for (std::uint32_t column = 0; column < Terrain::kColumns; ++column) face(row, column);
        }
        stream_.writeControl(kFltPopLevel);
        firstVertex_ += kVerticesPerObject;
    }

    void face(std::uint32_t row, std::uint32_t column) {
        FltFace record;
        record.write(stream_);
        stream_.writeControl(kFltPushLevel);
        FltVertexList list;
        const std::uint32_t start = firstVertex_ + row * (Terrain::kColumns + 1) + column;
        for (const std::uint32_t corner :
             {start, start + 1, start + Terrain::kColumns + 2, start + Terrain::kColumns + 1}) {
            list.offsets.push_back(Terrain::offsetOf(corner));
        }
        list.write(stream_);
        stream_.writeControl(kFltPopLevel);
    }

    const Terrain& terrain_;
    FltStream stream_;
    std::uint32_t firstVertex_ = 0;
};

}  // namespace

std::size_t Terrain::vertices() const {
    return static_cast<std::size_t>(objects()) * kVerticesPerObject;
}

std::uint32_t Terrain::offsetOf(std::size_t vertex) {
    static const std::uint32_t length = fltWrittenLength(newVertex(), FltHeader().revision());
    return FltVertexPalette().length + static_cast<std::uint32_t>(vertex) * length;
}

void writeTerrain(const Terrain& terrain, const std::string& path) {
    FileMaker(terrain, path).make();
}

}  // namespace bench
