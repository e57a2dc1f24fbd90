// The command line, the abnormal end and the tar program on POSIX systems.

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <exception>

#include "platform/os/os.h"
#include "platform/os/posix_api.h"

namespace os {

using posix::native;
using posix::retried;

std::vector<std::string> commandLine(int count, char** words) {
    return {words, words + count};
}

void silenceAbnormalEnd() {
    std::set_terminate(std::abort);
    ::signal(SIGXFSZ, SIG_IGN);
}

int unpackTar(const std::string& programDirectory, const std::string& directory, const std::string& archive) {
    constexpr int cannotStart = 127;
    constexpr int endedBySignal = 128;
    std::string program = native(programDirectory) + "/tar.exe";
    std::string arguments[] = {program, "--force-local", "-C", native(directory), "-xvf", native(archive)};
    std::vector<char*> list;
    for (std::string& argument : arguments) list.push_back(argument.data());
    list.push_back(nullptr);

    // Whoever started this program may have left it to ignore this signal; then no child's status is kept.
    ::signal(SIGCHLD, SIG_DFL);
    posix_spawn_file_actions_t actions;
    if (::posix_spawn_file_actions_init(&actions) != 0) return cannotStart;
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    const int started = ::posix_spawn(&child, program.c_str(), &actions, nullptr, list.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    if (started != 0) return cannotStart;

    int result = 0;
    if (retried([&] { return ::waitpid(child, &result, 0); }) < 0) return cannotStart;
    return WIFSIGNALED(result) ? endedBySignal + WTERMSIG(result) : WEXITSTATUS(result);
}

}  // namespace os
