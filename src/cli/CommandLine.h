#pragma once

// The command line: run, fdr, template, report, --help, --version. Standard
// input is never read. Returns the exit status (cli/ExitStatus.h).
int RunCommandLine(int argc, char** argv);
