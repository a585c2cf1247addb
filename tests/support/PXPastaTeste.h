// The files of a folder a test looks into, and its removal.
#pragma once

#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

// Every name in `pasta` but "." and "..", sorted.
inline std::vector<std::string> PXArquivosDaPasta(const std::string& pasta) {
    std::vector<std::string> nomes;
    if (DIR* d = opendir(pasta.c_str())) {
        while (dirent* e = readdir(d))
            if (std::string(e->d_name) != "." && std::string(e->d_name) != "..") nomes.push_back(e->d_name);
        closedir(d);
    }
    std::sort(nomes.begin(), nomes.end());
    return nomes;
}

// Removes `pasta` with the files in it.
inline void PXApagaPasta(const std::string& pasta) {
    for (const auto& n : PXArquivosDaPasta(pasta)) std::remove((pasta + "/" + n).c_str());
    rmdir(pasta.c_str());
}
