// A second look at files of records whose nodes have identifiers.
#ifndef QEL_GRIDWORK_CLI_REPORT_RECORD_LOOK_H
#define QEL_GRIDWORK_CLI_REPORT_RECORD_LOOK_H

#include <map>

#include "second_look.h"

namespace report {

/// Fields and nodes, and what is wrong with them. What expects something returns false, and notes the fault if it is one
/// behind the reader's result, where that does not come.
class record_look {
 public:
  record_look(const file_bytes& file, int result, const record_look* before)
      : lines_(file), result_(result), before_(before) {}

  const std::string& fault() const { return fault_; }

 protected:
  /// From here on faults are those of the line that was read last.
  void begin_record() { record_line_ = lines_.number(); }

  /// Forgets what was seen.
  void begin_again() { fault_.clear(), nodes_.clear(); }

  bool fail(const std::string& words, int result = malformed);

  bool expect_ID(std::string_view field, const char* what, unsigned& ID);
  bool expect_whole(std::string_view field, const char* what);
  bool expect_real(std::string_view field, const char* what);

  /// A node, and the fields of its place; with others than before, if it is there, it is a fault.
  bool add_node(unsigned ID, const std::string& place);

  /// A node of an element: a fault when it is not there.
  bool use_node(unsigned ID);

  line_reader lines_;

 private:
  int result_;
  const record_look* before_;
  std::map<unsigned, std::string> nodes_;  // with their places, where these matter
  std::uint64_t record_line_ = 0;
  std::string fault_;
};

std::string_view trimmed(std::string_view text);

}  // namespace report

#endif
