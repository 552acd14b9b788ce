// dense1D, dense2D and their storage blocks.
#include "qel/dense.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "facts.h"

// Requests beyond the address space must come back as null from the sanitizers' allocators, too.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }
extern "C" const char* __tsan_default_options() { return "allocator_may_return_null=1"; }

namespace {

using qel::dense1D;
using qel::dense2D;
using qel::vector_num;
using std::uint64_t;

constexpr uint64_t huge = ~uint64_t{0};

template <class T>
std::vector<T> values_of(const dense1D<T>& a) {
  return std::vector<T>(a.begin(), a.end());
}

template <class T>
std::vector<T> values_of(const dense2D<T>& a) {
  std::vector<T> values;
  for (uint64_t j = 0; j < a.cols(); ++j) values.insert(values.end(), a.begin_column(j), a.end_column(j));
  return values;
}

template <class T>
::testing::AssertionResult has_shape(const dense2D<T>& a, uint64_t rows, uint64_t cols, uint64_t ld) {
  if (a.rows() == rows && a.cols() == cols && a.ld() == ld && a.size() == rows * cols) {
    return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure() << a.rows() << " x " << a.cols() << ", ld " << a.ld() << ", size " << a.size();
}

using ids = std::vector<unsigned>;

TEST(vector_num, grows_to_the_largest_of_the_three_bounds) {
  struct {
    uint64_t first, min, factor, capacity;
  } const cases[] = {{0, 0, 0, 2}, {0, 1, 2, 2},  {0, 7, 3, 7},   {5, 0, 0, 2},  {5, 0, 1, 5},
                     {5, 6, 1, 6}, {5, 6, 2, 10}, {5, 11, 2, 11}, {7, 8, 3, 21}, {2, 3, 1, 3}};
  for (const auto& c : cases) {
    vector_num<unsigned> block;
    ASSERT_TRUE(c.first == 0 || block.__grow(c.first, 0, 1));
    ASSERT_EQ(block.capacity(), c.first);
    for (uint64_t i = 0; i < c.first; ++i) block.data()[i] = unsigned(100 + i);
    const uint64_t keep = (std::min)(c.first, c.capacity);
    ASSERT_TRUE(block.__grow(c.min, keep, c.factor));
    EXPECT_EQ(block.capacity(), c.capacity);
    for (uint64_t i = 0; i < keep; ++i) EXPECT_EQ(block.data()[i], 100 + i);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block.data()) % 8, 0U);
  }
  vector_num<unsigned> less;
  ASSERT_ALL(less.__grow(500, 0, 1), less.__grow(3, 500, 0));  // keeps no more than fits
  EXPECT_EQ(less.capacity(), 3U);
}

TEST(vector_num, is_unchanged_when_a_size_overflows_and_aligned_as_asked) {
  vector_num<double, 64> block;
  ASSERT_TRUE(block.__grow(5, 0, 1));
  block.data()[4] = 3.5;
  const double* const data = block.data();
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(data) % 64, 0U);
  EXPECT_FALSE(block.__grow(huge, 5, 1));
  EXPECT_FALSE(block.__grow(huge / 8, 5, 1));           // the bytes for the alignment do not fit
  EXPECT_FALSE(block.__grow(6, 5, huge / 5 + 1));       // capacity * factor overflows
  EXPECT_FALSE(block.__grow(6, 5, huge / 40 + 1));      // the same in bytes
  EXPECT_FALSE(block.__grow(uint64_t{1} << 58, 5, 1));  // beyond the address space
  EXPECT_ALL(block.data() == data, block.capacity() == 5, data[4] == 3.5);
}

