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

#include "tools/output/printablePath.h"

namespace vdrdump {
namespace {

bool complain(const std::string& name, const char* expected, int error) {
    std::fprintf(stderr, "vdrdump: %s: expected %s: %s\n", printablePath(name).c_str(), expected,
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

// 0, or an errno value. `input` is what the child reads, `output` and `messages` what it writes.
// In a group of its own it hears nothing of the terminal's signals, and it gets no signal that
// this program ignores as one to ignore. When this program ends, so does its input.
int spawn(int input, int output, int messages, pid_t& child) {
    char name[] = "gnuplot";
    char withoutUserSettings[] = "-d";
    char* const arguments[] = {name, withoutUserSettings, nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, messages, STDERR_FILENO);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF);
    posix_spawnattr_setpgroup(&attributes, 0);
    sigset_t defaults;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    const int error = posix_spawnp(&child, name, &actions, &attributes, arguments, environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return error;
}

// The first line of what gnuplot said that names a fault; it begins with where in the script.
std::string faultIn(int messages) {
    std::string text(4096, '\0');
    const ssize_t length = pread(messages, text.data(), text.size(), 0);
    text.resize(static_cast<size_t>(std::max<ssize_t>(length, 0)));
    const size_t line = text.find("line ");
    text = printablePath(text.substr(line == std::string::npos ? 0 : line));
    return text.substr(0, text.find("\\x0a"));
}

bool runWithOutput(const std::string& script, const std::string& name, int output, int messages) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return complain(name, "a pipe to gnuplot", errno);
    }
    pid_t child = 0;
    const int error = spawn(ends[0], output, messages, child);
    close(ends[0]);
    if (error != 0) {
        close(ends[1]);
        return complain(name, "to run gnuplot, which draws the picture (package gnuplot-nox)",
                        error);
    }
    writeAll(ends[1], script);
    close(ends[1]);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        std::fprintf(stderr, "vdrdump: %s: expected a picture from gnuplot, it failed: %s\n",
                     printablePath(name).c_str(), faultIn(messages).c_str());
        return false;
    }
    return true;
}

std::string contentsOf(int file) {
    const off_t size = lseek(file, 0, SEEK_END);
    std::string contents(static_cast<size_t>(std::max<off_t>(size, 0)), '\0');
    const ssize_t length = pread(file, contents.data(), contents.size(), 0);
    contents.resize(static_cast<size_t>(std::max<ssize_t>(length, 0)));
    return contents;
}

}  // namespace

// What it draws goes through memory: it does not tell when its output could not be written.
std::optional<std::string> runGnuplot(const std::string& script, const std::string& name) {
    const int picture = memfd_create("picture", MFD_CLOEXEC);
    const int messages = memfd_create("messages", MFD_CLOEXEC);
    const bool isDrawn = picture < 0 || messages < 0
                                 ? complain(name, "memory for the picture", errno)
                                 : runWithOutput(script, name, picture, messages);
    std::optional<std::string> bytes;
    if (isDrawn) {
        bytes = contentsOf(picture);
    }
    close(messages);
    close(picture);
    return bytes;
}

}  // namespace vdrdump
