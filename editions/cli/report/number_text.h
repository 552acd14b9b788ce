// Numbers in lines that are looked at, not read.
#ifndef QEL_GRIDWORK_CLI_REPORT_NUMBER_TEXT_H
#define QEL_GRIDWORK_CLI_REPORT_NUMBER_TEXT_H

#include <cstddef>
#include <string_view>

namespace report {

/// How many characters of a text are a number, as readers of files take it: decimal, hexadecimal, infinity or NaN; an
/// exponent may lack its digits. 0 when the text begins with none.
std::size_t number_length(std::string_view text);

}  // namespace report

#endif