TEST(dense1D, constructors) {
  EXPECT_ALL(dense1D<double>().empty(), dense1D<double>().data() == nullptr);
  EXPECT_EQ(values_of(dense1D<unsigned>(3, 0)), ids(3, 0));
  EXPECT_EQ(values_of(dense1D<int>(2, -7)), std::vector<int>(2, -7));
  EXPECT_EQ(values_of(dense1D<double>(2, 0)), std::vector<double>(2, 0.0));
  EXPECT_EQ(values_of(dense1D<unsigned>{3, 0}), (ids{3, 0}));
  EXPECT_ALL(dense1D<unsigned>(huge, 1).empty(), dense1D<unsigned>(huge / 8).empty());

  unsigned memory[5] = {1, 2, 3, 4, 5};
  dense1D<unsigned> view(4, memory);
  EXPECT_ALL(view.data() == memory, view.size() == 4, view.capacity() == 4);
  view[0] = 9;
  ASSERT_ALL(view.resize(2), view.resize(4, 8));
  EXPECT_ALL(view.data() == memory, memory[0] == 9, memory[1] == 2, memory[2] == 8, memory[3] == 8);
  ASSERT_TRUE(view.push_back(7));  // leaves the caller's memory
  view[0] = 6;
  EXPECT_ALL(view.data() != memory, memory[0] == 9, memory[4] == 5);
  EXPECT_EQ(values_of(view), (ids{6, 2, 8, 8, 7}));
}

// What views share, and when they leave, is held against a model by fuzz/containers.cpp; here what that does not do.
TEST(dense1D, parts_moves_and_growth_factors) {
  dense1D<unsigned> a{0, 1, 2, 3, 4, 5};
  const dense1D<unsigned> same(a);
  dense1D<unsigned> part = a.sub_vector(2, 3).sub_vector(1, 2), second = same.sub_vector(4, 2);
  EXPECT_ALL(part.offset() == 3, same.sub_vector(3, 1) == dense1D<unsigned>{3});
  EXPECT_EQ(part = 8U, 8U);
  EXPECT_ALL(same == dense1D<unsigned>({0, 1, 2, 8, 8, 5}), same != dense1D<unsigned>({0, 1, 2, 8, 8}));
  const dense1D<unsigned> moved(std::move(a));
  EXPECT_ALL(a.empty(), a.data() == nullptr, moved.data() == same.data());
  ASSERT_TRUE(second.reserve(3, 5));
  EXPECT_ALL(second == dense1D<unsigned>({8, 5}), second.capacity() >= 10);
}

/// How often an array moves while it grows to 100 000 entries, or columns.
template <class Array, class Append>
unsigned moves_of(Array grown, Append append) {
  unsigned moves = 0;
  for (unsigned i = 0; i < 100000; ++i) {
    const double* const data = grown.data();
    EXPECT_TRUE(append(grown, i));
    moves += data != grown.data();
  }
  return moves;
}

TEST(dense1D, appending_is_amortised_constant) {
  EXPECT_LE(moves_of(dense1D<double>(), [](auto& a, unsigned i) { return a.push_back(i); }), 20U);
  EXPECT_LE(moves_of(dense1D<double>(), [](auto& a, unsigned i) { return a.resize(i + 1); }), 20U);
  EXPECT_LE(moves_of(dense1D<double>(), [](auto& a, unsigned i) { return a.resize(i + 1, 7); }), 20U);
}

TEST(dense1D, empty_ones_are_sized_exactly) {
  dense1D<unsigned> a;
  ASSERT_TRUE(a.resize(5));
  EXPECT_EQ(a.capacity(), 5U);
  a.clear();
  ASSERT_TRUE(a.resize(6));
  EXPECT_EQ(a.capacity(), 6U);
  ASSERT_TRUE(a.resize(7));
  EXPECT_EQ(a.capacity(), 12U);
}

