#include "idlist/LanvekSpecListIO.h"
#include "idlist/MascotSpecListIO.h"
#include "idlist/MaxQuantSpecListIO.h"
#include "idlist/PepXmlSpecListIO.h"
#include "idlist/QuorinSpecListIO.h"
#include "idlist/TabTxtSpecListIO.h"

CSpecListIO* CreateSpecListIO(int32_t format) {
  CSpecListIO* reader = nullptr;
  switch (format) {
    case 0: reader = new CQuorinSpecListIO(); break;
    case 1: reader = new CPepXmlSpecListIO(); break;
    case 2: reader = new CLanvekSpecListIO(); break;
    case 4: reader = new CMascotSpecListIO(); break;
    case 6: reader = new CMaxQuantSpecListIO(); break;
    case 7: reader = new CTabTxtSpecListIO(); break;
    default: return nullptr;  // 3, 5 (pilot) and unknown codes have no reader
  }
  reader->format = format;
  return reader;
}
