// dense1D, dense2D and their storage blocks.
#include "qel/dense.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <random>
#include <utility>
#include <vector>

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
  EXPECT_TRUE(block.data() == data && block.capacity() == 5 && data[4] == 3.5);
}

TEST(dense1D, constructors) {
  EXPECT_TRUE(dense1D<double>().empty());
  EXPECT_EQ(dense1D<double>().data(), nullptr);
  EXPECT_EQ(values_of(dense1D<int>(3)), std::vector<int>(3, 0));
  EXPECT_EQ(values_of(dense1D<unsigned>(3, 0)), ids(3, 0));
  EXPECT_EQ(values_of(dense1D<unsigned>(2, ~0U)), ids(2, ~0U));
  EXPECT_EQ(values_of(dense1D<int>(2, -7)), std::vector<int>(2, -7));
  EXPECT_EQ(values_of(dense1D<double>(2, 0)), std::vector<double>(2, 0.0));
  EXPECT_EQ(values_of(dense1D<unsigned>{3, 0}), (ids{3, 0}));
  EXPECT_TRUE(dense1D<unsigned>(huge, 1).empty());
  EXPECT_TRUE(dense1D<unsigned>(huge / 8).empty());

  unsigned memory[5] = {1, 2, 3, 4, 5};
  dense1D<unsigned> view(4, memory);
  EXPECT_TRUE(view.data() == memory && view.size() == 4 && view.capacity() == 4);
  view[0] = 9;
  ASSERT_TRUE(view.resize(2) && view.resize(4, 8));
  EXPECT_TRUE(view.data() == memory && memory[0] == 9 && memory[1] == 2 && memory[2] == 8 && memory[3] == 8);
  ASSERT_TRUE(view.push_back(7));  // leaves the caller's memory
  view[0] = 6;
  EXPECT_TRUE(view.data() != memory && memory[0] == 9 && memory[4] == 5);
  EXPECT_EQ(values_of(view), (ids{6, 2, 8, 8, 7}));
}

TEST(dense1D, views_share_copies_do_not) {
  dense1D<unsigned> a{0, 1, 2, 3, 4, 5};
  const dense1D<unsigned> same(a);
  dense1D<unsigned> part = a.sub_vector(2, 3).sub_vector(1, 2), copy;
  EXPECT_EQ(part.offset(), 3U);
  ASSERT_TRUE(copy.copy(part));
  part(0) = 30;
  EXPECT_EQ(values_of(same), (ids{0, 1, 2, 30, 4, 5}));
  EXPECT_EQ(values_of(same.sub_vector(3, 1)), ids{30});
  EXPECT_EQ(values_of(copy), (ids{3, 4}));
  EXPECT_EQ(part = 8U, 8U);
  EXPECT_TRUE(a == same && a != copy && a == dense1D<unsigned>({0, 1, 2, 8, 8, 5}));
  EXPECT_TRUE(a != dense1D<unsigned>({0, 1, 2, 8, 8}));

  // A view that must grow leaves; one with room writes behind its end, as documented.
  ASSERT_TRUE(part.push_back_n(9, 4));
  part[0] = 77;
  EXPECT_EQ(values_of(part), (ids{77, 8, 9, 9, 9, 9}));
  EXPECT_EQ(values_of(same), (ids{0, 1, 2, 8, 8, 5}));
  dense1D<unsigned> head = a.sub_vector(0, 2);
  ASSERT_TRUE(head.push_back(6));
  EXPECT_EQ(values_of(same), (ids{0, 1, 6, 8, 8, 5}));

  dense1D<unsigned> other;
  other.shallow_copy(a);
  a.clear_hard();
  EXPECT_TRUE(a.empty() && a.data() == nullptr && a.capacity() == 0);
  EXPECT_TRUE(other == same && other.data() == same.data());
  const dense1D<unsigned> moved(std::move(other));
  EXPECT_TRUE(other.empty() && other.data() == nullptr && moved == same);
  other = dense1D<unsigned>{1, 2};
  dense1D<unsigned> target{5};
  target = std::move(other);
  EXPECT_TRUE(other.empty() && other.data() == nullptr && target.size() == 2);
  target = target.sub_vector(1, 1);
  ASSERT_TRUE(target.copy(target));
  EXPECT_EQ(values_of(target), ids{2});
  dense1D<unsigned> second = moved.sub_vector(4, 2);
  ASSERT_TRUE(second.reserve(3, 5));
  EXPECT_GE(second.capacity(), 10U);
  EXPECT_EQ(values_of(second), (ids{8, 5}));
}

