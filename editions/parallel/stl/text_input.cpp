// Pieces of STL texts.
//
// A rank does not know what the parser's state is where its bytes begin. It guesses that it stands before a facet at the
// first line of its bytes that reads as a facet's, and parses on from there; so do all. Each stops where it stands before a
// facet at another's first line: that is then what the other has guessed. Who follows whom, from the first rank on, tells
// whose triangles count. A guess that nobody confirms is dropped, and the rank before has parsed what lies there. So every
// file comes out as if it had been parsed from its beginning; a file of the usual form is parsed once.
#include <algorithm>
#include <cstdio>

#include "io/bytes/file.h"
#include "io/stl_text_parser.h"
#include "stl/piece.h"

namespace qel::gridwork::detail::parallel {
namespace {

constexpr std::uint64_t nowhere = ~std::uint64_t{0};

/// Triangles whose place in the file is not known yet.
class triangle_list {
 public:
  [[nodiscard]] bool add(const io::triangle& t) { return triangles_.push_back(t); }
  void expect(std::uint64_t) const noexcept {}

  const dense1D<io::triangle>& triangles() const noexcept { return triangles_; }
  void clear() noexcept { triangles_.clear_hard(); }

 private:
  dense1D<io::triangle> triangles_;
};

/// A text from one of its bytes on.
class text {
 public:
  explicit text(const char* filename) noexcept : file_(filename, io::access::read), blocks_(file_.stream()) {}

  bool is_open() const noexcept { return file_.is_open(); }
  [[nodiscard]] bool prepare() noexcept { return blocks_.prepare(); }
  std::uint64_t size() const noexcept { return file_.size(); }

  bool go_to(std::uint64_t byte) noexcept {
    first_ = byte;
    blocks_ = io::block_reader(file_.stream());
    return std::fseek(file_.stream(), static_cast<long>(byte), SEEK_SET) == 0 && blocks_.prepare();
  }

  io::block_reader& blocks() noexcept { return blocks_; }
  std::uint64_t position() const noexcept { return first_ + blocks_.position(); }

 private:
  io::file file_;
  io::block_reader blocks_;
  std::uint64_t first_ = 0;
};

/// The first line that begins in these bytes and reads as a facet's; nowhere if there is none.
std::uint64_t first_facet(text& file, std::uint64_t begin, std::uint64_t end) {
  if (begin == 0 || begin >= end || !file.go_to(begin - 1) || !file.blocks().pass_line()) return nowhere;
  constexpr std::uint64_t enough = 255;  // of a line, longer ones are cut
  while (file.position() < end) {
    file.blocks().fill(enough);
    if (io::scan_facet(file.blocks().begin()) != nullptr) return file.position();
    if (!file.blocks().pass_line()) return nowhere;
  }
  return nowhere;
}

/// How a rank's parsing ended: before the facet of another rank, at the end of the last solid, or with a negative result.
struct outcome {
  int result = 0;
  std::uint64_t next = 0;  // rank that follows, where the result is io::stl_stopped

  std::uint64_t encoded() const noexcept {
    return result < 0 ? ~static_cast<std::uint64_t>(-result) : result == 0 ? nowhere : next;
  }
  static outcome decode(std::uint64_t code) noexcept {
    if (code == nowhere) return {};
    return code >= ~std::uint64_t{1000} ? outcome{-static_cast<int>(~code), 0} : outcome{io::stl_stopped, code};
  }
};

/// Parses from where the file stands until the first facet of another rank.
outcome parse(text& file, const dense1D<std::uint64_t>& starts, triangle_list& triangles) {
  outcome end;
  const auto stands_at_another = [&] {
    const std::uint64_t position = file.position();
    while (end.next < starts.size() && (starts[end.next] < position || starts[end.next] == nowhere)) ++end.next;
    return end.next < starts.size() && starts[end.next] == position;
  };
  io::stl_text_parser parser(file.blocks(), 0, triangles);
  const std::uint64_t own = file.position();
  end.result = parser.parse_facets([&] { return file.position() != own && stands_at_another(); });
  return end;
}

/// Whether this rank's triangles count, and the result of the whole.
int follow(const dense1D<std::uint64_t>& outcomes, int rank, bool& counts) {
  std::uint64_t at = 0;
  for (;;) {
    counts = counts || at == static_cast<std::uint64_t>(rank);
    const outcome end = outcome::decode(outcomes[at]);
    if (end.result != io::stl_stopped) return end.result;
    at = end.next;
  }
}

/// Gives the triangles, whose places in the file are known now, to those of the piece.
int hand_over(team& ranks, bool count_here, triangle_list& list, piece& read) {
  if (!count_here) list.clear();
  const dense1D<io::triangle>& triangles = list.triangles();
  read.first_triangle = ranks.number(triangles.size()).before;
  read.triangles.begin_at(read.first_triangle);
  read.triangles.expect(triangles.size());
  bool room = true;
  for (std::uint64_t i = 0; i < triangles.size() && room; ++i) room = read.triangles.add(triangles[i]);
  return ranks.agree(room ? 0 : out_of_memory);
}

int parse_all(team& ranks, text& file, std::uint64_t bytes, piece& read) {
  const auto size = static_cast<std::uint64_t>(ranks.size()), rank = static_cast<std::uint64_t>(ranks.rank());
  dense1D<std::uint64_t> starts, outcomes;
  triangle_list triangles;
  int code = ranks.agree(starts.resize(size) && outcomes.resize(size) ? 0 : out_of_memory);
  if (code < 0) return code;
  // The first rank begins where its header ends.
  std::uint64_t start = file.position();
  if (rank != 0) start = first_facet(file, bytes / size * rank, rank + 1 == size ? bytes : bytes / size * (rank + 1));
  ranks.gather(start, starts.data());
  outcome end{io::stl_bad_facet, 0};
  if (rank == 0 || (start != nowhere && file.go_to(start))) {
    end = parse(file, starts, triangles);
  } else if (start != nowhere) {
    end.result = out_of_memory;
  }
  ranks.gather(end.encoded(), outcomes.data());
  code = ranks.agree(end.result == out_of_memory ? out_of_memory : 0);
  if (code < 0) return code;
  bool counts = false;
  code = follow(outcomes, ranks.rank(), counts);
  return code < 0 ? code : hand_over(ranks, counts, triangles, read);
}

}  // namespace

/// The first rank looks whether a text begins at all before the others do any work.
int read_text(team& ranks, const char* filename, piece& read) {
  text file(filename);
  int code = !file.is_open() ? not_open : file.prepare() ? 0 : out_of_memory;
  std::uint64_t facts[] = {0, 0};  // whether there is a header, and the size of the file
  if (ranks.rank() == 0 && code == 0) {
    facts[1] = file.size();
    triangle_list none_yet;
    facts[0] = io::stl_text_parser(file.blocks(), 0, none_yet).parse_header() ? 1 : 0;
  }
  code = ranks.agree(code);
  if (code < 0) return code;
  ranks.broadcast(facts, 2, 0);
  return facts[0] != 0 ? parse_all(ranks, file, facts[1], read) : io::stl_bad_header;
}

}  // namespace qel::gridwork::detail::parallel
