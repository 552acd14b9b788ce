#include <gtest/gtest.h>

#include "tests/facts.h"
#include "tests/random_meshes.h"
#include "tests/reference.h"

namespace qel::gridwork {
namespace {

using namespace random_meshes;
using namespace reference;

dense2D<unsigned> two_triangles() { return dense2D<unsigned>(3, 2, {2, 0, 1, 1, 2, 3}); }

TEST(max_ID, and_check_IDs_ignore_none) {
  const struct {
    dense1D<unsigned> ids;
    unsigned max, bound;  // the least n that is not refused
  } cases[] = {{{}, none, 0}, {{none, none}, 0, 0}, {{3, none, 7}, 7, 8}, {{none - 1, none}, none - 1, none}};
  for (const auto& [ids, max, bound] : cases) {
    for (const auto& m : {dense2D<unsigned>(1, ids.size(), const_cast<unsigned*>(ids.data())),
                          with_gaps(dense2D<unsigned>(ids.size(), 1, const_cast<unsigned*>(ids.data())), none - 1)}) {
      EXPECT_ALL(max_ID(ids) == max, max_ID(m) == max) << max;
      EXPECT_ALL(check_IDs(ids, bound), check_IDs(m, bound), check_IDs(ids, none), check_IDs(m, none));
      EXPECT_FALSE(bound != 0 && (check_IDs(ids, bound - 1) || check_IDs(m, bound - 1)));
    }
  }
}

TEST(shift_indices, wraps_and_treats_none_by_kind) {
  dense1D<unsigned> list{0, none, 7};
  EXPECT_EQ(shift_indices(list, 5) + shift_indices(list, -6), 0);
  EXPECT_EQ(to_list(list), id_list({none, none, 6}));
  for (unsigned t = 0; t <= ELT_HEXA27; ++t) {
    const auto type = static_cast<element_type>(t);
    const bool mixed = type == ELT_FACE_MIX || type == ELT_SOLID_MIX;
    dense2D<unsigned> m = with_gaps(dense2D<unsigned>(3, 2, {0, 1, none, 9, 8, 7}), 50U);
    EXPECT_EQ(shift_indices(m, 0, type) + shift_indices(m, 5, type), 0);
    EXPECT_EQ(columns(m), (std::vector<id_list>{{5, 6, mixed ? none : 4}, {14, 13, 12}})) << t;
    EXPECT_ALL(m.data()[-1] == 50, m.data()[3] == 50) << "an entry between the columns was shifted";
  }
}

TEST(change_indices, leaves_what_the_table_lacks) {
  dense1D<unsigned> list{0, 5, none, 1, 2};
  change_indices(list, {10, 11}), change_indices(list, dense1D<unsigned>());
  EXPECT_EQ(to_list(list), id_list({10, 5, none, 11, 2}));
  dense2D<unsigned> m = with_gaps(two_triangles(), 1U);
  change_indices(m, {7, none, 6});
  EXPECT_EQ(columns(m), (std::vector<id_list>{{6, 7, none}, {none, 6, 3}}));
  EXPECT_EQ(m.column(0)[3], 1U);
}

TEST(permutation, scatters) {
  const auto permuted = [](const id_list& values, const id_list& perm) {
    dense1D<unsigned> v = to_array(values);
    const dense1D<unsigned> other_view = v;
    dense1D<double> d(values.size());
    std::copy(values.begin(), values.end(), d.begin());
    EXPECT_EQ(permutation(v, to_array(perm)), 0);
    EXPECT_EQ(permutation(d, to_array(perm)), 0);
    EXPECT_TRUE(std::equal(v.begin(), v.end(), d.begin()));
    EXPECT_EQ(to_list(other_view), values) << "another view of the block was disturbed";
    return to_list(v);
  };
  EXPECT_EQ(permuted({7, 8, 9}, {2, 0, 1}), id_list({8, 9, 7}));
  EXPECT_EQ(permuted({7, 8, 9}, {none, 0, 1}), id_list({8, 9, 9}));
  EXPECT_EQ(permuted({7, 8, 9}, {1, 2, 2, 0}), id_list({7, 7, 8}));  // position 0 gets nothing, the fixed 2 is no move
  EXPECT_EQ(permuted({7, 8, 9}, {2, 2}), id_list({7, 8, 8}));        // the last move wins
  EXPECT_EQ(permuted({7, 8, 9}, {3, 1}), id_list({7, 8, 9}));
  EXPECT_EQ(permuted({7, 8, 9}, {}), id_list({7, 8, 9}));
  EXPECT_EQ(permuted({}, {0, 1}), id_list());
  dense1D<unsigned> self{2, 0, 1};
  EXPECT_EQ(permutation(self, self), 0);
  EXPECT_EQ(to_list(self), id_list({0, 1, 2}));
}

TEST(permutation, leaves_a_callers_memory) {
  unsigned memory[] = {7, 8, 9};
  dense1D<unsigned> view(3, memory);
  EXPECT_EQ(permutation(view, {2, 0, 1}), 0);
  EXPECT_EQ(to_list(view), id_list({8, 9, 7}));
  EXPECT_ALL(memory[0] == 7, memory[1] == 8, memory[2] == 9);
}

TEST(change_indices, by_a_table_that_it_changes) {
  dense1D<unsigned> ids{1, 2, 0, 3, 9};
  change_indices(ids, ids);
  EXPECT_EQ(to_list(ids), id_list({2, 0, 1, 3, 9}));
  dense1D<unsigned> part = ids.sub_vector(1, 3);  // 0 1 3
  change_indices(part, ids);
  EXPECT_EQ(to_list(ids), id_list({2, 2, 0, 3, 9}));
}

// What shares a block and where is swept by sharing_test.cpp; here one object takes several parts.
TEST(ids, one_array_passed_twice) {
  dense1D<unsigned> values{2, 0, 2, none, 1}, order = values, both, again;
  EXPECT_EQ(get_sorted_order(values, order, both), 0);
  EXPECT_EQ(to_list(order), id_list({1, 4, 0, 2}));
  EXPECT_EQ(to_list(values), id_list({2, 0, 2, none, 1}));
  EXPECT_EQ(get_sorted_order(values, again, again), 0);
  EXPECT_TRUE(to_list(again) == id_list({1, 4, 0, 2}) || again == both);
  EXPECT_EQ(get_IDs(values, values, again, again), 0);
  EXPECT_EQ(to_list(again), id_list({0, 1, none, none, 4}));
  EXPECT_EQ(get_IDs(values, order, values, order), 0);
  EXPECT_EQ(to_list(values), id_list({4, none, 1, 0}));
  EXPECT_EQ(to_list(order), id_list({3, 2, none, none, 0}));
}

TEST(get_IDs, matches_values) {
  generator random(5);
  dense1D<unsigned> B_in_A{1, 2, 3}, A_in_B;
  for (unsigned round = 0; round < 200; ++round) {
    const unsigned range = 1 + below(random, 60);
    id_list a = list(random, below(random, 40), range), b = list(random, below(random, 40), range);
    for (id_list* ids : {&a, &b}) {  // also indices near the upper end
      for (unsigned& v : *ids) v = round % 3 != 0 || v == none ? v : none - 1 - v;
    }
    id_list expected_a(a.size(), none), expected_b(b.size(), none);
    for (unsigned j = 0; j < b.size(); ++j) {
      const auto i = static_cast<unsigned>(std::find(a.begin(), a.end(), b[j]) - a.begin());
      if (b[j] == none || i == a.size()) continue;
      expected_b[j] = i;
      if (expected_a[i] == none) expected_a[i] = j;
    }
    ASSERT_EQ(get_IDs(to_array(a), to_array(b), B_in_A, A_in_B), 0);
    ASSERT_EQ(to_list(B_in_A), expected_b);
    ASSERT_EQ(to_list(A_in_B), expected_a);
  }
}

// Few distinct entries, so that there are duplicates, tied largest entries and entries `~0U` of all kinds.
TEST(get_IDs, matches_columns) {
  generator random(6);
  dense1D<unsigned> B_in_A, A_in_B;
  for (unsigned round = 0; round < 600; ++round) {
    const unsigned rows = below(random, 7), nodes = 1 + below(random, 5);
    const dense2D<unsigned> A = with_gaps(connectivity(random, rows, below(random, 40), nodes), 3U);
    const dense2D<unsigned> B = with_gaps(connectivity(random, rows, below(random, 40), nodes), 4U);
    for (const bool exact : {true, false}) {
      const auto expected = reference::match_columns(A, B, exact);
      ASSERT_EQ(get_IDs(A, B, B_in_A, A_in_B, exact), 0);
      ASSERT_EQ(to_list(B_in_A), expected.first) << "rows " << rows << ", exact " << exact;
      ASSERT_EQ(to_list(A_in_B), expected.second) << "rows " << rows << ", exact " << exact;
    }
  }
}

TEST(get_IDs, refuses_other_row_counts) {
  dense1D<unsigned> B_in_A{1}, A_in_B{1};
  const dense2D<unsigned> quad(4, 1, {1, 2, 3, 4});
  for (const bool exact : {true, false}) {
    EXPECT_EQ(get_IDs(quad, two_triangles(), B_in_A, A_in_B, exact), -2);
    EXPECT_ALL(B_in_A.empty(), A_in_B.empty());
    EXPECT_EQ(get_IDs(dense2D<unsigned>(), quad, B_in_A, A_in_B, exact), -2);
  }
}

TEST(unique_indices, appends_in_order_of_first_appearance) {
  const dense2D<unsigned> m[] = {with_gaps(two_triangles(), 8U), dense2D<unsigned>(),
                                 dense2D<unsigned>(2, 2, {none, 5, 3, none - 1})};
  dense1D<unsigned> ids;
  EXPECT_EQ(unique_indices(ids, m[0]), 0);
  EXPECT_EQ(to_list(ids), id_list({2, 0, 1, 3}));
  EXPECT_EQ(unique_indices(ids, m[0], dense1D<unsigned>{0}), 0);
  EXPECT_EQ(to_list(ids), id_list({2, 0, 1, 3, 2, 1, 3}));
  EXPECT_EQ(unique_indices(ids, ids), 0);
  EXPECT_EQ(to_list(ids), id_list({2, 0, 1, 3, 2, 1, 3, 2, 0, 1, 3}));
  EXPECT_EQ(unique_indices(ids, m + 1, m), -3);
  EXPECT_EQ(ids.size(), 11U);
  ids.clear();
  EXPECT_EQ(unique_indices(ids, m + 3, m + 3), 0);
  EXPECT_EQ(unique_indices(ids, m, m + 3, dense1D<unsigned>{1, 9, none}), 0);
  EXPECT_EQ(to_list(ids), id_list({2, 0, 3, 5, none - 1}));
  EXPECT_EQ(unique_indices(ids, dense1D<unsigned>{5, 0, 77}, ids), 0);
  EXPECT_EQ(to_list(ids), id_list({2, 0, 3, 5, none - 1, 77}));
  EXPECT_EQ(count_unique_indices(m[0]), 4);
  EXPECT_EQ(count_unique_indices(m, m + 3), 6);
  EXPECT_EQ(count_unique_indices(m[1]), 0);
  EXPECT_EQ(count_unique_indices(m, m), 0);
  EXPECT_EQ(count_unique_indices(m + 1, m), -2);
}

// Small, spread and huge indices, since a large table, a hash table and a bit set suit different inputs.
TEST(unique_indices, random_values) {
  generator random(7);
  for (const unsigned range : {1U, 10U, 1000U, 70000U, none}) {
    for (const unsigned base : {0U, 4000000000U, none - 1}) {
      for (const unsigned size : {1U, 30U, 3000U}) {
        id_list values = list(random, size, range), excluded;
        for (unsigned& v : values) v += v < none - base ? base : 0;
        for (unsigned k = 0; k < size / 3; ++k) excluded.push_back(values[below(random, size)]);
        dense1D<unsigned> ids{1, 1};
        ASSERT_EQ(unique_indices(ids, to_array(values), to_array(excluded)), 0);
        id_list expected = reference::unique(values, excluded);
        expected.insert(expected.begin(), {1, 1});
        ASSERT_EQ(to_list(ids), expected) << range << " " << base << " " << size;
        const dense1D<unsigned> array = to_array(values);
        const dense2D<unsigned> whole(1, size, const_cast<unsigned*>(array.data()));
        ASSERT_EQ(count_unique_indices(whole), int(reference::unique(values).size()));
      }
    }
  }
}

// Indices to either side of where flags end and the hash table begins, which depends on how many indices there are: one
// that went into the table must be looked for there when the flags have grown.
TEST(unique_indices, at_the_end_of_the_flags) {
  generator random(9);
  EXPECT_EQ(count_unique_indices(dense2D<unsigned>(3, 1, {5000, 4100, 5000})), 2);
  for (const unsigned behind : {3U, 4095U}) EXPECT_EQ(count_unique_indices(dense2D<unsigned>(4, 1, behind)), 1);
  for (unsigned round = 0; round < 3000; ++round) {
    const unsigned size = 1 + below(random, 30), border = round % 2 == 0 ? 16 * size + 4096 : 1U << below(random, 15);
    id_list values(size);
    for (unsigned& v : values) v = below(random, 3) != 0 ? border + below(random, 12) - 6 : below(random, 4 * border);
    dense1D<unsigned> ids;
    ASSERT_EQ(unique_indices(ids, to_array(values)), 0);
    ASSERT_EQ(to_list(ids), reference::unique(values)) << "border " << border;
  }
}

// What takes the nodes of a few elements of a large mesh takes each of them once, in falling order too.
TEST(unique_indices, few_elements_of_a_large_mesh) {
  dense2D<unsigned> mesh(4, 3, {5999, 5998, 5997, 5996, 4203, 4202, 4201, 4200, 5999, 5998, 5997, 5996});
  dense2D<double> coords(2, 6000, 0.0), grown;
  for (unsigned i = 0; i < 6000; ++i) coords(0, i) = i < 5996 ? i : i - 1796;  // the last four lie on the others
  ASSERT_TRUE(grown.copy(coords));
  EXPECT_EQ(count_unique_indices(mesh), 8);
  EXPECT_EQ(translate(grown, vector_fixed<double, 2>{0, 1}, mesh), 8);
  EXPECT_ALL(grown(1, 5999) == 1, grown(1, 4200) == 1, grown(1, 4204) == 0);
  dense2D<unsigned> elements;
  ASSERT_TRUE(elements.copy(mesh));
  EXPECT_EQ(copy_mesh(grown, elements, elements), 0);
  EXPECT_EQ(grown.cols(), 6008U);
  const node_detector detector(coords, mesh);
  dense1D<unsigned> found;
  detector.find_in_box(vector_fixed<double, 2>{0, 0}, vector_fixed<double, 2>{6000, 0}, found);
  EXPECT_EQ(detector.size(), 8U);
  EXPECT_ALL(to_list(found) == reference::unique(to_list(found)), found.size() == 8) << "a node twice";
  EXPECT_EQ(merge(coords, mesh, 0.1, 0), 4);
}

TEST(get_sorted_order, is_stable) {
  generator random(8);
  dense1D<unsigned> order{9}, offsets;
  for (const id_list& values : {id_list{}, {none}, {0}, {4}, {2, 0, 2, none, 1}, list(random, 3000, 400)}) {
    ASSERT_EQ(get_sorted_order(to_array(values), order, offsets), 0);
    ASSERT_EQ(offsets.size(), values.empty() ? 1 : max_ID(to_array(values)) + 2U);
    id_list expected_order;
    for (unsigned v = 0; v < offsets.size(); ++v) {
      ASSERT_EQ(offsets[v], expected_order.size());
      for (unsigned i = 0; i < values.size(); ++i) {
        if (values[i] == v) expected_order.push_back(i);
      }
    }
    EXPECT_EQ(to_list(order), expected_order);
  }
  EXPECT_EQ(get_sorted_order({3, none - 1}, order, offsets), -199);
  EXPECT_ALL(order.empty(), offsets.empty());
}

}  // namespace
}  // namespace qel::gridwork