TEST(dense1D, resize_clear_and_push_back_follow_a_vector) {
  std::mt19937 random(3);
  for (unsigned run = 0; run < 200; ++run) {
    dense1D<unsigned> a;
    ids model;
    for (unsigned step = 0; step < 60; ++step) {
      const unsigned n = random() % 20, v = step + 1;
      switch (random() % 6) {
        case 0: {
          const uint64_t old_capacity = a.capacity();
          const unsigned* const old_data = a.data();
          ASSERT_TRUE(a.resize(n));
          EXPECT_EQ(a.data() == old_data, n <= old_capacity);
          for (uint64_t i = model.size(); i < n; ++i) a[i] = v;
          model.resize(n, v);
          break;
        }
        case 1:
          ASSERT_TRUE(a.resize(n, v));
          model.resize(n, v);
          break;
        case 2:
          ASSERT_TRUE(a.push_back(v));
          model.push_back(v);
          break;
        case 3:
          ASSERT_TRUE(a.push_back_n(v, n));
          model.insert(model.end(), n, v);
          break;
        case 4: {
          const uint64_t factor = random() % 4, old_capacity = a.capacity();
          ASSERT_TRUE(a.reserve(2 * n, factor));
          if (2 * n <= old_capacity) {
            EXPECT_EQ(a.capacity(), old_capacity);
          } else {
            EXPECT_EQ(a.capacity(), (std::max)({uint64_t{2} * n, uint64_t{2}, factor * old_capacity}));
          }
          break;
        }
        default:
          if (random() % 2 == 0) a.clear(), model.clear();
      }
      ASSERT_EQ(values_of(a), model);
    }
  }
  dense1D<double> grown;
  unsigned moves = 0;
  for (unsigned i = 0; i < 100000; ++i) {
    const double* const data = grown.data();
    ASSERT_TRUE(grown.push_back(i));
    moves += data != grown.data();
  }
  EXPECT_LE(moves, 20U) << "appending is amortised constant";
}

TEST(dense1D, refused_sizes_change_nothing) {
  dense1D<unsigned> alone{1, 2, 3};
  dense1D<unsigned> shared{4, 5, 6};
  const dense1D<unsigned> second(shared);
  for (dense1D<unsigned>* a : {&alone, &shared}) {
    const dense1D<unsigned> before = *a == alone ? dense1D<unsigned>{1, 2, 3} : dense1D<unsigned>{4, 5, 6};
    const unsigned* const data = a->data();
    for (const uint64_t n : {huge, huge - 1, huge / 4, huge / 4 - 1, uint64_t{1} << 60}) {
      EXPECT_FALSE(a->resize(n));
      EXPECT_FALSE(a->resize(n, 9));
      EXPECT_FALSE(a->reserve(n, 2));
      EXPECT_FALSE(a->push_back_n(9, n));
    }
    EXPECT_TRUE(*a == before && a->data() == data && a->capacity() == 3);
  }
}

TEST(dense2D, constructors) {
  EXPECT_TRUE(dense2D<double>().empty());
  EXPECT_EQ(values_of(dense2D<unsigned>(2, 3, 0)), ids(6, 0));
  EXPECT_EQ(values_of(dense2D<double>(2, 3, 0)), std::vector<double>(6, 0.0));
  EXPECT_EQ(values_of(dense2D<unsigned>(2, 2)), ids(4, 0));
  EXPECT_EQ(values_of(dense2D<unsigned>(2, 2, {1, 2, 3})), (ids{1, 2, 3, 0}));
  EXPECT_EQ(values_of(dense2D<unsigned>(1, 2, {1, 2, 3})), (ids{1, 2}));
  EXPECT_TRUE(dense2D<unsigned>(3, 0).empty() && dense2D<unsigned>(0, 3, 7).empty());
  EXPECT_TRUE(has_shape(dense2D<unsigned>(3, 0), 3, 0, 3));
  EXPECT_TRUE(has_shape(dense2D<unsigned>(uint64_t{1} << 32, uint64_t{1} << 32), 0, 0, 0));
  EXPECT_TRUE(has_shape(dense2D<double>(uint64_t{1} << 61, 2, {1.0}), 0, 0, 0));

  unsigned memory[10] = {1, 2, 99, 3, 4, 99, 5, 6, 98, 97};
  dense2D<unsigned> view(2, 3, 3, memory);
  EXPECT_TRUE(has_shape(view, 2, 3, 3) && !view.compact() && view.data() == memory && view.capacity() == 8);
  EXPECT_EQ(values_of(view), (ids{1, 2, 3, 4, 5, 6}));
  dense2D<unsigned> compact(2, 4, memory);
  EXPECT_TRUE(has_shape(compact, 2, 4, 2) && compact.as_vector().data() == memory && compact(0, 1) == 99);
  view(1, 1) = 44;
  EXPECT_EQ(memory[4], 44U);
  ASSERT_TRUE(view.push_back_column({7, 8}));
  view(0, 0) = 11;
  EXPECT_TRUE(memory[0] == 1 && memory[8] == 98 && memory[9] == 97);
  EXPECT_EQ(values_of(view), (ids{11, 2, 3, 44, 5, 6, 7, 8}));
}

