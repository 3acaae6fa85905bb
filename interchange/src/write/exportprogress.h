// How far an export is, for the host's report.
#pragma once

#include "../texts.h"
#include "plan.h"

#include <interchange/import.h>
#include <kiln/kiln.h>

namespace interchange {

/// Tells the report of one of the two halves of an export, node by node.
class ExportProgress {
public:
    enum class Half { collecting, writing };

    ExportProgress(const Plan& plan, ImpExpReport& report, Half half)
        : report_(report),
          count_(static_cast<double>(plan.nodes.size())),
          start_(half == Half::writing ? 0.5 : 0) {}

    /// The node of that index in the plan comes next. Throws `Cancelled`.
    void tell(std::uint32_t node) {
        constexpr std::uint32_t kNodesPerReport = 256;
        if (node % kNodesPerReport != 0) return;
        if (!report_.Progress(start_ + node / count_ / 2, text(TextId::kWritingFile).c_str()))
            throw Cancelled();
    }

private:
    ImpExpReport& report_;
    double count_;
    double start_;
};

}  // namespace interchange
