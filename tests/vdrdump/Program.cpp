#include "tests/vdrdump/Program.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "tests/vdrdump/Dumps.h"

namespace vdrdump::test {

Program run(const std::vector<std::string>& arguments, const std::string& input,
            const std::string& path) {
    const TempFolder folder;
    const std::string in = folder.file("in", input);
    const std::string out = folder.file("out", "");
    const std::string err = folder.file("err", "");
    std::vector<char*> pointers;
    std::string program = VDRDUMP_PROGRAM;
    std::vector<std::string> copies = arguments;
    pointers.push_back(program.data());
    for (std::string& each : copies) {
        pointers.push_back(each.data());
    }
    pointers.push_back(nullptr);

    const pid_t child = fork();
    if (child == 0) {
        dup2(open(in.c_str(), O_RDONLY), STDIN_FILENO);
        dup2(open(out.c_str(), O_WRONLY), STDOUT_FILENO);
        dup2(open(err.c_str(), O_WRONLY), STDERR_FILENO);
        if (!path.empty()) {
            setenv("PATH", path.c_str(), 1);
        }
        execv(program.c_str(), pointers.data());
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), contentsOf(out),
            contentsOf(err)};
}

}  // namespace vdrdump::test
