#pragma once

extern "C" {
// Closes a descriptor of a shared buffer. 0, or a negative error.
int ion_close(int fd);
}
