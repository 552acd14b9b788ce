#include "qel/gridwork/messages.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <string_view>
#include <utility>

namespace qel::gridwork {
namespace {

TEST(messages, every_code_of_the_table_has_its_sentence_once) {
  const result_code* previous = nullptr;
  for (const result_code& row : result_codes) {
    const operation_name& name = operation_names[static_cast<unsigned>(row.call)];
    EXPECT_LT(row.code, 0) << name.function;
    EXPECT_GT(std::string_view(row.sentence).size(), 10U) << name.function << row.code;
    EXPECT_EQ(message(row.call, row.code), row.sentence) << name.function << row.code;
    EXPECT_EQ(message((std::string(name.function) + name.arguments).c_str(), row.code), std::string_view(row.sentence));
    if (previous != nullptr && previous->call == row.call) {
      EXPECT_GT(previous->code, row.code) << name.function;
    } else {
      EXPECT_EQ(static_cast<int>(row.call), previous == nullptr ? 0 : static_cast<int>(previous->call) + 1);
    }
    previous = &row;
  }
  EXPECT_EQ(previous->call, operation::ensight_output);
}

template <operation Call>
constexpr std::string_view enumerator() {
  constexpr std::string_view text = __PRETTY_FUNCTION__;
  const auto begin = text.find("operation::", text.find("Call")) + std::string_view("operation::").size();
  return text.substr(begin, text.find_first_of(";]", begin) - begin);
}

template <unsigned... Codes>
void compare_names(std::integer_sequence<unsigned, Codes...>) {
  constexpr std::string_view calls[] = {enumerator<static_cast<operation>(Codes)>()...};
  for (const operation_name& name : operation_names) {
    const std::string_view call = calls[static_cast<unsigned>(name.call)];
    const std::string_view family = call.substr(0, call.rfind('_'));
    EXPECT_TRUE(call == name.function || (family == name.function && name.arguments[0] != 0)) << call;
  }
}

TEST(messages, operations_have_the_names_of_their_functions) {
  compare_names(std::make_integer_sequence<unsigned, std::size(operation_names)>());
}

TEST(messages, names_overloads_and_unknown_codes) {
  const struct {
    const char* function;
    int result;
    std::string_view sentence;
  } cases[] = {
      {"STL_input", -1, sentences::not_opened},
      {"merge", 17, sentences::success},
      {"merge", -3, sentences::ambiguous},
      {"merge(coords, new_IDs, tol)", -3, sentences::tolerance},
      {"merge(coords, new_IDs, tol)", -2, sentences::unknown},
      {"merge_nodes", -3, sentences::unknown},
      {"min_quality", -199, sentences::unknown},
      {"medit_output", -4, sentences::range},
      {"nothing", -1, sentences::unknown},
      {"", -1, sentences::unknown},
      {nullptr, -199, sentences::unknown},
  };
  for (const auto& c : cases) EXPECT_EQ(message(c.function, c.result), c.sentence) << c.function << c.result;
  static_assert(std::string_view(message(operation::merge_lists, -4)) == sentences::tolerance);
}

}  // namespace
}  // namespace qel::gridwork
