// What VTK files hold beside a mesh, which is passed over.
#ifndef QEL_GRIDWORK_IO_VTK_FIELDS_H
#define QEL_GRIDWORK_IO_VTK_FIELDS_H

#include <cstdint>
#include <string_view>

#include "io/input_result.h"
#include "io/text/line_reader.h"
#include "io/text/word_reader.h"
#include "io/vtk_numbers.h"

namespace qel::gridwork::detail::io::vtk {

/// Passes over what stands behind the keywords FIELD and METADATA.
class field_skipper {
 public:
  field_skipper(word_reader& words, block_reader& blocks, number_reader& numbers) noexcept
      : words_(words), blocks_(blocks), numbers_(numbers) {}

  int pass_field() noexcept {
    std::uint64_t arrays = 0;
    if (words_.read_word().empty() || !words_.read_count(arrays)) return malformed;
    int result = 0;
    for (; arrays != 0 && result == 0; --arrays) result = pass_array();
    return result;
  }

  /// Ends at an empty line.
  int pass_metadata() noexcept {
    blocks_.pass_line();
    line_reader lines(blocks_);
    const char* line = lines.next_without_tail();
    while (line != nullptr && !ends_line(*skip_blanks(line))) line = lines.next_without_tail();
    return 0;
  }

 private:
  int pass_array() noexcept {
    std::string_view name = words_.read_word();
    for (; same_word(name, "METADATA"); name = words_.read_word()) pass_metadata();
    if (same_word(name, "NULL_ARRAY")) return 0;
    std::uint64_t rows = 0, columns = 0;
    if (name.empty() || !words_.read_count(rows) || !words_.read_count(columns)) return malformed;
    const number_type type = numbers_.read_type();
    if (rows != 0 && columns > most_numbers / rows) return malformed;
    return numbers_.pass(type, rows * columns);
  }

  word_reader& words_;
  block_reader& blocks_;
  number_reader& numbers_;
};

}  // namespace qel::gridwork::detail::io::vtk

#endif
