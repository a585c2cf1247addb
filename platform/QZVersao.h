#pragma once
// Version of the running library, reported in traces as the host's version.
#define QZ_VERSAO_PXLREG "0.1.0"
