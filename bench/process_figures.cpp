#include "process_figures.h"

#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

// The number behind a name in a file of "name: number" lines.
long field(const std::filesystem::path &file, const std::string &name)
{
    std::ifstream lines(file);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(name + ':'))
            return std::stol(line.substr(name.size() + 1));
    }
    return 0;
}

std::filesystem::path folder(pid_t pid) { return "/proc/" + std::to_string(pid); }

double mebibytes(pid_t pid, const std::string &name)
{
    return static_cast<double>(field(folder(pid) / "smaps_rollup", name)) / 1024;
}

} // namespace

double pssMebibytes(pid_t pid) { return mebibytes(pid, "Pss"); }

double ownMebibytes(pid_t pid) { return mebibytes(pid, "Private_Dirty"); }

double processorMilliseconds(pid_t pid)
{
    clockid_t clock{};
    timespec time{};
    if (clock_getcpuclockid(pid, &clock) != 0 || clock_gettime(clock, &time) != 0)
        return 0;
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

long waits(pid_t pid) { return field(folder(pid) / "status", "voluntary_ctxt_switches"); }
