#include "names.h"

#include <base/text.h>
#include <interchange/textencoding.h>
#include <quillon/fltrecordtype.h>

namespace interchange {

std::string nameInRecord(FileBytes record) {
    return textOf(fltIdOf(FltRecordView::at(record, 0)));
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
