#include "process_figures.h"

#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

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

std::map<std::string, long> waits(pid_t pid)
{
    std::map<std::string, long> counts;
    std::error_code gone;
    for (const auto &thread : std::filesystem::directory_iterator(folder(pid) / "task", gone))
        counts[thread.path().filename()]
            = field(thread.path() / "status", "voluntary_ctxt_switches");
    return counts;
}

long waitsSince(const std::map<std::string, long> &before, pid_t pid)
{
    long sum = 0;
    for (const auto &[thread, count] : waits(pid)) {
        const auto earlier = before.find(thread);
        sum += count - (earlier == before.end() ? 0 : earlier->second);
    }
    return sum;
}

int threads(pid_t pid) { return static_cast<int>(field(folder(pid) / "status", "Threads")); }

std::map<std::string, int> openFiles(pid_t pid)
{
    std::map<std::string, int> kinds;
    std::error_code gone;
    for (const auto &link : std::filesystem::directory_iterator(folder(pid) / "fd", gone)) {
        const std::string target = std::filesystem::read_symlink(link.path(), gone).string();
        if (target.starts_with("anon_inode"))
            ++kinds[target];
        else
            ++kinds[target.starts_with('/') ? "file" : target.substr(0, target.find(':'))];
    }
    return kinds;
}
