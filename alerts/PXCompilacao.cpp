#include "alerts/PXCompilacao.h"

// Kept alone in its file: only this file changes with every build.
const char* PXCarimboCompilacao() { return __DATE__ " " __TIME__; }
