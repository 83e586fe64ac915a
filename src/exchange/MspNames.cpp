#include "exchange/MspNames.h"

std::string MspModificationName(const std::string& tableName) {
  const std::size_t bracket = tableName.find('[');
  if (bracket == 0 || bracket == std::string::npos || tableName.back() != ']') return tableName;
  return tableName.substr(0, bracket);
}

std::string TableModificationName(const CMassTable& table, const std::string& mspName, char residue) {
  const std::string name = mspName == "CAM" ? "Carbamidomethyl" : mspName;
  const std::string withResidue = name + "[" + std::string(1, residue) + "]";
  if (table.modifications.count(withResidue)) return withResidue;
  if (table.modifications.count(name)) return name;
  return "";
}
