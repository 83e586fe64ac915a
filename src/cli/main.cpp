// QuorinGlyco: without arguments the classic interface (the configuration
// name on standard input); with arguments the command line.
#include "cli/ClassicRun.h"
#include "cli/CommandLine.h"

int main(int argc, char** argv) {
  if (argc > 1) return RunCommandLine(argc, argv);
  return RunClassic();
}
