#include <fltkilnutil/actions.h>
#include <kiln/hosttexts.h>

namespace fltkilnutil {

namespace {

constexpr base::TextRow kNames[] = {
#define TEXT_ROW(name, id, chinese, english) {id, chinese, english},
#include <fltkilnutil/actions.inc>
#undef TEXT_ROW
};

}  // namespace

std::string nameOf(Action action) {
    return kiln::hostText(kNames, action);
}

}  // namespace fltkilnutil
