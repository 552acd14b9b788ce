// dense1D, dense2D and their storage blocks.
#include "qel/dense.h"

#include <gtest/gtest.h>

#include <memory>
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
  EXPECT_TRUE(dense1D<double>().empty() && dense1D<double>().data() == nullptr);
  EXPECT_EQ(values_of(dense1D<unsigned>(3, 0)), ids(3, 0));
  EXPECT_EQ(values_of(dense1D<int>(2, -7)), std::vector<int>(2, -7));
  EXPECT_EQ(values_of(dense1D<double>(2, 0)), std::vector<double>(2, 0.0));
  EXPECT_EQ(values_of(dense1D<unsigned>{3, 0}), (ids{3, 0}));
  EXPECT_TRUE(dense1D<unsigned>(huge, 1).empty() && dense1D<unsigned>(huge / 8).empty());

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
  dense1D<unsigned> a{0, 1, 2, 3, 4, 5}, copy, other;
  const dense1D<unsigned> same(a);
  dense1D<unsigned> part = a.sub_vector(2, 3).sub_vector(1, 2), head = a.sub_vector(0, 2);
  ASSERT_TRUE(part.offset() == 3 && copy.copy(part));
  part(0) = 30;
  EXPECT_TRUE(same == dense1D<unsigned>({0, 1, 2, 30, 4, 5}) && same.sub_vector(3, 1) == dense1D<unsigned>{30});
  EXPECT_TRUE(copy == dense1D<unsigned>({3, 4}) && a != copy);
  EXPECT_EQ(part = 8U, 8U);
  EXPECT_TRUE(a == dense1D<unsigned>({0, 1, 2, 8, 8, 5}) && a != dense1D<unsigned>({0, 1, 2, 8, 8}));

  // A view that must grow leaves; one with room writes behind its end, as documented.
  ASSERT_TRUE(part.push_back_n(9, 4) && head.push_back(6));
  part[0] = 77;
  EXPECT_EQ(values_of(part), (ids{77, 8, 9, 9, 9, 9}));
  EXPECT_EQ(values_of(same), (ids{0, 1, 6, 8, 8, 5}));

  other.shallow_copy(a);
  a.clear_hard();
  EXPECT_TRUE(a.empty() && a.data() == nullptr && a.capacity() == 0 && other.data() == same.data());
  const dense1D<unsigned> moved(std::move(other));
  EXPECT_TRUE(other.empty() && other.data() == nullptr && moved == same);
  other = dense1D<unsigned>{1, 2};
  dense1D<unsigned> target{5}, second = moved.sub_vector(4, 2);
  target = std::move(other);
  EXPECT_TRUE(other.empty() && other.data() == nullptr && target.size() == 2);
  target = target.sub_vector(1, 1);
  ASSERT_TRUE(target.copy(target) && second.reserve(3, 5));
  EXPECT_TRUE(target == dense1D<unsigned>{2} && second == dense1D<unsigned>({8, 5}) && second.capacity() >= 10);
}

