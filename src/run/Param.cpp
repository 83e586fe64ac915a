#include "run/Param.h"

double ToleranceInDa(double value, int32_t unit, double mz) {
  if (unit == 0) return value;
  if (unit == 1) return value * mz / 1000000.0;
  return -1.0;
}

bool IsHighResolution(double tolerance, int32_t unit) {
  constexpr double kHighResolutionPpm = 25.0;
  constexpr double kHighResolutionDa = 0.025;
  return tolerance <= (unit == 1 ? kHighResolutionPpm : kHighResolutionDa);
}

CParam& CParam::GetInstance() {
  // Made at first access and never freed: deep code reads it until the very end.
  static CParam* instance = new CParam();
  return *instance;
}
