#include <fltkilnutil/actions.h>

#include <base/texttable.h>
#include <kiln/language.h>

namespace fltkilnutil {

namespace {

constexpr base::TextRow kNames[] = {
#define TEXT_ROW(name, id, chinese, english) {id, chinese, english},
#include <fltkilnutil/actions.inc>
#undef TEXT_ROW
};

}  // namespace

std::string nameOf(Action action) {
    return base::filledText(kNames, static_cast<unsigned>(action), GetLanguage());
}

}  // namespace fltkilnutil
