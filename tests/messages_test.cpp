#include "qel/gridwork/messages.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

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
