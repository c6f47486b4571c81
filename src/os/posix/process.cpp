#include "os/api/process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <strings.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "os/api/error.h"
#include "os/api/path_map.h"
#include "os/api/sync.h"
#include "os/posix/command_line.h"
#include "os/posix/environment.h"
#include "os/posix/handle.h"
#include "os/posix/module_names.h"

extern char** environ;

namespace nvk::os {

namespace {

using posix::SetErrorCode;

// Children whose handles were all closed before they ended; they are reaped
// by pid (never with a wildcard wait, which would take the application's own
// children) whenever another process is started.
struct Orphans {
    std::mutex lock;
    std::vector<pid_t> pids;
};

Orphans& TheOrphans() {
    static auto* orphans = new Orphans;
    return *orphans;
}

void ReapOrphans() {
    Orphans& orphans = TheOrphans();
    std::lock_guard guard(orphans.lock);
    std::erase_if(orphans.pids, [](pid_t pid) {
        int status = 0;
        pid_t done = waitpid(pid, &status, WNOHANG);
        return done == pid || (done < 0 && errno == ECHILD);
    });
}

class ProcessState {
public:
    ProcessState(pid_t pid, int pidfd) : pid_(pid), pidfd_(pidfd) {}
    ~ProcessState() {
        if (!Reap(false)) {
            Orphans& orphans = TheOrphans();
            std::lock_guard guard(orphans.lock);
            orphans.pids.push_back(pid_);
        }
        if (pidfd_ >= 0) {
            close(pidfd_);
        }
    }
    ProcessState(const ProcessState&) = delete;
    ProcessState& operator=(const ProcessState&) = delete;

    pid_t pid() const { return pid_; }

    // Collects the exit status if the process has ended, waiting for it when
    // `block`; true once it has ended.
    bool Reap(bool block) {
        std::lock_guard guard(lock_);
        if (exited_) {
            return true;
        }
        int status = 0;
        pid_t done;
        do {
            done = waitpid(pid_, &status, block ? 0 : WNOHANG);
        } while (done < 0 && errno == EINTR);
        if (done == 0) {
            return false;
        }
        exited_ = true;
        if (done < 0) {
            exitCode_ = 0;  // reaped elsewhere (SIGCHLD ignored): the status is lost
        } else if (terminated_) {
            exitCode_ = terminateCode_;
        } else if (WIFEXITED(status)) {
            exitCode_ = static_cast<DWORD>(WEXITSTATUS(status));
        } else {
            exitCode_ = 128 + static_cast<DWORD>(WTERMSIG(status));
        }
        return true;
    }

    DWORD ExitCode() {
        std::lock_guard guard(lock_);
        return exited_ ? exitCode_ : STILL_ACTIVE;
    }

    bool Terminate(UINT code) {
        {
            std::lock_guard guard(lock_);
            if (exited_) {
                return false;
            }
            terminated_ = true;
            terminateCode_ = code;
            kill(pid_, SIGKILL);
        }
        Reap(true);
        return true;
    }

