#pragma once

namespace demo {

// Standard output, as far as it is a terminal.
struct Terminal {
    static bool isTerminal();
    // Columns; 80 where standard output is none.
    static int width();
};

}  // namespace demo