TEST(dense1D, resize_clear_and_push_back_follow_a_vector) {
  std::mt19937 random(3);
  for (unsigned run = 0; run < 200; ++run) {
    dense1D<unsigned> a;
    ids model;
    for (unsigned v = 1; v <= 60; ++v) {
      const unsigned n = random() % 20, action = random() % 6, old_size = unsigned(a.size());
      const uint64_t factor = random() % 4, old_capacity = a.capacity();
      const unsigned* const old_data = a.data();
      const bool fits = (action == 3   ? old_size + n
                         : action == 4 ? 2 * n
                         : action == 2 ? old_size + 1
                                       : n) <= old_capacity;
      ASSERT_TRUE(action == 0   ? a.resize(n)
                  : action == 1 ? a.resize(n, v)
                  : action == 2 ? a.push_back(v)
                  : action == 3 ? a.push_back_n(v, n)
                                : action == 5 || a.reserve(2 * n, factor));
      if (action == 5) a.clear();
      if (action == 0 && n > old_size) std::fill(a.begin() + old_size, a.end(), v);
      const unsigned sizes[] = {n, n, old_size + 1, old_size + n, old_size, 0};
      model.resize(sizes[action], v);
      ASSERT_EQ(values_of(a), model);
      ASSERT_EQ(a.data() == old_data, fits || action == 5);
      if (action == 4 && !fits) {
        ASSERT_EQ(a.capacity(), (std::max)({uint64_t{2} * n, uint64_t{2}, factor * old_capacity}));
      }
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

  dense2D<unsigned> behind = part.sub_matrix(1, 3, 1, 0);  // starts behind the block
  EXPECT_TRUE(behind.empty() && behind.capacity() == 0 && behind.resize(1, 2, 7));
  EXPECT_EQ(values_of(behind), (ids{7, 7}));

  dense2D<unsigned> copy(2, 3, {11, 21, 12, 22, 13, 99});
  EXPECT_TRUE(copy == part && copy != a && dense2D<unsigned>(2, 3, 1) != dense2D<unsigned>(3, 2, 1));
  copy(1, 2) = 5;
  EXPECT_TRUE(copy != part);

  const dense2D<unsigned> moved(std::move(part));
  EXPECT_TRUE(has_shape(part, 0, 0, 0) && part.data() == nullptr && moved.cols() == 3);
  part = std::move(copy);
  EXPECT_TRUE(has_shape(copy, 0, 0, 0) && copy.data() == nullptr && has_shape(part, 2, 3, 2));
}

TEST(dense2D, refused_sizes_change_nothing) {
  constexpr uint64_t half = uint64_t{1} << 32;
  dense2D<unsigned> a(2, 2, {1, 2, 3, 4});
  dense2D<unsigned> b = a.sub_matrix(0, 0, 1, 2);
  const uint64_t sizes[][2] = {{half, half}, {huge, 2}, {3, huge}, {half, half / 4}, {1, half << 28}, {half << 28, 1}};
  for (const auto& [rows, cols] : sizes) {
    for (dense2D<unsigned>* m : {&a, &b}) {
      EXPECT_FALSE(m->resize(rows, cols));
      EXPECT_FALSE(m->resize(rows, cols, 9));
      EXPECT_FALSE(m->reserve(rows, cols));
    }
  }
  EXPECT_TRUE(has_shape(a, 2, 2, 2) && values_of(a) == (ids{1, 2, 3, 4}) && a.capacity() == 4);
  EXPECT_TRUE(has_shape(b, 1, 2, 2) && b.data() == a.data() && values_of(b) == (ids{1, 3}));
  EXPECT_FALSE(a.push_back_column({1}) || a.push_back_column({1, 2, 3}) || a.cols() != 2);
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

/// Where a view lies in a plain vector that stands for its storage block.
struct place {
  std::shared_ptr<ids> block;
  const unsigned* base = nullptr;  // start of the real block
  uint64_t offset = 0, rows = 0, cols = 0, ld = 0;

  unsigned& at(uint64_t i, uint64_t j) const { return (*block)[offset + j * ld + i]; }

  ids entries() const {
    ids all;
    for (uint64_t k = 0; k < rows * cols; ++k) all.push_back(at(k % rows, k / rows));
    return all;
  }
};

struct tracked : place {
  dense2D<unsigned> view;

  void look_at(const place& other) { static_cast<place&>(*this) = other; }

  /// Calls change(), after which the view should have these dimensions and values, in the old or in a new block.
  void become(uint64_t new_rows, uint64_t new_cols, uint64_t new_ld, const ids& values, bool must_stay, bool may_stay,
              auto change) {
    ASSERT_TRUE(change());
    const unsigned* const now = view.data() - view.offset();
    EXPECT_TRUE(!must_stay || now == base) << "moved without need";
    EXPECT_TRUE(may_stay || now != base) << "moved entries that another view may see";
    if (now != base || block == nullptr) block = std::make_shared<ids>();
    look_at({block, now, view.offset(), new_rows, new_cols, new_ld});
    block->resize((std::max)(block->size(), std::size_t(offset + view.capacity())));
    for (uint64_t k = 0; k < values.size(); ++k) at(k % rows, k / rows) = values[k];
  }

  void resize(uint64_t new_rows, uint64_t new_cols, bool fills, unsigned next) {
    const uint64_t kept_rows = (std::min)(rows, new_rows), kept_cols = kept_rows == 0 ? 0 : (std::min)(cols, new_cols);
    const bool stays = kept_cols <= 1 || new_rows == ld || block.use_count() == 1;
    ids values;
    std::vector<uint64_t> fresh;
    for (uint64_t k = 0; k < new_rows * new_cols; ++k) {
      const bool kept = k % new_rows < kept_rows && k / new_rows < kept_cols;
      if (!kept) fresh.push_back(k);
      values.push_back(kept ? at(k % new_rows, k / new_rows) : fills ? next : next++);
    }
    become(new_rows, new_cols, new_rows, values, stays && values.size() <= view.capacity(), stays, [&] {
      if (fills) return view.resize(new_rows, new_cols, next);
      const bool done = view.resize(new_rows, new_cols);
      for (const uint64_t k : fresh) view(k % new_rows, k / new_rows) = values[k];
      return done;
    });
  }

  void push_back(ids column, const unsigned* source) {
    column.insert(column.begin(), rows * cols, 0);
    const ids old = entries();
    std::copy(old.begin(), old.end(), column.begin());
    const bool fits = ld * cols + rows <= view.capacity();
    become(rows, cols + 1, ld, column, fits, true, [&] { return view.push_back_column(source); });
  }

  void check() const {
    ASSERT_TRUE(has_shape(view, rows, cols, ld));
    ASSERT_EQ(values_of(view), entries());
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
      tracked &a = views[random() % 5], &b = views[random() % 5];
      const uint64_t rows = random() % 5, cols = random() % 6, size = a.rows * a.cols;
      next += 100;
      const unsigned action = random() % 12;
      if (action <= 2) {
        a.resize(rows, cols, action == 2, next);
      } else if (action == 3) {
        const bool fits = rows * 2 * cols <= a.view.capacity();
        a.become(a.rows, a.cols, a.ld, a.entries(), fits, true, [&] { return a.view.reserve(rows, 2 * cols); });
        ASSERT_GE(a.view.capacity(), rows * 2 * cols);
      } else if (action == 4 && a.cols != 0) {
        const uint64_t j = random() % a.cols;
        a.push_back(ids(a.view.begin_column(j), a.view.end_column(j)), a.view.column(j));
      } else if (action == 5 && a.cols != 0) {
        const ids column(a.rows, next);
        a.push_back(column, column.data());
      } else if (action == 6) {
        const bool leaves = a.block.use_count() > 1 && &a != &b;
        a.become(b.rows, b.cols, b.rows, b.entries(), false, !leaves, [&] { return a.view.copy(b.view); });
      } else if (action == 7 && b.rows * b.cols != 0) {
        const uint64_t i0 = random() % b.rows, j0 = random() % b.cols, ld = b.ld;
        const uint64_t r = 1 + random() % (b.rows - i0), c = 1 + random() % (b.cols - j0);
        a.view = b.view.sub_matrix(i0, j0, r, c);
        a.look_at({b.block, b.base, b.offset + j0 * ld + i0, r, c, ld});
      } else if (action == 8) {
        a.view.shallow_copy(b.view);
        a.look_at(b);
      } else if (action == 9 && size != 0) {
        const uint64_t k = random() % size;
        a.view(k % a.rows, k / a.rows) = a.at(k % a.rows, k / a.rows) = next;
      } else if (action == 10 && step < 4) {
        for (unsigned& value : memory[step]) value = next++;
        a.view = dense2D<unsigned>(1 + rows % 4, 1 + cols, 4, memory[step].data());
        a.look_at({std::make_shared<ids>(memory[step]), memory[step].data(), 0, 1 + rows % 4, 1 + cols, 4});
      } else if (action == 11 && &a != &b) {
        random() % 2 == 0 ? a.view.clear() : a.view.clear_hard();
        a.look_at(a.view.data() == nullptr ? place() : place{a.block, a.base, a.offset});
        if (random() % 2 == 0) {
          a.view = std::move(b.view);
          a.look_at(std::exchange(static_cast<place&>(b), place()));
        }
      }
      for (const tracked& t : views) t.check();
    }
    ASSERT_FALSE(::testing::Test::HasFailure()) << "run " << run;
  }
}

}  // namespace
