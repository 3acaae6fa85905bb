// Draws the bitmaps of the resource scripts: draw_resources FOLDER

#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "draw/art.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: draw_resources FOLDER\n";
        return 2;
    }
    try {
        const std::filesystem::path folder = argv[1];
        std::filesystem::create_directories(folder);
        for (const draw::ArtFile& file : draw::drawAll()) {
            std::ofstream out(folder / file.name, std::ios::binary);
            out.exceptions(std::ios::failbit | std::ios::badbit);
            out.write(reinterpret_cast<const char*>(file.bytes.data()),
                      static_cast<std::streamsize>(file.bytes.size()));
        }
    } catch (const std::exception& error) {
        std::cerr << "draw_resources: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
