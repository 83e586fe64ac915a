#include "cli/ClassicRun.h"

#include <iostream>
#include <string>

#include "cli/RunInputCheck.h"
#include "construction/ConstructionStage.h"
#include "fdr/FdrStage.h"
#include "run/OutputLock.h"
#include "run/Param.h"
#include "run/Process.h"
#include "run/RunPaths.h"
#include "run/SafeOutputFile.h"
#include "run/TextLine.h"
#include "search/SearchStage.h"

int RunClassic() {
  // Relative paths (the configuration, MassTable.ini, every configured path)
  // are taken from the executable's folder, whatever folder we were started in.
  EnterExecutableFolder();
  RemoveTemporariesOnSignals();

  // The first line of standard input names the configuration file; a CR before
  // the newline is no part of the name. No path comes near the limit, which only
  // keeps a stream without line ends from being stored whole.
  constexpr std::size_t kMaxNameLength = 1 << 16;
  std::string configName;
  ReadLine(std::cin, configName, nullptr, kMaxNameLength);
  if (configName.empty()) {
    std::cout << "Version:\nv" << kVersion << " Release" << std::endl;
    std::cout << "Usage:\nQuorinGlyco_v" << kVersion << ".exe configureFilename" << std::endl;
    std::cout << std::endl;
  }

  CParam& param = CParam::GetInstance();
  param.configure_filename = configName;
  param.Load();
  const CRunPaths paths = CollectRunPaths(param);
  CheckRunPaths(paths);
  CheckRunInputs(param, paths);
  COutputLock lock;
  LockRunOutputs(paths, lock);

  // An empty library that left the earlier one in place ends the run: the
  // earlier library is not what this configuration builds.
  if (RunConstruction(param.construction).keptEarlierLibrary) ExitProgram(1);
  RunSearch(param.search);
  RunFdr(param.search);

  std::cout << "Finish!" << std::endl;
  return 0;
}
