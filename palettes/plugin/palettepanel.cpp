#include "palettepanel.h"

#include "resource.h"
#include "texts.h"

namespace palettes {

namespace {

constexpr int kRollupCategory = 4200;

}  // namespace

PalettePanel& PalettePanel::instance() {
    static PalettePanel panel;
    return panel;
}

PalettePanel::PalettePanel() : UtilityPage(IDD_PALETTE_PANEL, kRollupCategory) {}

std::string PalettePanel::title() const {
    return textOf(TextId::kUtility);
}

void PalettePanel::followLanguage() {
    palettes_.followLanguage();
    look_.followLanguage();
}

void PalettePanel::destroyWindows() {
    palettes_.DestroyWindow();
    look_.DestroyWindow();
}

void PalettePanel::onCommand(int id, UINT) {
    if (id == IDC_OPEN_PALETTES) palettes_.open(host());
    if (id == IDC_OPEN_LOOK) look_.open(host());
    if (id == IDOK) close();
}

}  // namespace palettes
