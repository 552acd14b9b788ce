#include "parts.h"

namespace parts {
namespace {

constexpr unsigned tetrahedra_of_cube[6][4] = {{0, 1, 2, 6}, {0, 2, 3, 6}, {0, 3, 7, 6},
                                               {0, 7, 4, 6}, {0, 4, 5, 6}, {0, 5, 1, 6}};

void append(dense2D<unsigned>& connectivity, std::vector<unsigned> nodes, unsigned rows) {
  nodes.resize(rows, ~0U);
  if (connectivity.cols() == 0) connectivity = dense2D<unsigned>(rows, 0);
  EXPECT_TRUE(connectivity.push_back_column(nodes.data()));
}

void append_cell(mesh& m, const unsigned (&c)[8], unsigned number) {
  const bool as_wedges = m.type == ELT_SOLID_MIX && number % 3 == 0, as_hexahedron = number % 3 == 1;
  if (m.type == ELT_HEXA8 || (m.type == ELT_SOLID_MIX && as_hexahedron)) {
    append(m.connectivity, {c, c + 8}, 8);
  } else if (as_wedges) {
    append(m.connectivity, {c[0], c[1], c[2], c[4], c[5], c[6]}, 8);
    append(m.connectivity, {c[0], c[2], c[3], c[4], c[6], c[7]}, 8);
  } else if (m.type == ELT_TETRA4 || m.type == ELT_SOLID_MIX) {
    const unsigned rows = m.type == ELT_TETRA4 ? 4 : 8;
    for (const auto& t : tetrahedra_of_cube) append(m.connectivity, {c[t[0]], c[t[1]], c[t[2]], c[t[3]]}, rows);
  } else if (m.type == ELT_FACE_MIX && number % 2 == 0) {
    append(m.connectivity, {c[0], c[1], c[2], c[3]}, 4);
    append(m.connectivity, {c[0], c[1], c[5], c[4]}, 4);
  } else {
    const unsigned rows = m.type == ELT_FACE_MIX ? 4 : 3;
    append(m.connectivity, {c[0], c[1], c[2]}, rows);
    append(m.connectivity, {c[0], c[2], c[3]}, rows);
    append(m.connectivity, {c[0], c[1], c[4]}, rows);
    append(m.connectivity, {c[1], c[5], c[4]}, rows);
  }
}

}  // namespace

mesh box(element_type type, unsigned nx, unsigned ny, unsigned nz) {
  mesh m{"box", dense2D<double>(3, (nx + 1) * (ny + 1) * (nz + 1)), {}, type};
  const auto node = [&](unsigned i, unsigned j, unsigned k) { return (k * (ny + 1) + j) * (nx + 1) + i; };
  for (unsigned k = 0; k <= nz; ++k) {
    for (unsigned j = 0; j <= ny; ++j) {
      for (unsigned i = 0; i <= nx; ++i) {
        double* p = m.coords.column(node(i, j, k));
        p[0] = i + 0.1 * j, p[1] = 0.7 * j, p[2] = k - 0.03 * i * j;
      }
    }
  }
  unsigned number = 0;
  for (unsigned k = 0; k < nz; ++k) {
    for (unsigned j = 0; j < ny; ++j) {
      for (unsigned i = 0; i < nx; ++i) {
        const unsigned corners[8] = {
            node(i, j, k),     node(i + 1, j, k),     node(i + 1, j + 1, k),     node(i, j + 1, k),
            node(i, j, k + 1), node(i + 1, j, k + 1), node(i + 1, j + 1, k + 1), node(i, j + 1, k + 1)};
        append_cell(m, corners, number++);
      }
    }
  }
  return m;
}

mesh tangle(element_type type, unsigned nodes, unsigned elements, unsigned seed) {
  std::mt19937 random(seed);
  mesh m{"tangle", dense2D<double>(3, nodes), {}, type};
  for (double& x : m.coords.as_vector()) x = static_cast<double>(random() % 1000) / 100;
  const unsigned rows = nbr_nodes(type);
  for (unsigned e = 0; e < elements; ++e) {
    std::vector<unsigned> element(type == ELT_FACE_MIX ? 3 + random() % 2 : rows);
    for (unsigned& node : element) node = random() % nodes;
    append(m.connectivity, element, rows);
  }
  return m;
}

mesh shuffled(const mesh& m, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<unsigned> nodes(m.coords.cols()), elements(m.connectivity.cols());
  for (unsigned i = 0; i < nodes.size(); ++i) nodes[i] = i;
  for (unsigned i = 0; i < elements.size(); ++i) elements[i] = i;
  std::shuffle(nodes.begin(), nodes.end(), random);
  std::shuffle(elements.begin(), elements.end(), random);
  mesh s{m.name + ", shuffled", dense2D<double>(m.coords.rows(), m.coords.cols()),
         dense2D<unsigned>(m.connectivity.rows(), m.connectivity.cols(), ~0U), m.type};
  for (unsigned i = 0; i < nodes.size(); ++i) {
    std::copy_n(m.coords.column(i), m.coords.rows(), s.coords.column(nodes[i]));
  }
  for (unsigned e = 0; e < elements.size(); ++e) {
    for (unsigned i = 0; i < m.connectivity.rows(); ++i) {
      const unsigned node = m.connectivity(i, e);
      if (node != ~0U) s.connectivity(i, elements[e]) = nodes[node];
    }
  }
  return s;
}

const std::vector<mesh>& meshes() {
  static const std::vector<mesh> all = [] {
    std::vector<mesh> list;
    for (const element_type type : {ELT_TRIA3, ELT_FACE_MIX, ELT_TETRA4, ELT_HEXA8, ELT_SOLID_MIX}) {
      list.push_back(box(type, 4, 3, 3));
      list.push_back(shuffled(list.back(), 3));
      if (type != ELT_SOLID_MIX) list.push_back(tangle(type, 9, 60, 5));
      for (mesh& m : list) m.name += " of type " + std::to_string(m.type);
    }
    list.push_back(tangle(ELT_EDGE2, 12, 30, 9));
    list.push_back(tangle(ELT_QUAD4, 8, 40, 9));
    list.push_back(box(ELT_TRIA3, 1, 1, 1));
    return list;
  }();
  return all;
}

}  // namespace parts
