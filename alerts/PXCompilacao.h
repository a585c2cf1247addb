#pragma once
// Build date and time of the library, as text ("Mar 10 2026 09:30:00").
const char* PXCarimboCompilacao();
