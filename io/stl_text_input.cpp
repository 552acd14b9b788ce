// The text form of STL.
#include "io/stl_input.h"
#include "io/stl_text_parser.h"
#include "io/triangle_soup.h"

namespace qel::gridwork::detail::io {

int read_stl_text(const stl_source& input, const stl_mesh& mesh) {
  triangle_soup soup(mesh.coords, mesh.connectivity);
  stl_text_parser parser(input.blocks, input.size, soup);
  if (!parser.parse_header()) return stl_bad_header;
  const int result = parser.parse_facets([] { return false; });
  mesh.nbr_triangles = parser.nbr_facets();
  return result < 0 ? result : soup.finish();
}

}  // namespace qel::gridwork::detail::io
