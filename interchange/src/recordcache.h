// Record objects that serve many nodes.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

class FltRecord;

namespace interchange {

/// Record objects by kind, each made once and used for many nodes.
class RecordCache {
public:
    using Create = std::unique_ptr<FltRecord>(std::uint16_t opcode);

    /// Of the classes that `create` makes: those of scenes, or those of files.
    explicit RecordCache(Create& create) : create_(create) {}

    /// The record object for `opcode`, as it was left; null for an opcode without a class.
    FltRecord* of(std::uint16_t opcode);
    /// The same with the defaults of the class.
    FltRecord* fresh(std::uint16_t opcode);

private:
    Create& create_;
    std::array<std::unique_ptr<FltRecord>, 128> records_;
};

}  // namespace interchange
