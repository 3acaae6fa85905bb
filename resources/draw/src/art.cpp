#include "draw/art.h"

#include "image_file.h"
#include "pictures.h"

namespace draw {

std::vector<ArtFile> drawAll() {
    std::vector<ArtFile> files;
    for (const auto& pictures : {treeIcons(), treeIconStrips(), buttons(), aboutButton()}) {
        for (const Picture& picture : pictures) {
            files.push_back({picture.name + ".bmp", bitmapFile(picture.canvas)});
        }
    }
    files.push_back(
        {"workbench.ico", iconFile({emblem(4, 1, 1, 2), emblem(6, 2, 1, 3), emblem(8, 2, 2, 4),
                                    emblem(12, 3, 3, 6), emblem(16, 4, 4, 8)})});
    return files;
}

}  // namespace draw
