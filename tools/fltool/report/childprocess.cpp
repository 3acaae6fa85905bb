#include "childprocess.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <thread>
#endif

namespace fltool {

namespace fs = std::filesystem;

#ifdef _WIN32

fs::path ownFolder() {
    constexpr std::size_t kLongestPath = 32768;
    std::wstring path(kLongestPath, L'\0');
    path.resize(::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return fs::path(path).parent_path();
}

namespace {

/// Owns a handle of the system's.
class Handle {
public:
    explicit Handle(HANDLE handle) : handle_(handle) {}
    ~Handle() {
        if (isOpen()) ::CloseHandle(handle_);
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    HANDLE get() const noexcept { return handle_; }
    bool isOpen() const noexcept { return handle_ != nullptr && handle_ != INVALID_HANDLE_VALUE; }

private:
    HANDLE handle_;
};

}  // namespace

int runProgram(const fs::path& program, const std::vector<fs::path>& arguments,
               const fs::path& output, std::chrono::seconds most) {
    std::wstring line = L'"' + program.native() + L'"';
    for (const fs::path& argument : arguments) line += L" \"" + argument.native() + L'"';
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    const Handle file(::CreateFileW(output.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited,
                                    CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.isOpen()) return -1;
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = start.hStdError = file.get();
    PROCESS_INFORMATION made{};
    if (!::CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW,
                          nullptr, nullptr, &start, &made))
        return -1;
    const Handle process(made.hProcess), thread(made.hThread);
    const auto milliseconds = std::chrono::milliseconds(most).count();
    if (::WaitForSingleObject(process.get(), static_cast<DWORD>(milliseconds)) != WAIT_OBJECT_0) {
        ::TerminateProcess(process.get(), 1);
        ::WaitForSingleObject(process.get(), INFINITE);
        return -1;
    }
    DWORD code = 0;
    return ::GetExitCodeProcess(process.get(), &code) ? static_cast<int>(code) : -1;
}

#else

fs::path ownFolder() {
    std::error_code unknown;
    return fs::read_symlink("/proc/self/exe", unknown).parent_path();
}

int runProgram(const fs::path& program, const std::vector<fs::path>& arguments,
               const fs::path& output, std::chrono::seconds most) {
    std::vector<std::string> words{program.native()};
    for (const fs::path& argument : arguments) words.push_back(argument.native());
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    constexpr mode_t kForOwner = 0600;
    posix_spawn_file_actions_t actions;
    if (::posix_spawn_file_actions_init(&actions) != 0) return -1;
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(),
                                       O_WRONLY | O_CREAT | O_TRUNC, kForOwner);
    ::posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    pid_t child = 0;
    const int refused =
        ::posix_spawn(&child, program.c_str(), &actions, nullptr, pointers.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    if (refused != 0) return -1;
    const auto end = std::chrono::steady_clock::now() + most;
    int status = 0;
    for (;;) {
        const pid_t ended = ::waitpid(child, &status, WNOHANG);
        if (ended == child) return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        if (ended < 0) return -1;
        if (std::chrono::steady_clock::now() > end) {
            ::kill(child, SIGKILL);
            ::waitpid(child, &status, 0);
            return -1;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

#endif

}  // namespace fltool
