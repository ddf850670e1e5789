#pragma once

#include <map>
#include <string>

#include <sys/types.h>

// What the kernel says of a process of the same user, at this moment. Zeroes when it has ended.

// Its proportional share of memory, in MiB.
double pssMebibytes(pid_t pid);

// The part of its memory that it alone has and has written to, in MiB. Unlike the share, it does
// not change with what other processes do.
double ownMebibytes(pid_t pid);

// The processor time of all its threads, ended ones as well, in milliseconds.
double processorMilliseconds(pid_t pid);

// How often each of its threads has waited for something, by the thread's number.
std::map<std::string, long> waits(pid_t pid);

// How often those that it has now have waited since then: each is a wake-up afterwards.
long waitsSince(const std::map<std::string, long> &before, pid_t pid);

// How many threads it has.
int threads(pid_t pid);

// How many files it has open, by kind: "socket", "pipe", "anon_inode:[eventfd]", or "file".
std::map<std::string, int> openFiles(pid_t pid);
