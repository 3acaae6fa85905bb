// The log, while a test looks at what is written to it.
#pragma once

#include "temporaryfolder.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

/// Has the log of this process written to a folder of the test's own, as long as it lives.
class OwnLog {
public:
    OwnLog() {
        if (const char* const drive = std::getenv("SystemDrive")) before_ = drive;
        setDrive(folder_.path().string());
    }
    ~OwnLog() {
        setDrive(before_);
        std::remove(path().c_str());
    }
    OwnLog(const OwnLog&) = delete;
    OwnLog& operator=(const OwnLog&) = delete;

    const std::filesystem::path& folder() const { return folder_.path(); }
    /// The folder followed by "\Aviary.log", whatever a backslash means here.
    std::string path() const { return folder_.path().string() + "\\Aviary.log"; }
    std::string content() const {
        std::ifstream file(path());
        return {std::istreambuf_iterator<char>(file), {}};
    }
    /// What was written since the last call.
    std::string take() const {
        std::string lines = content();
        std::remove(path().c_str());
        return lines;
    }

    /// Without a value the variable goes.
    static void setDrive(const std::optional<std::string>& value) {
#ifdef _WIN32
        _putenv_s("SystemDrive", value ? value->c_str() : "");
#else
        value ? setenv("SystemDrive", value->c_str(), 1) : unsetenv("SystemDrive");
#endif
    }

private:
    const TemporaryFolder folder_{u8"tessera-log-"};
    std::optional<std::string> before_;
};
