#include "spectrum/DtaIO.h"
#include "spectrum/DtasIO.h"
#include "spectrum/MgfIO.h"
#include "spectrum/MzSpecIO.h"
#include "spectrum/QuolibIO.h"

CSpecIO* CreateSpecIO(int32_t format) {
  switch (format) {
    case 0: return new CQuolibIO();
    case 1: return new CDtaIO();
    case 2: return new CMgfIO();
    case 3: return new CDtasIO();
    case 4: return new CMzmlIO();
    case 5: return new CMzxmlIO();
    default: return nullptr;
  }
}
