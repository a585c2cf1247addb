// Writing a whole buffer to a descriptor: write(2) may take part of it, or
// be interrupted by a signal, and every byte must reach the file or fail.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <string_view>

// False with errno set when a write fails; true once every byte is written.
inline bool QZEscreveTudo(int fd, std::string_view texto) {
    size_t feito = 0;
    while (feito < texto.size()) {
        const ssize_t n = ::write(fd, texto.data() + feito, texto.size() - feito);
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        feito += static_cast<size_t>(n);
    }
    return true;
}
