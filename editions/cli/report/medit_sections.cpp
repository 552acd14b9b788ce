// MEDIT files of elements of several dimensions with their references; the library's writer takes those of one matrix.
#include <cmath>

#include "file_bytes.h"
#include "json.h"
#include "written.h"

namespace report {

namespace {

// Pyramids and wedges are hexahedra with repeated nodes.
struct section {
  unsigned dim, vertices;
  const char* keyword;
  unsigned nodes;
  unsigned char order[8];
};

constexpr section sections[] = {{1, 2, "Edges", 2, {0, 1}},
                                {2, 3, "Triangles", 3, {0, 1, 2}},
                                {2, 4, "Quadrilaterals", 4, {0, 1, 2, 3}},
                                {3, 4, "Tetrahedra", 4, {0, 1, 2, 3}},
                                {3, 5, "Hexahedra", 8, {0, 1, 2, 3, 4, 4, 4, 4}},
                                {3, 6, "Hexahedra", 8, {0, 1, 2, 2, 3, 4, 5, 5}},
                                {3, 8, "Hexahedra", 8, {0, 1, 2, 3, 4, 5, 6, 7}}};

class text_file {
 public:
  explicit text_file(const char* path) : stream_(std::fopen(path, "wb")) {}
  ~text_file() { write(); }
  text_file(const text_file&) = delete;
  text_file& operator=(const text_file&) = delete;

  bool is_open() const { return stream_ != nullptr; }

  text_file& operator+=(const std::string& text) {
    text_ += text;
    if (text_.size() > block_size) write();
    return *this;
  }

 private:
  static constexpr std::size_t block_size = 1U << 16U;

  void write() {
    if (is_open()) std::fwrite(text_.data(), 1, text_.size(), stream_.get());
    text_.clear();
  }

  file_handle stream_;
  std::string text_;
};

// Numbers that are not finite can be written, if not computed with.
std::string number(double x) {
  if (std::isnan(x)) return "nan ";
  return std::isinf(x) ? (x > 0 ? "inf " : "-inf ") : shortest_number(x) + " ";
}

void write_vertices(const qel::dense2D<double>& coords, text_file& file) {
  file += "Vertices\n" + std::to_string(coords.cols()) + "\n";
  for (std::uint64_t n = 0; n < coords.cols(); ++n) {
    for (unsigned k = 0; k < coords.rows(); ++k) file += number(coords(k, n));
    file += "0\n";
  }
}

void write_section(const block& b, const section& form, text_file& file) {
  file += "\n" + std::string(form.keyword) + "\n" + std::to_string(b.connectivity.cols()) + "\n";
  for (std::uint64_t e = 0; e < b.connectivity.cols(); ++e) {
    for (unsigned k = 0; k < form.nodes; ++k) file += std::to_string(b.connectivity(form.order[k], e) + 1ULL) + " ";
    file += std::to_string(b.references.empty() ? 0 : b.references[e]) + "\n";
  }
}

}  // namespace

int write_medit_sections(const char* path, const mesh& m) {
  if (!has_valid_nodes(m)) return -3;
  text_file file(path);
  if (!file.is_open()) return -1;
  file += "MeshVersionFormatted 2\nDimension " + std::to_string(m.coords.rows()) + "\n\n";
  write_vertices(m.coords, file);
  for (const block& b : m.blocks) {
    for (const section& form : sections) {
      if (form.dim == element_dim(b.type) && form.vertices == nbr_base_nodes(b.type)) write_section(b, form, file);
    }
  }
  file += "\nEnd\n";
  return 0;
}

}  // namespace report