TEST(dense1D, copies_leave_a_callers_memory) {
  unsigned memory[] = {1, 2, 3};
  dense1D<unsigned> view(3, memory), self(2, memory);
  EXPECT_ALL(view.is_borrowed(), view.shares_block(self), self.shares_block(view.sub_vector(2, 1)));
  ASSERT_ALL(view.copy({7, 8}), self.copy(self));
  EXPECT_ALL(values_of(view) == (ids{7, 8}), values_of(self) == (ids{1, 2}), self.data() != memory);
  EXPECT_ALL(memory[0] == 1, memory[1] == 2, !view.is_borrowed(), !view.shares_block(self));
}

TEST(dense2D, constructors) {
  EXPECT_TRUE(dense2D<double>().empty());
  EXPECT_EQ(values_of(dense2D<unsigned>(2, 3, 0)), ids(6, 0));
  EXPECT_EQ(values_of(dense2D<double>(2, 3, 0)), std::vector<double>(6, 0.0));
  EXPECT_EQ(values_of(dense2D<unsigned>(2, 2)), ids(4, 0));
  EXPECT_EQ(values_of(dense2D<unsigned>(2, 2, {1, 2, 3})), (ids{1, 2, 3, 0}));
  EXPECT_EQ(values_of(dense2D<unsigned>(1, 2, {1, 2, 3})), (ids{1, 2}));
  EXPECT_ALL(dense2D<unsigned>(3, 0).empty(), dense2D<unsigned>(0, 3, 7).empty());
  EXPECT_TRUE(has_shape(dense2D<unsigned>(3, 0), 3, 0, 3));
  EXPECT_TRUE(has_shape(dense2D<unsigned>(uint64_t{1} << 32, uint64_t{1} << 32), 0, 0, 0));
  EXPECT_TRUE(has_shape(dense2D<double>(uint64_t{1} << 61, 2, {1.0}), 0, 0, 0));

  unsigned memory[10] = {1, 2, 99, 3, 4, 99, 5, 6, 98, 97};
  dense2D<unsigned> view(2, 3, 3, memory);
  EXPECT_ALL(has_shape(view, 2, 3, 3), !view.compact(), view.data() == memory, view.capacity() == 8);
  EXPECT_EQ(values_of(view), (ids{1, 2, 3, 4, 5, 6}));
  dense2D<unsigned> compact(2, 4, memory);
  EXPECT_ALL(has_shape(compact, 2, 4, 2), compact.as_vector().data() == memory, compact(0, 1) == 99);
  view(1, 1) = 44;
  EXPECT_EQ(memory[4], 44U);
  ASSERT_TRUE(view.push_back_column({7, 8}));
  view(0, 0) = 11;
  EXPECT_ALL(memory[0] == 1, memory[8] == 98, memory[9] == 97);
  EXPECT_EQ(values_of(view), (ids{11, 2, 3, 44, 5, 6, 7, 8}));
}

TEST(dense2D, appending_columns_is_amortised_constant) {
  EXPECT_LE(moves_of(dense2D<double>(), [](auto& a, unsigned i) { return a.resize(3, i + 1); }), 20U);
  EXPECT_LE(moves_of(dense2D<double>(), [](auto& a, unsigned i) { return a.resize(3, i + 1, 1); }), 20U);
  EXPECT_LE(
      moves_of(dense2D<double>(3, 2).sub_matrix(1, 0, 2, 2), [](auto& a, unsigned i) { return a.resize(2, i + 2); }),
      20U);
  dense2D<double> gaps = dense2D<double>(3, 2).sub_matrix(1, 0, 2, 2), exact;
  ASSERT_TRUE(gaps.reserve(2, 9));
  const double* const data = gaps.data();
  while (gaps.cols() < 9) ASSERT_TRUE(gaps.push_back_column(gaps.column(0)));
  EXPECT_ALL(gaps.data() == data, gaps.ld() == 3);
  ASSERT_TRUE(exact.resize(3, 5));
  EXPECT_EQ(exact.capacity(), 15U);
}

