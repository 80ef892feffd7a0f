#include "tools/plot/runGnuplot.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "tools/output/Output.h"

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
    char withoutUserSettings[] = "-d";
    char* const arguments[] = {name, withoutUserSettings, nullptr};
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

// gnuplot does not tell when its output could not be written.
bool copyTo(const std::string& path, int picture) {
    Output output(path);
    constexpr size_t kBlock = 65536;
    off_t at = 0;
    ssize_t length = 0;
    do {
        char* const to = output.reserve(kBlock);
        length = pread(picture, to, kBlock, at);
        output.commit(to + std::max<ssize_t>(length, 0));
        at += length;
    } while (length > 0);
    return output.flush() && length == 0;
}

}  // namespace

bool runGnuplot(const std::string& script, const std::string& path) {
    const int picture = memfd_create("picture", MFD_CLOEXEC);
    if (picture < 0) {
        return complain(path, "memory for the picture", errno);
    }
    const bool isGiven = runWithOutput(script, path, picture) && copyTo(path, picture);
    close(picture);
    return isGiven;
}

}  // namespace vdrdump