TEST(dense2D, sub_matrix_and_as_vector_share_the_entries) {
  dense2D<unsigned> a(3, 4, {0, 10, 20, 1, 11, 21, 2, 12, 22, 3, 13, 23});
  const dense2D<unsigned>& fixed = a;
  dense2D<unsigned> part = a.sub_matrix(1, 1, 2, 3);
  EXPECT_TRUE(has_shape(part, 2, 3, 3) && has_shape(fixed.sub_matrix(2, 3, 1, 1), 1, 1, 3));
  EXPECT_EQ(values_of(part), (ids{11, 21, 12, 22, 13, 23}));
  EXPECT_EQ(values_of(part.sub_matrix(1, 1, 1, 2)), (ids{22, 23}));
  EXPECT_EQ(part.column(2), &a(1, 3));
  part(1, 2) = 99;
  EXPECT_TRUE(fixed(2, 3) == 99 && fixed.as_vector()[11] == 99);
  const dense2D<unsigned> columns = fixed.sub_matrix(0, 2, 3, 2);
  EXPECT_TRUE(columns.compact() && values_of(columns.as_vector()) == values_of(columns));

  dense2D<unsigned> copy;
  ASSERT_TRUE(copy.copy(part));
  EXPECT_TRUE(copy == part && has_shape(copy, 2, 3, 2));
  copy(0, 0) = 5;
  EXPECT_TRUE(copy != part && part(0, 0) == 11);
  EXPECT_TRUE(dense2D<unsigned>(2, 3, 1) != dense2D<unsigned>(3, 2, 1));
  ASSERT_TRUE(part.copy(part));
  EXPECT_TRUE(has_shape(part, 2, 3, 2) && part.data() != &a(1, 1));
  EXPECT_EQ(values_of(part), (ids{11, 21, 12, 22, 13, 99}));

  const dense2D<unsigned> moved(std::move(part));
  EXPECT_TRUE(has_shape(part, 0, 0, 0) && part.data() == nullptr && moved.cols() == 3);
  part = std::move(copy);
  EXPECT_TRUE(has_shape(copy, 0, 0, 0) && copy.data() == nullptr && has_shape(part, 2, 3, 2));
}

TEST(dense2D, refused_sizes_change_nothing) {
  constexpr uint64_t half = uint64_t{1} << 32;
  dense2D<unsigned> a(2, 2, {1, 2, 3, 4});
  dense2D<unsigned> b = a.sub_matrix(0, 0, 1, 2);
  for (const auto& [rows, cols] : {std::pair{half, half},
                                   {huge, uint64_t{2}},
                                   {uint64_t{3}, huge},
                                   {half, half / 4},
                                   {uint64_t{1}, uint64_t{1} << 60},
                                   {uint64_t{1} << 60, uint64_t{1}}}) {
    for (dense2D<unsigned>* m : {&a, &b}) {
      EXPECT_FALSE(m->resize(rows, cols));
      EXPECT_FALSE(m->resize(rows, cols, 9));
      EXPECT_FALSE(m->reserve(rows, cols));
    }
  }
  EXPECT_TRUE(has_shape(a, 2, 2, 2) && values_of(a) == (ids{1, 2, 3, 4}) && a.capacity() == 4);
  EXPECT_TRUE(has_shape(b, 1, 2, 2) && b.data() == a.data() && values_of(b) == (ids{1, 3}));
  EXPECT_FALSE(a.push_back_column({1}));
  EXPECT_FALSE(a.push_back_column({1, 2, 3}));
  EXPECT_TRUE(has_shape(a, 2, 2, 2));
  ASSERT_TRUE(a.resize(huge, 0));
  EXPECT_TRUE(a.empty() && a.rows() == huge && a.cols() == 0);
}

