#include "nodenames.h"

#include "../names.h"

#include <fltkilnutil/nodekind.h>
#include <interchange/textencoding.h>
#include <quillon/fltopcode.h>

namespace interchange {

NodeNames::Name NodeNames::nameOf(const FileNode& node) {
    if (node.longId != 0) {
        std::string name = textOf(file_.recordAt(node.longId).body());
        if (!name.empty()) return {std::move(name)};
    }
    std::string name = nameInRecord(file_.recordAt(node.record).bytes());
    if (node.kind == kFltHeader) {
        if (isNoDatabaseName(name) && !databaseName_.empty()) return {databaseName_, true};
        return {std::move(name)};
    }
    if (name.empty()) return {makeUpName(node.kind), true};
    return {std::move(name)};
}

std::string NodeNames::makeUpName(std::uint16_t kind) {
    if (!maker_) {
        maker_.reset(host_.NewNameMaker(true));
        // A number always follows, as in the nodes that scripts create.
        for (const auto& prefix : kFltNamePrefixes) maker_->AddName(prefix);
    }
    CStr name(fltNamePrefix(static_cast<FltNodeKind>(kind)));
    maker_->MakeUniqueName(name);
    return name.str();
}

}  // namespace interchange
