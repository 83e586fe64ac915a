#pragma once

// Exit statuses of the command line (the README lists them for users).
namespace exit_status {
constexpr int kSuccess = 0;
// The run was refused or stopped: a faulty configuration value, an input
// missing or unreadable, an output that would overwrite an input, a fatal
// data fault.
constexpr int kRefused = 1;
// The command line itself is wrong: an unknown command or option, a missing
// argument.
constexpr int kUsage = 2;
// The run finished but is incomplete: an input failed while it ran (a list
// or spectrum file that could not be read, a list skipped as faulty), or the
// library is empty.
constexpr int kIncomplete = 3;
// The configuration file can't be read (the status the classic interface gives
// as -1, which it also gives for a mass table it can't read or write).
constexpr int kConfigurationFile = 255;
// A run stopped by a signal ends as that signal would end it, after removing
// its temporary files: the shell sees 128 + the signal's number (130 for
// SIGINT, 143 for SIGTERM).
}  // namespace exit_status
