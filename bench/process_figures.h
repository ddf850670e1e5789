#pragma once

#include <sys/types.h>

// What the kernel says of a process of the same user, at this moment. Zeroes when it has ended.

// Its proportional share of memory, in MiB.
double pssMebibytes(pid_t pid);

// The part of its memory that it alone has and has written to, in MiB. Unlike the share, it does
// not change with what other processes do.
double ownMebibytes(pid_t pid);

// The processor time of all its threads, ended ones as well, in milliseconds.
double processorMilliseconds(pid_t pid);

// How often its main thread has waited for something: each is a wake-up afterwards.
long waits(pid_t pid);
