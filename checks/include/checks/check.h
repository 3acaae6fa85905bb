// Runs the rules over a scene or a file.
#pragma once

#include <checks/knownreferences.h>
#include <checks/report.h>
#include <checks/source.h>

#include <chrono>
#include <memory>

namespace checks {

/// A check, which can be done piece by piece so that a window stays alive meanwhile. What is
/// checked must stay as it is until it is done, or the check given up by deleting it.
class Check {
public:
    /// `source`, `target` and `known` must outlive the check. What the check reads of further files
    /// stays in `known` for the next one, where there is such.
    Check(Source& source, const Target& target, KnownReferences* known = nullptr);
    ~Check();
    Check(const Check&) = delete;
    Check& operator=(const Check&) = delete;

    /// Works for about `slice`; true when all is done, then and ever after. Throws
    /// `std::bad_alloc`; the check must be given up then.
    bool advance(std::chrono::milliseconds slice);
    /// Works to the end.
    void finish();
    /// How much is done, from 0 to 1.
    double progress() const noexcept;
    /// What was found, complete when the check is done.
    const Report& report() const noexcept;

private:
    class Work;
    std::unique_ptr<Work> work_;
};

}  // namespace checks
