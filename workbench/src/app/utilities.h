// The utilities of the modules: their buttons in the command panel, and their about boxes.
#pragma once

#include "../ui/commandpanel.h"

#include <kiln/host/host.h>

#include <string>
#include <vector>

namespace workbench {

class Utilities {
public:
    /// `owner` owns message boxes.
    Utilities(kiln::Core& core, CommandPanel& panel, framework::CWnd& owner)
        : core_(core), panel_(panel), owner_(owner) {}

    /// Lists those of the modules that are loaded now.
    void list();
    /// The one with this class name, or null.
    ClassDesc* named(const std::string& name) const;
    /// Opens the utility, or tells the user why it does not open.
    void open(ClassDesc* utility);
    /// The host has opened a utility, or closed it (null).
    void showOpen(ClassDesc* utility);

    /// Those that have an about box, in the order of the list.
    const std::vector<ClassDesc2*>& withAbout() const { return withAbout_; }

private:
    /// Opens the utility at this position, or closes it when it is open.
    void toggle(std::size_t position);

    kiln::Core& core_;
    CommandPanel& panel_;
    framework::CWnd& owner_;
    std::vector<ClassDesc*> all_;
    std::vector<ClassDesc2*> withAbout_;
};

}  // namespace workbench
