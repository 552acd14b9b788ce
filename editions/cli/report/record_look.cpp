#include "record_look.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "number_text.h"

namespace report {

namespace {

bool scan_whole(std::string_view field, std::int64_t& value) {
  if (!field.empty() && field.front() == '+') field.remove_prefix(1);
  const char* const end = field.data() + field.size();
  return !field.empty() && std::from_chars(field.data(), end, value).ptr == end;
}

// As programs in Fortran write it: the exponent stands behind E, D or nothing but its sign.
bool is_real(std::string_view field) {
  std::string number = lower_case(field);
  std::replace(number.begin(), number.end(), 'd', 'e');
  if (number.empty() || number.find_first_not_of("0123456789.+-e") != std::string::npos) return false;
  const std::size_t sign = number.find_last_of("+-");
  if (sign != std::string::npos && sign != 0 && number[sign - 1] != 'e') number.insert(sign, "e");
  return number_length(number) == number.size();
}

}  // namespace

std::string_view trimmed(std::string_view text) {
  text = without_blanks(text);
  return text.substr(0, text.find_last_not_of(blanks) + 1);
}

bool record_look::fail(const std::string& words, int result) {
  if (fault_.empty() && result == result_) fault_ = in_line(record_line_) + ": " + words;
  return false;
}

bool record_look::expect_ID(std::string_view field, const char* what, unsigned& ID) {
  std::int64_t value = 0;
  if (!scan_whole(field, value) || value < 1 || value > std::numeric_limits<std::int32_t>::max())
    return fail(quoted(field) + " is no " + what);
  ID = static_cast<unsigned>(value);
  return true;
}

bool record_look::expect_whole(std::string_view field, const char* what) {
  std::int64_t value = 0;
  return scan_whole(field, value) || fail(quoted(field) + " is no " + what);
}

bool record_look::expect_real(std::string_view field, const char* what) {
  return is_real(field) || fail(quoted(field) + " is no " + what);
}

bool record_look::add_node(unsigned ID, const std::string& place) {
  const std::string& first = nodes_.emplace(ID, result_ == node_differs ? place : std::string()).first->second;
  return result_ != node_differs || first == place ||
         fail("node " + std::to_string(ID) + " is defined again, at another place or in another system", node_differs);
}

bool record_look::use_node(unsigned ID) {
  return before_ == nullptr || before_->nodes_.count(ID) != 0 ||
         fail("node " + std::to_string(ID) + " is not there", unknown_node);
}

}  // namespace report
