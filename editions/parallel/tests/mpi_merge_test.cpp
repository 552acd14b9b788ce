// Merging of nodes at random, made to hurt. QEL_MERGE_ROUNDS tells how many meshes to try, QEL_MERGE_SEED the first of their
// seeds, which a failure names.
#include <cmath>
#include <cstdlib>
#include <limits>

#include "merging/survivors.h"
#include "parts.h"

using namespace parts;

namespace {

unsigned setting(const char* name, unsigned usual) {
  const char* text = std::getenv(name);
  return text == nullptr ? usual : static_cast<unsigned>(std::atoi(text));
}

/// A mesh and how to merge it, all of which follow from a seed.
class merge_case {
 public:
  explicit merge_case(unsigned seed) : random_(seed) {
    constexpr double units[] = {1, 1, 1, 0.13, 1e-3, 1e6, 1e-160, 1e-310};
    unit_ = units[below(8)];
    constexpr double tolerances[] = {0, 0, 1, 1, 1, 0.3, 5};
    tol_ = unit_ * tolerances[below(7)];
    make_positions();
    place_nodes();
    make_elements();
    where_ = layouts[below(4)];
    shift_ = below(2) == 0 ? 0 : id_type{1} << 44;
  }

  const mesh& whole() const { return whole_; }
  double tol() const { return tol_; }
  layout where() const { return where_; }
  id_type shift() const { return shift_; }

 private:
  unsigned below(unsigned count) { return static_cast<unsigned>(random_() % count); }

  /// A coordinate: of a lattice, of a row at about the tolerance, of a cluster; some of these by some ulps beside.
  double coordinate(unsigned kind, unsigned place) {
    double x = 0;
    if (kind == 0) x = below(1 + place / 8);
    if (kind == 1) x = place * (0.9 + 0.01 * below(20));
    if (kind == 2) x = 7.0 * below(4) + 0.1 * below(25);
    if (kind == 3) x = below(2) == 0 ? place : 1.5 * below(6);
    x *= unit_;
    for (unsigned ulps = below(4) == 0 ? below(4) : 0; ulps > 0; --ulps) x = std::nextafter(x, below(2));
    return x;
  }

  void make_positions() {
    const unsigned dim = 2 + below(2), count = 1 + below(below(3) == 0 ? 200 : 40);
    positions_ = dense2D<double>(dim, count, 0.0);
    const unsigned kind = below(5);
    for (unsigned i = 0; i < count; ++i) {
      for (unsigned a = 0; a < dim; ++a) {
        if (a == 0 || below(3) == 0 || kind == 0) positions_(a, i) = coordinate(kind, a == 0 ? i : below(3));
      }
    }
  }

  /// Nodes in the order of positions, against it, or in none.
  void place_nodes() {
    constexpr double infinite = std::numeric_limits<double>::infinity();
    constexpr double special[] = {infinite, -infinite, std::numeric_limits<double>::quiet_NaN(), 1e300};
    const unsigned dim = positions_.rows(), positions = static_cast<unsigned>(positions_.cols());
    const unsigned count = positions * (1 + below(3)) + below(60), order = below(3), one_special_in = 2 + below(200);
    const bool is_special = below(3) == 0;
    whole_.coords = dense2D<double>(dim, count);
    for (unsigned i = 0; i < count; ++i) {
      const unsigned in_order = i * positions / count;
      const unsigned from = order == 0 ? in_order : order == 1 ? positions - 1 - in_order : below(positions);
      for (unsigned a = 0; a < dim; ++a) {
        double& x = whole_.coords(a, i) = positions_(a, from);
        if (x == 0 && below(2) == 0) x = -x;
        if (is_special && below(one_special_in) == 0) x = special[below(4)];
      }
    }
  }

  /// Elements with nodes of their own, but for some.
  void make_elements() {
    const unsigned rows = positions_.rows() + 1, count = static_cast<unsigned>(whole_.coords.cols());
    const unsigned one_strange_in = 1 + below(30);
    whole_.type = rows == 3 ? ELT_TRIA3 : ELT_TETRA4;
    whole_.connectivity = dense2D<unsigned>(rows, (count + rows - 1) / rows);
    for (unsigned c = 0; c < whole_.connectivity.size(); ++c) {
      whole_.connectivity.data()[c] = below(one_strange_in) == 0 ? below(count) : c % count;
    }
  }