TEST(dense2D, copies_leave_a_callers_memory) {
  unsigned memory[] = {1, 2, 9, 3, 4, 9};
  dense2D<unsigned> view(2, 2, 3, memory);
  ASSERT_TRUE(view.copy(dense2D<unsigned>(2, 1, {7, 8})));
  EXPECT_ALL(values_of(view) == (ids{7, 8}), memory[0] == 1, memory[1] == 2, memory[2] == 9);
}

TEST(dense2D, sub_matrix_and_as_vector_share_the_entries) {
  dense2D<unsigned> a(3, 4, {0, 10, 20, 1, 11, 21, 2, 12, 22, 3, 13, 23});
  const dense2D<unsigned>& fixed = a;
  dense2D<unsigned> part = a.sub_matrix(1, 1, 2, 3);
  EXPECT_ALL(has_shape(fixed.sub_matrix(2, 3, 1, 1), 1, 1, 3), part.column(2) == &a(1, 3));
  part(1, 2) = 99;
  EXPECT_ALL(fixed(2, 3) == 99, fixed.as_vector()[11] == 99);
  const dense2D<unsigned> columns = fixed.sub_matrix(0, 2, 3, 2);
  EXPECT_ALL(columns.compact(), values_of(columns.as_vector()) == values_of(columns));

  dense2D<unsigned> behind = part.sub_matrix(1, 3, 1, 0);  // starts behind the block
  EXPECT_ALL(behind.empty(), behind.capacity() == 0, behind.resize(1, 2, 7));
  EXPECT_EQ(values_of(behind), (ids{7, 7}));

  const dense2D<unsigned> equal(2, 3, {11, 21, 12, 22, 13, 99});
  EXPECT_ALL(equal == part, equal != a, dense2D<unsigned>(2, 3, 1) != dense2D<unsigned>(3, 2, 1));
  const dense2D<unsigned> moved(std::move(part));
  EXPECT_ALL(has_shape(part, 0, 0, 0), part.data() == nullptr, has_shape(moved, 2, 3, 3));
}

TEST(dense2D, refused_sizes_change_nothing) {
  dense2D<unsigned> a(2, 2, {1, 2, 3, 4});
  EXPECT_FALSE(a.resize(uint64_t{1} << 32, uint64_t{1} << 32) || a.reserve(huge, 2) || a.push_back_column({1}) ||
               a.push_back_column({1, 2, 3}));
  EXPECT_ALL(has_shape(a, 2, 2, 2), values_of(a) == (ids{1, 2, 3, 4}), a.capacity() == 4);
  ASSERT_TRUE(a.resize(huge, 0));
  EXPECT_ALL(a.empty(), a.rows() == huge, a.cols() == 0);
}

TEST(dense2D, a_matrix_without_columns_takes_rows_and_fill_values) {
  dense2D<unsigned> a(3, 2, 5);
  a.clear();
  EXPECT_ALL(has_shape(a, 0, 0, 0), a.capacity() == 6);
  ASSERT_TRUE(a.resize(2, 3, 8));
  EXPECT_EQ(values_of(a), ids(6, 8));
  EXPECT_EQ(a.capacity(), 6U) << "the block is kept for reuse";
  ASSERT_ALL(a.resize(0, 3), a.resize(2, 2, 7));
  EXPECT_EQ(values_of(a), ids(4, 7));
  ASSERT_ALL(a.resize(2, 0), a.push_back_column({1, 2, 3}), a.push_back_column({4, 5, 6}));
  EXPECT_ALL(has_shape(a, 3, 2, 3), values_of(a) == (ids{1, 2, 3, 4, 5, 6}));
  ASSERT_TRUE(a.reserve(3, 5000));
  const unsigned* const data = a.data();
  for (unsigned j = 0; j < 4998; ++j) ASSERT_TRUE(a.push_back_column(a.column(j)));  // own columns
  EXPECT_ALL(a.data() == data, has_shape(a, 3, 5000, 3), a(1, 4999) == 5);
}

}  // namespace
