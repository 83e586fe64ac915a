#pragma once
#include <string>
#include <vector>

// Ends the program with the given status after removing the temporaries of
// uncommitted outputs and flushing standard output. Status -1 appears to the
// shell as 255.
[[noreturn]] void ExitProgram(int status);

// Makes the executable's folder the working directory; prints the original
// failure messages and ends with -1 when that can't be done.
void EnterExecutableFolder();

// The executable's folder with its trailing separator; empty if unknown.
std::string ExecutableFolder();

// What a path names.
enum class PathKind { Missing, File, Directory, Other };
PathKind GetPathKind(const std::string& path);

// Names (not paths) of the entries of a directory, sorted by name so that runs
// are reproducible. Empty when the directory can't be listed.
std::vector<std::string> ListDirectory(const std::string& path);

// Offset of the last path separator, '/' or '\\', whichever is later; npos if none.
std::size_t LastSeparator(const std::string& path);

// Waits the given number of milliseconds.
void SleepMilliseconds(unsigned milliseconds);

// CPU time of the whole process so far, all its threads, in seconds.
double ProcessCpuSeconds();

// Asks the system to back the large anonymous memory of the process (the heap
// and big allocations) with huge pages, at once and as it grows. Only speed
// changes: data read scattered over hundreds of megabytes then costs fewer
// address translations. Does nothing where the system doesn't offer it.
void PreferHugePages();

