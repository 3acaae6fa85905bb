// A .flt file for the rules.
#pragma once

#include <checks/source.h>

#include <memory>
#include <string>

namespace checks {

/// The nodes of a file, as far as it can be read: what is damaged ends it. Places are the offsets
/// of records.
class FileSource final : public Source {
public:
    /// `bytes` are those of the file at `path` (UTF-8), which says where other files are looked
    /// for; they stay the caller's and must outlive this.
    FileSource(std::span<const std::uint8_t> bytes, std::string path);
    ~FileSource() override;

    bool next(Node& node) override;
    std::size_t estimate() const override;
    std::string nameAt(std::uint64_t place) const override;
    std::vector<std::string> folders() const override;
    std::string fileOf(std::uint64_t place) const override;
    bool isFile() const override { return true; }
    std::uint64_t unusedVertices() const override;

private:
    class Walk;
    std::unique_ptr<Walk> walk_;
};

}  // namespace checks
