#include <iostream>
#include <string>

#include "construction/ConstructionStage.h"
#include "fdr/FdrStage.h"
#include "run/Param.h"
#include "run/Process.h"
#include "search/SearchStage.h"

int main() {
  // Relative paths (the configuration, MassTable.ini, every configured path)
  // are taken from the executable's folder, whatever folder we were started in.
  EnterExecutableFolder();

  std::string configName;
  std::getline(std::cin, configName);
  if (!configName.empty() && configName.back() == '\r') configName.pop_back();
  if (configName.empty()) {
    std::cout << "Version:\nv" << kVersion << " Release" << std::endl;
    std::cout << "Usage:\nQuorinGlyco_v" << kVersion << ".exe configureFilename" << std::endl;
    std::cout << std::endl;
  }

  CParam& param = CParam::GetInstance();
  param.configure_filename = configName;
  param.Load();

  RunConstruction(param.construction);
  RunSearch(param.search);
  RunFdr(param.search);

  std::cout << "Finish!" << std::endl;
  return 0;
}
