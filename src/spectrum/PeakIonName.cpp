#include <string>

#include "spectrum/Peak.h"

std::string CPeak::GetIonName() const {
  static const char* const kLetters[] = {"b", "y", "Y", "o", "u"};
  std::string name;
  if (type >= 0 && type <= 4) name = kLetters[type];
  name += std::to_string(position);
  // A fragment charge of a sane library is a few units; a corrupt entry must not
  // make us build a string of billions of characters, so the signs stop at 64.
  name.append(charge < 64 ? charge : 64, '+');
  return name;
}
