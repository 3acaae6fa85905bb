#include <diagnostics/assertion.h>
#include <quillon/fltcomment.h>
#include <quillon/fltfield.h>
#include <quillon/flttoken.h>

#include <cstring>

void FltComment::writeToken(FltToken& token, std::uint32_t) const {
    token.begin(kOpcode);
    // Up to the first terminator: padding that was read along with the text is not text.
    token.writeBytes(static_cast<std::uint32_t>(std::strlen(text()) + 1), text());
}

void FltComment::readToken(FltToken& token, std::uint32_t) {
    diagnostics::check(token.opcode() == kOpcode, "fltcomment", 66);
    token.rewind();
    const std::uint32_t length = token.remaining();
    setSize(static_cast<std::int32_t>(length) + 1);
    token.readBytes(length, text());
}

void FltComment::visitFields(FltFieldVisitor& visitor) const {
    visitor.text("text", text());
}
