// Calls of published functions by name, as the script engine makes them.
#pragma once

#include <kiln/fp.h>
#include <kiln/host/status.h>
#include <kiln/timevalue.h>

#include <optional>
#include <string>
#include <vector>

namespace kiln {

/// One argument as written in a script: by position, or by keyword.
struct ScriptArgument {
    std::string keyword;  ///< empty for a positional argument
    FPValue value;
};

/// The core interfaces that are published now, in the order they were.
KILNAPI std::vector<FPInterfaceDesc*> publishedInterfaces();
/// One of them by name without regard to case; an exact match wins. Null for none.
KILNAPI FPInterfaceDesc* findInterface(const std::string& name);

/// A function that scripts call by its bare name.
struct PublishedVerb {
    FPInterfaceDesc* target = nullptr;
    const FPFunctionDesc* function = nullptr;
};

/// Looks in the interfaces with the flag `FP_VERBS`, in the order they were published, without
/// regard to case.
KILNAPI std::optional<PublishedVerb> findVerb(const std::string& name);

/// Calls `function` of `target` at the host's time. Arguments by position come first; each
/// parameter gets exactly one argument, or none if it is optional; keywords match exactly. Values
/// are converted where nothing is lost: integer to float, whole float to integer, boolean to
/// integer and back, void to a null node, map or string; a double is rounded to a float. A failure
/// names the function and the argument, and what was expected; the function is not called then. One
/// that the function has a reason for is that reason. `result` is void when the function returns
/// nothing.
KILNAPI Status callFunction(FPInterfaceDesc& target, const std::string& function,
                            const std::vector<ScriptArgument>& arguments, FPValue& result);

/// Reads a property, or sets it; setting a read-only one fails.
KILNAPI Status getProperty(FPInterfaceDesc& target, const std::string& property, FPValue& result);
KILNAPI Status setProperty(FPInterfaceDesc& target, const std::string& property,
                           const FPValue& value);

/// "Aviary.PutComment Node:<node> String:<string> -> boolean": one line of help.
KILNAPI std::string signatureOf(const FPInterfaceDesc& target, const FPFunctionDesc& function);

/// A value as a script would print it ("true", "1.5", "\"text\"", "$name", "ok" for void).
KILNAPI std::string printed(const FPValue& value);

}  // namespace kiln