    DWORD Wait(DWORD milliseconds) {
        auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
        while (!Reap(false)) {
            int timeout = -1;
            if (milliseconds != INFINITE) {
                auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                    deadline - std::chrono::steady_clock::now());
                if (left.count() <= 0) {
                    return WAIT_TIMEOUT;
                }
                timeout = static_cast<int>(std::min<long long>(left.count(), 1 << 30));
            }
            if (pidfd_ >= 0) {
                pollfd ready = {pidfd_, POLLIN, 0};
                poll(&ready, 1, timeout);
            } else {
                // Kernels without process descriptors: look again shortly.
                int pause = timeout < 0 ? 10 : std::min(timeout, 10);
                std::this_thread::sleep_for(std::chrono::milliseconds(pause));
            }
        }
        return WAIT_OBJECT_0;
    }

private:
    std::mutex lock_;
    pid_t pid_;
    int pidfd_;
    bool exited_ = false;
    bool terminated_ = false;
    UINT terminateCode_ = 0;
    DWORD exitCode_ = STILL_ACTIVE;
};

// Both handles of a process (process and thread) stand for the one state.
class ProcessHandle final : public posix::KernelObject {
public:
    explicit ProcessHandle(std::shared_ptr<ProcessState> state) : state_(std::move(state)) {}
    DWORD Wait(DWORD milliseconds) override { return state_->Wait(milliseconds); }
    ProcessState& state() { return *state_; }

private:
    std::shared_ptr<ProcessState> state_;
};

ProcessState* StateOf(HANDLE handle) {
    auto* process = posix::HandleAs<ProcessHandle>(handle);
    if (process == nullptr) {
        SetErrorCode(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    return &process->state();
}

std::string Folder(const std::string& path) {
    std::size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

bool IsProgram(const std::string& path) {
    struct stat info;
    return stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode) &&
           access(path.c_str(), X_OK) == 0;
}

// The names a program may have here: as written, and without ".exe".
std::vector<std::string> ProgramNames(const std::string& name) {
    std::vector<std::string> names = {name};
    if (name.size() > 4 && strcasecmp(name.c_str() + name.size() - 4, ".exe") == 0) {
        names.push_back(name.substr(0, name.size() - 4));
    }
    return names;
}

// The native file of a program, or empty with the error set.
std::string FindProgram(const std::string& program, bool search) {
    std::vector<std::string> folders;
    std::string name = program;
    if (program.find_first_of("\\/:") != std::string::npos) {
        std::string native = ToNativePath(program.c_str());
        if (native.empty()) {
            SetErrorCode(ERROR_PATH_NOT_FOUND);
            return {};
        }
        folders.push_back(Folder(native));
        name = native.substr(folders.back().size());
        struct stat info;
        if (stat(folders.back().c_str(), &info) != 0) {
            SetErrorCode(ERROR_PATH_NOT_FOUND);
            return {};
        }
    } else {
        // The application's folder, then PATH. Windows looks in the current
        // folder second; here that folder may be any user's (a shared folder
        // the application was started from), where a planted program would
        // run instead of the system's, so neither it nor PATH's empty or
        // relative entries are searched: ".\\prog" names it when meant.
        folders.push_back(Folder(posix::ExecutablePath()));
        if (search) {
            const std::string path = posix::EnvironmentValue("PATH");
            for (std::string_view rest(path); !rest.empty();) {
                std::size_t colon = rest.find(':');
                std::string folder(rest.substr(0, colon));
                if (folder.starts_with('/')) {
                    folders.push_back(folder + "/");
                }
                rest =
                    colon == std::string_view::npos ? std::string_view{} : rest.substr(colon + 1);
            }
        }
    }
    for (const std::string& folder : folders) {
        for (const std::string& candidate : ProgramNames(name)) {
            if (IsProgram(folder + candidate)) {
                return folder + candidate;
            }
        }
    }
    SetErrorCode(ERROR_FILE_NOT_FOUND);
    return {};
}

// The strings of a block "A=1\0B=2\0\0".
std::vector<std::string> EnvironmentBlock(const char* block) {
    std::vector<std::string> entries;
    for (const char* entry = block; *entry != '\0'; entry += std::strlen(entry) + 1) {
        entries.emplace_back(entry);
    }
    return entries;
}

std::vector<char*> Pointers(std::vector<std::string>& strings) {
    std::vector<char*> pointers;
    for (std::string& s : strings) {
        pointers.push_back(s.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

BOOL CreateProcessA(LPCSTR applicationName, LPSTR commandLine,
                    LPSECURITY_ATTRIBUTES /*processAttributes*/,
                    LPSECURITY_ATTRIBUTES /*threadAttributes*/, BOOL inheritHandles,
                    DWORD /*creationFlags*/, LPVOID environment, LPCSTR currentDirectory,
                    LPSTARTUPINFOA startupInfo, LPPROCESS_INFORMATION processInformation) {
    ReapOrphans();
    // Windows reads the start-up information whatever the flags: a caller that
    // leaves it out fails here as it would fail there.
    if (startupInfo == nullptr || processInformation == nullptr ||
        (applicationName == nullptr && commandLine == nullptr)) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    std::vector<std::string> arguments =
        posix::SplitCommandLine(commandLine != nullptr ? commandLine : applicationName);
    if (arguments.empty() && applicationName != nullptr) {
        arguments.push_back(applicationName);
    }
    if (arguments.empty()) {
        SetErrorCode(ERROR_FILE_NOT_FOUND);
        return FALSE;
    }
    // A named application is taken as given; a program from the command line
    // is searched for.
    std::string program = applicationName != nullptr ? FindProgram(applicationName, false)
                                                     : FindProgram(arguments[0], true);
    if (program.empty()) {
        return FALSE;
    }
    std::vector<std::string> variables;
    if (environment != nullptr) {
        variables = EnvironmentBlock(static_cast<const char*>(environment));
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    // Nothing but the standard streams passes to the child unless asked, as
    // on Windows, whatever the application left open without close-on-exec.
    if (!inheritHandles) {
        posix_spawn_file_actions_addclosefrom_np(&actions, 3);
    }
    if (currentDirectory != nullptr) {
        std::string folder = ToNativePath(currentDirectory);
        struct stat info;
        if (folder.empty() || stat(folder.c_str(), &info) != 0 || !S_ISDIR(info.st_mode)) {
            posix_spawn_file_actions_destroy(&actions);
            SetErrorCode(ERROR_PATH_NOT_FOUND);
            return FALSE;
        }
        posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
    }
    // The child starts with no blocked signals and default dispositions,
    // whatever the application did with its own.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes, &signals);
    sigaddset(&signals, SIGPIPE);
    sigaddset(&signals, SIGCHLD);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    posix_spawnattr_setsigdefault(&attributes, &signals);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

    std::vector<char*> argv = Pointers(arguments);
    std::vector<char*> envp = Pointers(variables);
    pid_t pid = 0;
    int error = posix_spawn(&pid, program.c_str(), &actions, &attributes, argv.data(),
                            environment != nullptr ? envp.data() : environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        SetErrorCode(error == ENOEXEC ? ERROR_BAD_EXE_FORMAT : posix::ErrorFromErrno(error));
        return FALSE;
    }
    int pidfd = static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
    if (pidfd >= 0) {
        fcntl(pidfd, F_SETFD, FD_CLOEXEC);
    }
    auto state = std::make_shared<ProcessState>(pid, pidfd);
    processInformation->hProcess = posix::RegisterHandle(new ProcessHandle(state));
    processInformation->hThread = posix::RegisterHandle(new ProcessHandle(state));
    processInformation->dwProcessId = static_cast<DWORD>(pid);
    processInformation->dwThreadId = static_cast<DWORD>(pid);
    SetErrorCode(ERROR_SUCCESS);
    return TRUE;
}

BOOL GetExitCodeProcess(HANDLE process, LPDWORD exitCode) {
    ProcessState* state = StateOf(process);
    if (state == nullptr || exitCode == nullptr) {
        if (state != nullptr) {
            SetErrorCode(ERROR_INVALID_PARAMETER);
        }
        return FALSE;
    }
    state->Reap(false);
    *exitCode = state->ExitCode();
    return TRUE;
}

BOOL TerminateProcess(HANDLE process, UINT exitCode) {
    ProcessState* state = StateOf(process);
    if (state == nullptr) {
        return FALSE;
    }
    if (!state->Terminate(exitCode)) {
        SetErrorCode(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    return TRUE;
}

UINT WinExec(LPCSTR commandLine, UINT /*showCommand*/) {
    if (commandLine == nullptr) {
        return 0;
    }
    std::string line(commandLine);
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION information = {};
    if (!CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                        &startup, &information)) {
        DWORD error = GetLastError();
        if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) {
            return error;
        }
        return error == ERROR_BAD_EXE_FORMAT ? ERROR_BAD_FORMAT : 0;
    }
    CloseHandle(information.hThread);
    CloseHandle(information.hProcess);
    return 33;
}

}  // namespace nvk::os
