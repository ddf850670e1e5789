// Runs a program and prints the peak of its resident memory in KiB: peak_memory PROGRAM ARGUMENT….
// A program of its own, because a process counts the memory of the one it was forked from.
#include <cstdio>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

int main(int argc, char *argv[])
{
    if (argc < 2)
        return 2;
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);
        execvp(argv[1], argv + 1);
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    wait4(pid, &status, 0, &usage);
    std::printf("%ld\n", usage.ru_maxrss);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}
