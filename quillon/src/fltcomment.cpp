#include <diagnostics/assertion.h>
#include <quillon/fltcomment.h>
#include <quillon/fltfield.h>
#include <quillon/flttoken.h>

#include <cstring>

void FltComment::writeToken(FltToken& token, std::uint32_t) const {
    // Up to the first terminator: padding that was read along with the text is not text.
    const std::size_t size = std::strlen(text()) + 1;
    diagnostics::check(size <= 0xFFFF, "flttoken", 133);
    std::memcpy(token.begin(kOpcode, static_cast<std::uint32_t>(size)), text(), size);
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
