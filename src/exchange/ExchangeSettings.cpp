#include "exchange/ExchangeSettings.h"

#include <charconv>
#include <ctime>

std::string CurrentDateTime() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  gmtime_r(&now, &parts);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
  return text;
}

std::string NumberText(double value) {
  char digits[64];
  const auto result = std::to_chars(digits, digits + sizeof digits, value);
  return std::string(digits, result.ptr);
}
