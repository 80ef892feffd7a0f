#include "platform/Ion.h"

#include <unistd.h>

extern "C" int ion_close(int fd) {
    return close(fd);
}
