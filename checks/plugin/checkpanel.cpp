#include "checkpanel.h"

#include "resource.h"
#include "texts.h"

namespace checks {

namespace {

constexpr int kRollupCategory = 4100;

}  // namespace

CheckPanel& CheckPanel::instance() {
    static CheckPanel panel;
    return panel;
}

CheckPanel::CheckPanel() : UtilityPage(IDD_CHECK_PANEL, kRollupCategory) {
    window_.onCounts = [this] { setText(IDC_CHECK_COUNTS, window_.countsText()); };
}

std::string CheckPanel::title() const {
    return textOf(TextId::kUtility);
}

void CheckPanel::onShown() {
    window_.onCounts();
}

void CheckPanel::onCommand(int id, UINT) {
    if (id == IDC_CHECK_SCENE) window_.open(host());
    if (id == IDOK) close();
}

}  // namespace checks
