#include "names.h"

#include <base/text.h>
#include <interchange/textencoding.h>
#include <quillon/fltopcode.h>

#include <algorithm>

namespace interchange {

namespace {

constexpr std::size_t kIdOffset = 4;
constexpr std::size_t kIdLength = 8;

bool hasId(std::uint16_t opcode) {
    return opcode != kFltExternalRef && opcode != kFltInstanceRef && opcode != kFltInstanceDef;
}

}  // namespace

std::string nameInRecord(FileBytes record) {
    if (!hasId(uint16At(record, 0)) || record.size() < kIdOffset + 1) return {};
    return textOf(record.subspan(kIdOffset, std::min(kIdLength, record.size() - kIdOffset)));
}

bool isNoDatabaseName(const std::string& name) {
    return name.empty() || name == "db";
}

void CommentText::add(FileBytes body) {
    if (text_.size() > kLongestComment) return;
    if (any_) text_ += '\n';
    any_ = true;
    text_ += textOf(body);
}

const std::string& CommentText::result() {
    text_.resize(base::clipUtf8(text_, kLongestComment).size());
    return text_;
}

}  // namespace interchange
