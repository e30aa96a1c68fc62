#pragma once
// The process's resident size, read from /proc without Qt: the start-up probe and the hook
// preloaded into qpwgraph report it alike.

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace orvan::bench {

/// VmRSS of this process in kilobytes; -1 when it cannot be read.
inline long residentKilobytes()
{
    FILE* status = std::fopen("/proc/self/status", "r");
    if (!status)
        return -1;
    char line[256];
    long kb = -1;
    while (std::fgets(line, sizeof line, status)) {
        if (std::strncmp(line, "VmRSS:", 6) == 0)
            kb = std::atol(line + 6);
    }
    std::fclose(status);
    return kb;
}

} // namespace orvan::bench
