#include "utilities.h"

#include "wording.h"

#include <algorithm>

namespace workbench {

void Utilities::list() {
    all_ = kiln::classesOf(UTILITY_CLASS_ID);
    withAbout_.clear();
    std::vector<std::string> names;
    for (ClassDesc* const utility : all_) {
        names.emplace_back(utility->ClassName());
        auto* const known = dynamic_cast<ClassDesc2*>(utility);
        if (known && known->HasAbout()) withAbout_.push_back(known);
    }
    panel_.setUtilities(names,
                        [this](int position) { toggle(static_cast<std::size_t>(position)); });
    showOpen(core_.openedUtility());
}

ClassDesc* Utilities::named(const std::string& name) const {
    const auto found = std::ranges::find_if(
        all_, [&](ClassDesc* utility) { return name == utility->ClassName(); });
    return found == all_.end() ? nullptr : *found;
}

void Utilities::showOpen(ClassDesc* utility) {
    const auto found = std::ranges::find(all_, utility);
    panel_.setOpenUtility(
        found == all_.end() ? -1 : static_cast<int>(std::distance(all_.begin(), found)));
}

void Utilities::toggle(std::size_t position) {
    ClassDesc* const wanted = all_[position];
    if (core_.openedUtility() == wanted) return core_.closeUtility();
    open(wanted);
}

void Utilities::open(ClassDesc* utility) {
    const kiln::Status status = core_.openUtility(utility);
    if (!status.ok()) owner_.ShowMessage(status.message(), MB_OK | MB_ICONERROR, kProgramName);
}

}  // namespace workbench
