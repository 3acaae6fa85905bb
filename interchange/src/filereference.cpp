#include <interchange/filereference.h>

namespace interchange {

FileReference parsedReference(std::string_view name) {
    const std::size_t open = name.find('<');
    if (open == std::string_view::npos) return {std::string(name), {}};
    std::string_view part = name.substr(open + 1);
    part = part.substr(0, part.find('>'));
    name = name.substr(0, open);
    while (name.ends_with(' ')) name.remove_suffix(1);
    return {std::string(name), std::string(part)};
}

}  // namespace interchange
