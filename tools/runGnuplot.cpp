#include "tools/runGnuplot.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

namespace vdrdump {
namespace {

bool complain(const std::string& path, const char* expected, int error) {
    std::fprintf(stderr, "vdrdump: %s: expected %s: %s\n", path.c_str(), expected,
                 std::strerror(error));
    return false;
}

// A child that ended early closes the pipe: that is told from its exit status, not by a signal.
void writeAll(int to, const std::string& text) {
    const auto previous = std::signal(SIGPIPE, SIG_IGN);
    size_t written = 0;
    while (written < text.size()) {
        const ssize_t length = write(to, text.data() + written, text.size() - written);
        if (length < 0 && errno != EINTR) {
            break;
        }
        written += length > 0 ? static_cast<size_t>(length) : 0;
    }
    std::signal(SIGPIPE, previous);
}

// 0, or an errno value. `input` is what the child reads, `output` what it writes.
int spawn(int input, int output, pid_t& child) {
    char name[] = "gnuplot";
    char* const arguments[] = {name, nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    const int error = posix_spawnp(&child, name, &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    return error;
}

bool runWithOutput(const std::string& script, const std::string& path, int output) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return complain(path, "a pipe to gnuplot", errno);
    }
    pid_t child = 0;
    const int error = spawn(ends[0], output, child);
    close(ends[0]);
    if (error != 0) {
        close(ends[1]);
        return complain(path, "to run gnuplot, which draws the picture (package gnuplot-nox)",
                        error);
    }
    writeAll(ends[1], script);
    close(ends[1]);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        std::fprintf(stderr, "vdrdump: %s: expected a picture from gnuplot, it failed\n",
                     path.c_str());
        return false;
    }
    return true;
}

}  // namespace

bool runGnuplot(const std::string& script, const std::string& path) {
    const int output = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (output < 0) {
        return complain(path, "to write it", errno);
    }
    const bool isDrawn = runWithOutput(script, path, output);
    close(output);
    if (!isDrawn) {
        unlink(path.c_str());
    }
    return isDrawn;
}

}  // namespace vdrdump
