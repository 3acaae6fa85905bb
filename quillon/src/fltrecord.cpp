#include <quillon/fltfilereader.h>
#include <quillon/fltrecord.h>
#include <quillon/fltstream.h>

void FltRecord::write(FltStream& stream) {
    writeToken(stream.token(), stream.revision());
    stream.writeToken(stream.token());
}

void FltRecord::read(FltStream& stream) {
    readToken(stream.token(), stream.revision());
}

void FltRecord::readBytes(std::span<const std::uint8_t> bytes, std::uint32_t revision) {
    FltToken token;
    token.attach(bytes.data(), static_cast<std::int32_t>(bytes.size()));
    readToken(token, revision);
}

void FltRecord::readFromFile(FltFileToken* token) {
    if (token == nullptr || token->header == nullptr) return;
    readToken(*token, token->header->revision());
}

std::uint16_t fltWrittenLength(const FltRecord& record, std::uint32_t revision) {
    FltToken token;
    record.writeToken(token, revision);
    token.finish();
    return token.length();
}
