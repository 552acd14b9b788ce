// A mesh that is read from a file, with what is told about the file.
#ifndef QEL_GRIDWORK_CLI_REPORT_READING_H
#define QEL_GRIDWORK_CLI_REPORT_READING_H

#include "formats.h"
#include "json.h"

namespace report {

struct loaded {
  const format* kind = nullptr;
  bool is_text = true;
  std::uint64_t bytes = 0;
  std::uint64_t left_out = 0;  ///< what the reader passed over, as `kind` names it
  mesh m;
};

/// Why a file is not read; without words when it is.
struct refusal {
  std::string words;
  int result = 0;
};

/// Reads a file of the format `file.kind`; fails in words, with the line where it is known.
refusal read_file(const char* path, loaded& file);

}  // namespace report

#endif
