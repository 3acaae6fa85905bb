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
    return base::tableText(kNames, static_cast<unsigned>(action),
                           static_cast<base::Language>(GetLanguage()));
}

}  // namespace fltkilnutil
