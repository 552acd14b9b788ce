#include <charconv>

#include "json.h"

namespace report {

std::string shortest_number(double value) {
  char digits[32];
  return {digits, std::to_chars(digits, digits + sizeof digits, value).ptr};
}

}  // namespace report
