// A second look at files that are words, whatever their lines.
#ifndef QEL_GRIDWORK_CLI_REPORT_WORD_LOOK_H
#define QEL_GRIDWORK_CLI_REPORT_WORD_LOOK_H

#include "second_look.h"

namespace report {

/// Goes through the words of a file, between blanks. What expects something returns false, and notes the fault, where
/// that does not come.
class word_look {
 public:
  /// Words behind `comment` are no words up to the end of their line; NUL where there are no comments.
  word_look(const file_bytes& file, char comment) : lines_(file), comment_(comment) {}

  /// What is wrong, with its line; empty as long as nothing is, and where lines are too long to be told apart.
  std::string fault() const { return is_lost_ ? std::string() : fault_; }

  /// The next word, in lower case; empty behind the last one.
  const std::string& next();

  /// Makes the last word the next one again.
  void give_back() { is_given_back_ = true; }

  /// Passes over lines, from the one behind that of the last word on, up to an empty one.
  void skip_to_empty_line();

  /// Passes over the next line.
  void skip_line();

  /// What is expected from now on belongs to the section that the last word begins.
  void enter_section();

  bool expect_count(std::uint64_t& count);
  bool expect_integer(std::int64_t& value);
  bool expect_integers(std::uint64_t count);
  bool expect_reals(std::uint64_t count);
  bool expect_words(std::uint64_t count);

  /// Numbers of nodes, of which the file has `nodes`, counted from `first` on; any numbers for any_nodes.
  bool expect_nodes(std::uint64_t count, std::int64_t first, std::uint64_t nodes);
  static constexpr std::uint64_t any_nodes = ~0ULL;

  /// Notes a fault of the last word.
  bool fail(const std::string& words);

  /// Notes a fault of the section.
  bool fail_section(const std::string& words);

 private:
  bool expect_word();

  line_reader lines_;
  char comment_;
  std::string_view rest_;
  std::string word_, in_file_, section_, fault_;  // the word in lower case and as it stands
  std::uint64_t section_line_ = 0;
  bool is_given_back_ = false, is_lost_ = false;
};

}  // namespace report

#endif