  std::mt19937 random_;
  double unit_ = 1, tol_ = 0;
  dense2D<double> positions_;
  mesh whole_;
  layout where_ = layout::ranges;
  id_type shift_ = 0;
};

void expect_merged(const merge_case& c) {
  mesh whole = c.whole();
  mesh_part part = part_of(whole, c.where(), c.shift());
  dense1D<unsigned> new_IDs;
  id_type merged = 0;
  ASSERT_EQ(mpi::merge(world, part, c.tol(), merged), 0);
  // Nodes that no element uses are in no part.
  ASSERT_GE(simplify(whole.coords, whole.connectivity, new_IDs, 0), 0);
  std::vector<id_type> old_IDs(whole.coords.cols());
  for (unsigned i = 0; i < new_IDs.size(); ++i) {
    if (new_IDs[i] != ~0U) old_IDs[new_IDs[i]] = i + c.shift();
  }
  ASSERT_EQ(static_cast<int>(merged), merge(whole.coords, new_IDs, c.tol()));
  change_indices(whole.connectivity, new_IDs);
  for (id_type& id : part.node_IDs) {
    id = static_cast<id_type>(std::lower_bound(old_IDs.begin(), old_IDs.end(), id) - old_IDs.begin());
  }
  for (id_type& id : part.element_IDs) id -= c.shift();
  expect_part_of(part, whole.coords, whole.connectivity);
}

/// Nodes as pieces of a file have them: of those in a block, of so many IDs in a row, that lie at one position the first one
/// stands for all; each rank knows the first one of its own.
void expect_merged_by_blocks(const merge_case& c, std::mt19937 random) {
  namespace inside = qel::gridwork::detail::parallel;
  const mesh& whole = c.whole();
  const unsigned count = static_cast<unsigned>(whole.coords.cols()), dim = whole.coords.rows();
  const unsigned block = 1 + random() % count, ranks = static_cast<unsigned>(size());
  const bool in_pieces = random() % 2 == 0;
  const auto are_one = [&](unsigned i, unsigned j) {
    const double *p = whole.coords.column(i), *q = whole.coords.column(j);
    const auto equal = [](double x, double y) { return x == y && std::isfinite(x); };
    return i / block == j / block && std::equal(p, p + dim, q, equal);
  };
  dense2D<double> own(dim, 0), distinct(dim, 0);
  dense1D<id_type> own_IDs, distinct_IDs;
  for (unsigned i = 0; i < count; ++i) {
    const auto is_known = [&](id_type other) { return are_one(i, static_cast<unsigned>(other)); };
    const auto enter = [&](dense2D<double>& coords, dense1D<id_type>& ids) {
      if (std::any_of(ids.begin(), ids.end(), is_known)) return;
      EXPECT_TRUE(coords.push_back_column(whole.coords.column(i)) && ids.push_back(i));
    };
    enter(distinct, distinct_IDs);
    const unsigned home = in_pieces ? i * ranks / count : static_cast<unsigned>(random()) % ranks;
    if (home == static_cast<unsigned>(rank())) enter(own, own_IDs);
  }
  dense1D<unsigned> expected;
  ASSERT_GE(merge(distinct, expected, c.tol()), 0);
  inside::team team(world);
  inside::survivors found;
  ASSERT_EQ(inside::find_survivors(team, 0, {dim, own, own_IDs, block}, c.tol(), false, found), 0);
  ASSERT_EQ(found.places.size(), own_IDs.size());
  for (unsigned k = 0; k < own_IDs.size(); ++k) {
    const unsigned place = found.places[k], count_here = static_cast<unsigned>(own_IDs.size());
    const auto named = std::find_if(distinct_IDs.begin(), distinct_IDs.end(), [&](id_type other) {
      return other == own_IDs[k] || are_one(static_cast<unsigned>(own_IDs[k]), static_cast<unsigned>(other));
    });
    const unsigned survivor = expected[static_cast<unsigned>(named - distinct_IDs.begin())];
    ASSERT_EQ(place < count_here ? own_IDs[place] : found.others[place - count_here], distinct_IDs[survivor]);
  }
}

TEST(merge, at_random) {
  const unsigned first = setting("QEL_MERGE_SEED", 1), rounds = setting("QEL_MERGE_ROUNDS", 60);
  for (unsigned seed = first; seed < first + rounds; ++seed) {
    SCOPED_TRACE(seed);
    const merge_case c(seed);
    expect_merged(c);
    expect_merged_by_blocks(c, std::mt19937(seed));
    if (!agreed(HasFatalFailure() ? 1 : 0) || HasFatalFailure()) return;
  }
}

}  // namespace