TEST(dense2D, a_matrix_without_columns_takes_rows_and_fill_values) {
  dense2D<unsigned> a(3, 2, 5);
  a.clear();
  EXPECT_TRUE(has_shape(a, 0, 0, 0) && a.capacity() == 6);
  ASSERT_TRUE(a.resize(2, 3, 8));
  EXPECT_EQ(values_of(a), ids(6, 8));
  EXPECT_EQ(a.capacity(), 6U) << "the block is kept for reuse";
  ASSERT_TRUE(a.resize(0, 3) && a.resize(2, 2, 7));
  EXPECT_EQ(values_of(a), ids(4, 7));
  ASSERT_TRUE(a.resize(2, 0) && a.push_back_column({1, 2, 3}) && a.push_back_column({4, 5, 6}));
  EXPECT_TRUE(has_shape(a, 3, 2, 3) && values_of(a) == (ids{1, 2, 3, 4, 5, 6}));
  for (unsigned j = 0; j < 2000; ++j) ASSERT_TRUE(a.push_back_column(a.column(j)));  // own columns, while growing
  for (unsigned j = 0; j < 2002; ++j) ASSERT_EQ(a(1, j), j % 2 == 0 ? 2U : 5U);
  ASSERT_TRUE(a.reserve(3, 5000));
  const unsigned* const data = a.data();
  for (unsigned j = 0; j < 2998; ++j) ASSERT_TRUE(a.push_back_column(a.column(j)));
  EXPECT_TRUE(a.data() == data && has_shape(a, 3, 5000, 3));
}

/// A view together with what it should hold: a place in a plain vector that stands for its storage block.
struct tracked {
  dense2D<unsigned> view;
  std::shared_ptr<ids> block;
  const unsigned* base = nullptr;  // start of the real block
  uint64_t offset = 0, rows = 0, cols = 0, ld = 0;

  unsigned& at(uint64_t i, uint64_t j) { return (*block)[offset + j * ld + i]; }

  void write(uint64_t i, uint64_t j, unsigned value) { view(i, j) = at(i, j) = value; }

  void look_at(const tracked& other) {
    block = other.block, base = other.base;
    offset = other.offset, rows = other.rows, cols = other.cols, ld = other.ld;
  }

  /// Follows the view to where its block is now; a block of its own starts without known entries.
  void follow(bool must_stay, bool may_stay) {
    const unsigned* const now = view.data() - view.offset();
    EXPECT_TRUE(!must_stay || now == base) << "moved without need";
    EXPECT_TRUE(may_stay || now != base) << "moved entries that another view may see";
    if (now != base) block = std::make_shared<ids>();
    base = now;
    offset = view.offset();
    if (block == nullptr || block->size() < offset + view.capacity()) {
      if (block == nullptr) block = std::make_shared<ids>();
      block->resize(offset + view.capacity());
    }
  }

  void resize(uint64_t new_rows, uint64_t new_cols, std::optional<unsigned> fill, unsigned next) {
    const uint64_t kept_rows = (std::min)(rows, new_rows), kept_cols = kept_rows == 0 ? 0 : (std::min)(cols, new_cols);
    const bool entries_stay = kept_cols <= 1 || new_rows == ld, fits = new_rows * new_cols <= view.capacity();
    const bool alone = block.use_count() == 1;
    ids kept;
    for (uint64_t j = 0; j < kept_cols; ++j) {
      for (uint64_t i = 0; i < kept_rows; ++i) kept.push_back(at(i, j));
    }
    ASSERT_TRUE(fill ? view.resize(new_rows, new_cols, *fill) : view.resize(new_rows, new_cols));
    follow(fits && (entries_stay || alone), entries_stay || alone);
    rows = ld = new_rows;
    cols = new_cols;
    for (uint64_t j = 0, k = 0; j < cols; ++j) {
      for (uint64_t i = 0; i < rows; ++i) {
        if (j < kept_cols && i < kept_rows) {
          at(i, j) = kept[k++];
        } else if (fill) {
          at(i, j) = *fill;
        } else {
          write(i, j, next++);
        }
      }
    }
  }

  void push_back(const ids& values, const unsigned* source) {
    if (cols == 0) rows = ld = values.size();
    const bool fits = ld * cols + rows <= view.capacity();
    ids kept;
    for (uint64_t k = 0; k < rows * cols; ++k) kept.push_back(at(k % rows, k / rows));
    ASSERT_TRUE(view.push_back_column(source));
    follow(fits, true);
    ++cols;
    for (uint64_t k = 0; k < kept.size(); ++k) at(k % rows, k / rows) = kept[k];
    for (uint64_t i = 0; i < rows; ++i) at(i, cols - 1) = values[i];
  }

