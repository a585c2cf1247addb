// pxlreg: the command-line host of the maintenance rules (see README.md).
#include <iostream>

#include "host/PXComandos.h"

int main(int argc, char** argv) {
    std::vector<std::string> argumentos(argv, argv + argc);
    return PXLinhaComando(argumentos, std::cin, std::cout, std::cerr);
}
