#pragma once

// What a program does, in a library of its own beside which its executable is next to nothing: KWin
// reads the whole of the executable, twice, at each connection that a program makes to it. Returns
// the exit status.
extern "C" [[gnu::visibility("default")]] int runProgram(int argc, char *argv[]);
