// Numbers in JSON are JavaScript's own, and its engine prints them.
#include <report/json.h>

namespace report {

__attribute__((import_module("gridwork"), import_name("shortest_number"))) unsigned print_number(double value,
                                                                                                 char* digits);

std::string shortest_number(double value) {
  char digits[32];
  return {digits, print_number(value, digits)};
}

}  // namespace report
