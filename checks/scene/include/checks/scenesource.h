// The host's scene for the rules.
#pragma once

#include <checks/source.h>

#include <memory>

class Interface;

namespace checks {

/// The OpenFlight nodes of the scene: those with OpenFlight data, and those that are written as
/// such because of what they show. Others are passed over, and their children taken for their
/// parent's. Places are the handles of the nodes.
class SceneSource final : public Source {
public:
    /// The scene must stay as it is while the nodes are walked.
    explicit SceneSource(Interface& host);
    ~SceneSource() override;

    bool next(Node& node) override;
    std::size_t estimate() const override;
    std::string nameAt(std::uint64_t place) const override;
    std::vector<std::string> folders() const override;
    std::string fileOf(std::uint64_t place) const override;

private:
    class Walk;
    std::unique_ptr<Walk> walk_;
};

}  // namespace checks
