// Meshes in parts, against the whole: every rank of a test holds both.
#ifndef QEL_GRIDWORK_PARALLEL_TESTS_PARTS_H
#define QEL_GRIDWORK_PARALLEL_TESTS_PARTS_H

#include <gtest/gtest.h>
#include <mpi.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "qel/gridwork.h"
#include "qel/gridwork/mpi.h"

namespace parts {

using namespace qel::gridwork;
using mpi::mesh_part;
using qel::dense1D;
using qel::dense2D;
using id_type = std::uint64_t;

inline const MPI_Comm world = MPI_COMM_WORLD;
constexpr id_type no_ID = ~id_type{0};

inline int rank() {
  int r = 0;
  MPI_Comm_rank(world, &r);
  return r;
}

inline int size() {
  int s = 0;
  MPI_Comm_size(world, &s);
  return s;
}

inline id_type sum(id_type value) {
  MPI_Allreduce(MPI_IN_PLACE, &value, 1, MPI_UINT64_T, MPI_SUM, world);
  return value;
}

/// True when all ranks have the same number.
inline bool agreed(int value) {
  int ends[] = {value, -value};
  MPI_Allreduce(MPI_IN_PLACE, ends, 2, MPI_INT, MPI_MIN, world);
  return ends[0] == -ends[1];
}

struct mesh {
  std::string name;
  dense2D<double> coords;
  dense2D<unsigned> connectivity;
  element_type type = ELT_TRIA3;
};

/// How elements lie on ranks: as a file has them, at random, some ranks with none, all on the last.
enum class layout { ranges, random, every_other, last };
constexpr layout layouts[] = {layout::ranges, layout::random, layout::every_other, layout::last};

inline int home_of(layout l, id_type element, id_type elements, std::mt19937& random) {
  const auto ranks = static_cast<id_type>(size());
  const id_type any = random();
  if (l == layout::ranges) return static_cast<int>(element * ranks / elements);
  if (l == layout::random) return static_cast<int>(any % ranks);
  if (l == layout::every_other) return static_cast<int>(any % ranks / 2 * 2);
  return size() - 1;
}

/// This rank's part, IDs shifted.
inline mesh_part part_of(const mesh& m, layout l, id_type shift = 0) {
  std::mt19937 random(7);
  mesh_part part;
  std::set<unsigned> used;
  std::vector<unsigned> elements;
  for (unsigned e = 0; e < m.connectivity.cols(); ++e) {
    if (home_of(l, e, m.connectivity.cols(), random) != rank()) continue;
    elements.push_back(e);
    used.insert(m.connectivity.begin_column(e), m.connectivity.end_column(e));
  }
  used.erase(~0U);
  std::map<unsigned, unsigned> local;
  EXPECT_TRUE(part.coords.resize(m.coords.rows(), used.size()));
  EXPECT_TRUE(part.connectivity.resize(m.connectivity.rows(), elements.size(), ~0U));
  for (const unsigned node : used) {
    std::copy_n(m.coords.column(node), m.coords.rows(), part.coords.column(local.size()));
    EXPECT_TRUE(part.node_IDs.push_back(node + shift));
    local.emplace(node, static_cast<unsigned>(local.size()));
  }
  for (unsigned j = 0; j < elements.size(); ++j) {
    EXPECT_TRUE(part.element_IDs.push_back(elements[j] + shift));
    for (unsigned i = 0; i < m.connectivity.rows(); ++i) {
      const unsigned node = m.connectivity(i, elements[j]);
      if (node != ~0U) part.connectivity(i, j) = local[node];
    }
  }
  return part;
}

/// The part is one of this mesh, and all parts together have every element of it once.
inline void expect_part_of(const mesh_part& part, const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                           id_type shift = 0) {
  ASSERT_EQ(sum(part.element_IDs.size()), connectivity.cols());
  ASSERT_TRUE(std::is_sorted(part.node_IDs.begin(), part.node_IDs.end(), std::less_equal<>()) ||
              part.node_IDs.size() < 2);
  std::set<unsigned> used;
  for (id_type j = 0; j < part.element_IDs.size(); ++j) {
    const id_type e = part.element_IDs[j] - shift;
    ASSERT_TRUE(j == 0 || part.element_IDs[j - 1] < part.element_IDs[j]);
    ASSERT_LT(e, connectivity.cols());
    for (unsigned i = 0; i < connectivity.rows(); ++i) {
      const unsigned node = part.connectivity(i, j);
      used.insert(node);
      ASSERT_EQ(node == ~0U ? ~0U : part.node_IDs[node] - shift, connectivity(i, e)) << "element " << e;
    }
  }
  used.erase(~0U);
  ASSERT_EQ(used.size(), part.node_IDs.size());
  for (id_type i = 0; i < part.node_IDs.size(); ++i) {
    const double* whole = coords.column(part.node_IDs[i] - shift);
    ASSERT_EQ(std::memcmp(part.coords.column(i), whole, coords.rows() * sizeof(double)), 0) << "node " << i;
  }
}

/// A box of nx x ny x nz cells, as tetrahedra, hexahedra, wedges and tetrahedra by turns, or the triangles of its layers with
/// walls between, so that edges have up to four.
mesh box(element_type type, unsigned nx, unsigned ny, unsigned nz);

/// Elements on few nodes at random: repeated ones, degenerate ones, boundaries of many.
mesh tangle(element_type type, unsigned nodes, unsigned elements, unsigned seed);

/// The same with elements and nodes in another order.
mesh shuffled(const mesh& m, unsigned seed);

/// All of these.
const std::vector<mesh>& meshes();

/// Runs check(mesh, part, sharing, shift) for all meshes, as parts in all layouts.
template <class Check>
void for_each_part(Check check) {
  for (const mesh& m : meshes()) {
    for (const layout l : layouts) {
      const id_type shift = l == layout::random ? id_type{1} << 44 : 0;
      SCOPED_TRACE(m.name + ", layout " + std::to_string(static_cast<int>(l)));
      const mesh_part part = part_of(m, l, shift);
      mpi::node_sharing sharing;
      ASSERT_EQ(mpi::share_nodes(world, part, sharing), 0);
      check(m, part, sharing, shift);
      if (testing::Test::HasFatalFailure()) return;
    }
  }
}

}  // namespace parts

#endif
