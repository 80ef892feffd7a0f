#include "demo/Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace demo {

bool Terminal::isTerminal() {
    return isatty(STDOUT_FILENO) == 1;
}

int Terminal::width() {
    winsize size{};
    const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0;
    return known ? size.ws_col : 80;
}

}  // namespace demo