  void copy(tracked& other) {
    const bool own_block_in_use = block.use_count() > 1 && this != &other;
    const ids values = values_of(other.view);
    const uint64_t new_rows = other.rows, new_cols = other.cols;
    ASSERT_TRUE(view.copy(other.view));
    follow(false, !own_block_in_use);
    rows = ld = new_rows;
    cols = new_cols;
    for (uint64_t k = 0; k < values.size(); ++k) at(k % rows, k / rows) = values[k];
  }

  void check() {
    ASSERT_TRUE(has_shape(view, rows, cols, ld));
    for (uint64_t k = 0; k < rows * cols; ++k) ASSERT_EQ(view(k % rows, k / rows), at(k % rows, k / rows)) << k;
  }
};

TEST(dense2D, random_operations_on_views_of_shared_blocks_follow_the_model) {
  std::mt19937 random(1);
  unsigned next = 1;
  for (unsigned run = 0; run < 3000; ++run) {
    ids memory[4];
    for (ids& values : memory) values.resize(24);
    tracked views[5];
    for (unsigned step = 0; step < 80 && !::testing::Test::HasFailure(); ++step) {
      tracked& a = views[random() % 5];
      tracked& b = views[random() % 5];
      const uint64_t rows = random() % 5, cols = random() % 6;
      next += 100;
      const unsigned action = random() % 12;
      if (action <= 1) {
        a.resize(rows, cols, std::nullopt, next);
      } else if (action == 2) {
        a.resize(rows, cols, next, 0);
      } else if (action == 3) {
        const bool fits = rows * 2 * cols <= a.view.capacity();
        const ids before = values_of(a.view);
        ASSERT_TRUE(a.view.reserve(rows, 2 * cols));
        ASSERT_GE(a.view.capacity(), rows * 2 * cols);
        const uint64_t known = a.cols == 0 ? 0 : (a.cols - 1) * a.ld + a.rows;
        const ids entries = known == 0 ? ids() : ids(a.block->begin() + a.offset, a.block->begin() + a.offset + known);
        a.follow(fits, true);
        std::copy(entries.begin(), entries.end(), a.block->begin() + a.offset);
      } else if (action == 4 && a.cols != 0) {
        const uint64_t j = random() % a.cols;
        const ids column(a.view.begin_column(j), a.view.end_column(j));
        a.push_back(column, a.view.column(j));
      } else if (action == 5 && a.cols != 0) {
        const ids column(a.rows, next);
        a.push_back(column, column.data());
      } else if (action == 6) {
        a.copy(b);
      } else if (action == 7 && b.rows * b.cols != 0) {
        const uint64_t i0 = random() % b.rows, j0 = random() % b.cols;
        const uint64_t r = 1 + random() % (b.rows - i0), c = 1 + random() % (b.cols - j0), ld = b.ld;
        a.view = b.view.sub_matrix(i0, j0, r, c);
        a.look_at(b);
        a.offset += j0 * ld + i0, a.rows = r, a.cols = c;
      } else if (action == 8) {
        a.view.shallow_copy(b.view);
        a.look_at(b);
      } else if (action == 9 && a.rows * a.cols != 0) {
        a.write(random() % a.rows, random() % a.cols, next);
      } else if (action == 10 && step < 4) {
        const uint64_t ld = 4, r = 1 + rows % 4, c = 1 + cols;
        for (unsigned& value : memory[step]) value = next++;
        a.view = dense2D<unsigned>(r, c, ld, memory[step].data());
        a.block = std::make_shared<ids>(memory[step]);
        a.base = memory[step].data(), a.offset = 0, a.rows = r, a.cols = c, a.ld = ld;
      } else if (action == 11 && &a != &b) {
        random() % 2 == 0 ? a.view.clear() : a.view.clear_hard();
        a.rows = a.cols = a.ld = 0;
        if (a.view.data() == nullptr) a.block = nullptr, a.base = nullptr, a.offset = 0;
        if (random() % 2 == 0) {
          a.view = std::move(b.view);
          a.look_at(b);
          b.look_at(tracked());
        }
      }
      for (tracked& t : views) t.check();
    }
    ASSERT_FALSE(::testing::Test::HasFailure()) << "run " << run;
  }
}

}  // namespace
