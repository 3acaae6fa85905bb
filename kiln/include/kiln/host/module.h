// Plug-in modules and the classes that they register.
#pragma once

#include <kiln/classdesc.h>
#include <kiln/host/status.h>
#include <kiln/platform.h>

#include <string>
#include <vector>

namespace kiln {

/// The four functions by which a plug-in module tells the host what it is.
struct ModuleExports {
    const char* (*libDescription)() = nullptr;  ///< `LibDescription`
    int (*libNumberClasses)() = nullptr;        ///< `LibNumberClasses`
    ClassDesc* (*libClassDesc)(int) = nullptr;  ///< `LibClassDesc`; null for a bad index
    DWORD (*libVersion)() = nullptr;            ///< `LibVersion`
};

/// A module that is in use.
struct ModuleInfo {
    std::string path;                 ///< the file; for one without a file, its name
    std::string description;          ///< from `LibDescription`
    std::vector<ClassDesc*> classes;  ///< the descriptors that it registered
};

/// What a folder scan met.
struct ModuleScan {
    int loaded = 0;
    std::vector<std::string> refusals;  ///< one sentence for each file that could not be used
};

/// Registers the classes of a module that is linked into this process. Refused, with nothing
/// registered, when an export is missing, the version is not `KILN_SDK_VERSION`, a descriptor is
/// null, or one of its classes is registered already.
KILNAPI Status registerModule(const std::string& name, const ModuleExports& exports);

/// Loads the module file at `path` (UTF-8) and registers its classes. A file that is loaded already
/// is a success. Only Windows has module files; elsewhere this is refused.
KILNAPI Status loadModule(const std::string& path);

/// Loads every *.dlu and *.dli file of `folder`, in the order of their names. A folder that is not
/// there is an empty one.
KILNAPI ModuleScan scanModules(const std::string& folder);

/// The modules in the order they were registered.
KILNAPI const std::vector<ModuleInfo>& modules();

/// Takes all classes back and unloads the files, last one first. No object made by a module may be
/// left: `Core::destroy` sees to that and calls this.
KILNAPI void unloadModules();

/// Every registered descriptor of that super class, in the order of registration.
KILNAPI std::vector<ClassDesc*> classesOf(SClass_ID superClass);

}  // namespace kiln
