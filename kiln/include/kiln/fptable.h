// Published interfaces whose functions stand in a table beside what carries them out.
#pragma once

#include <kiln/fp.h>
#include <kiln/memory.h>

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <span>
#include <stdexcept>
#include <vector>

/// A published function and what carries it out. What that throws as a `std::runtime_error` is told
/// the caller as the reason of the failure.
struct FPTableRow {
    using Function = void (*)(const FPParams& params, FPValue& result);

    FPFunctionDesc described;
    Function function;

    constexpr FPTableRow(FunctionID id, const char* name, ParamType2 result, Function called,
                         std::initializer_list<FPParamDesc> params = {})
        : described(id, name, kNoDescription, result, 0, params), function(called) {}

private:
    static constexpr int kNoDescription = -1;
};

/// Whether the arguments (null for none) are of the parameters' types. The script engine sees to
/// that; plug-ins may call without it.
inline bool FPParamsFit(std::span<const FPParamDesc> params, const FPParams* given) {
    if (given == nullptr) return params.empty();
    return std::ranges::equal(params, *given, [](const FPParamDesc& param, const FPValue& value) {
        const bool isLeftOut = value.type == TYPE_VOID && (param.options & FP_OPTIONAL) != 0;
        return value.type == param.type || param.type == TYPE_VALUE || isLeftOut;
    });
}

/// A static interface without properties, of the functions of a table.
class FPTableInterface : public FPStaticInterface {
public:
    /// `rows` must outlive the interface.
    FPTableInterface(const Interface_ID& id, const char* name, unsigned flags,
                     std::span<const FPTableRow> rows)
        : FPStaticInterface(id, name, 0, nullptr, flags, DescribedIn(rows)), rows_(rows) {}

protected:
    FPStatus _dispatch_fn(FunctionID id, TimeValue, FPValue& result, FPParams* params) override {
        const auto called =
            std::ranges::find(rows_, id, [](const FPTableRow& row) { return row.described.id; });
        if (called == rows_.end()) return FPS_NO_SUCH_FUNCTION;
        if (!FPParamsFit(called->described.params(), params)) return FPS_FAIL;
        try {
            called->function(params != nullptr ? *params : FPParams(), result);
            return FPS_OK;
        } catch (const std::runtime_error& refusal) {
            result.SetOwnedString(KILN_strdup(refusal.what()));
            return FPS_FAIL;
        }
    }

private:
    static std::vector<FPFunctionDesc> DescribedIn(std::span<const FPTableRow> rows) {
        std::vector<FPFunctionDesc> all;
        for (const FPTableRow& row : rows) all.push_back(row.described);
        return all;
    }

    std::span<const FPTableRow> rows_;
};
