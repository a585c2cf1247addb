// Data files carried inside the program (generated from messages/ and host/
// at build time by scripts/embute.cmake). UTF-8 text.
#pragma once

#include <string_view>

// messages/mensagens.txt: the message table of module 28.
std::string_view PXTextoMensagens();
// host/demo.jsonl: the demo plant, as JSON Lines records.
std::string_view PXTextoDemo();
