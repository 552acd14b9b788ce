// Views of blocks that they share, each operation held against plain vectors that stand for the blocks.
#include <deque>
#include <memory>

#include "fuzz/input.h"

extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }

namespace {

using namespace fuzz;
using array = dense1D<unsigned>;
using matrix = dense2D<unsigned>;
using values = std::vector<unsigned>;

constexpr std::uint64_t huge[] = {1ULL << 60, 1ULL << 61, 1ULL << 63, ~0ULL};  // cannot be had

/// Where a view lies in a plain vector that stands for its block. An array is a matrix of one row.
struct place {
  std::shared_ptr<values> block;
  const unsigned* base = nullptr;  ///< start of the real block
  std::uint64_t offset = 0, rows = 0, cols = 0, ld = 0;

  unsigned& at(std::uint64_t i, std::uint64_t j) const { return (*block)[offset + j * ld + i]; }

  values entries() const {
    values all;
    for (std::uint64_t k = 0; k < rows * cols; ++k) all.push_back(at(k % rows, k / rows));
    return all;
  }
};

unsigned& entry(array& view, std::uint64_t, std::uint64_t j) { return view[j]; }
unsigned& entry(matrix& view, std::uint64_t i, std::uint64_t j) { return view(i, j); }

template <class View>
struct tracked : place {
  static constexpr bool is_array = std::is_same_v<View, array>;

  View view;

  void look_at(const place& other) { static_cast<place&>(*this) = other; }

  void check() {
    CHECK(view.size() == rows * cols);
    if constexpr (!is_array) CHECK(view.rows() == rows && view.cols() == cols && view.ld() == ld);
    for (std::uint64_t k = 0; k < rows * cols; ++k) {
      CHECK(entry(view, k % rows, k / rows) == at(k % rows, k / rows));
    }
  }

  /// Calls change(), after which the view should have this shape and these entries, in the old block or a new one: it
  /// stays where there is room, and leaves where it would move entries that another view sees.
  template <class Change>
  void become(std::uint64_t new_rows, std::uint64_t new_cols, std::uint64_t new_ld, const values& all, bool must_stay,
              bool may_stay, Change change) {
    CHECK(change());
    const unsigned* const now = view.data() - view.offset();
    CHECK((!must_stay || now == base) && (may_stay || now != base));
    if (now != base || block == nullptr) block = std::make_shared<values>();
    look_at({block, now, view.offset(), is_array ? 1 : new_rows, new_cols, is_array ? 1 : new_ld});
    block->resize(std::max<std::size_t>(block->size(), offset + view.capacity()));
    for (std::uint64_t k = 0; k < all.size(); ++k) at(k % rows, k / rows) = all[k];
  }

  void resize(std::uint64_t new_rows, std::uint64_t new_cols, bool fills, unsigned next) {
    const std::uint64_t kept_rows = std::min(rows, new_rows), kept_cols = kept_rows == 0 ? 0 : std::min(cols, new_cols);
    const bool stays = kept_cols <= 1 || new_rows == ld || block.use_count() == 1;
    values all;
    std::vector<std::uint64_t> fresh;
    for (std::uint64_t k = 0; k < new_rows * new_cols; ++k) {
      const bool kept = k % new_rows < kept_rows && k / new_rows < kept_cols;
      if (!kept) fresh.push_back(k);
      all.push_back(kept ? at(k % new_rows, k / new_rows) : fills ? next : next++);
    }
    become(new_rows, new_cols, new_rows, all, stays && all.size() <= view.capacity(), stays, [&] {
      if constexpr (is_array) {
        if (fills) return view.resize(new_cols, next);
        if (!view.resize(new_cols)) return false;
      } else {
        if (fills) return view.resize(new_rows, new_cols, next);
        if (!view.resize(new_rows, new_cols)) return false;
      }
      for (const std::uint64_t k : fresh) entry(view, k % new_rows, k / new_rows) = all[k];
      return true;
    });
  }

  /// Appends columns, of an array entries.
  template <class Change>
  void append(const values& more, std::uint64_t count, Change change) {
    values all = entries();
    all.insert(all.end(), more.begin(), more.end());
    const bool fits = (is_array ? cols + count : ld * cols + rows) <= view.capacity();
    become(rows, cols + count, ld, all, fits, true, change);
  }
};

template <class View>
class machine {
 public:
  explicit machine(input& in) : in_(in) {}

  void step() {
    next_ += 100;
    tracked<View>&a = views_[in_.below(5)], &b = views_[in_.below(5)];
    const unsigned action = in_.below(10);
    if (action < 6) operate(a, in_.below(6), in_.below(8));
    if (action == 6) {
      const auto is_base = [&a](const values& memory) { return memory.data() == a.base; };
      const bool borrowed = std::any_of(lent_.begin(), lent_.end(), is_base);
      const bool leaves = borrowed || (a.block.use_count() > 1 && &a != &b);
      a.become(b.rows, b.cols, b.rows, b.entries(), false, !leaves, [&] { return a.view.copy(b.view); });
    } else if (action == 7) {
      a.view.shallow_copy(b.view), a.look_at(b);
      CHECK(a.view == b.view && a.view.data() == b.view.data());
    } else if (action == 8) {
      look_at_part(a, b);
    } else if (action == 9 && &a != &b) {
      empty(a, b);
    }
    for (tracked<View>& t : views_) t.check();
  }

 private:
  using view_type = tracked<View>;

  void operate(view_type& a, unsigned rows, unsigned cols) {
    const std::uint64_t refused = huge[in_.below(4)], capacity = a.view.capacity();
    const unsigned value = next_;
    switch (in_.below(5)) {
      case 0:
        return a.resize(view_type::is_array ? 1 : rows, cols, in_.flag(), next_);
      case 1: {
        const std::uint64_t stride = std::max<std::uint64_t>(rows, a.cols == 0 ? 0 : a.ld);
        const std::uint64_t last = cols == 0 ? 0 : (2 * cols - 1) * stride + rows;
        const std::uint64_t wanted = view_type::is_array ? 2 * cols : last, factor = in_.below(4);
        a.become(a.rows, a.cols, a.ld, a.entries(), wanted <= capacity, true, [&] {
          if constexpr (view_type::is_array) return a.view.reserve(wanted, factor);
          if constexpr (!view_type::is_array) return a.view.reserve(rows, 2 * cols);
        });
        CHECK(a.view.capacity() >= wanted);
        if (!view_type::is_array || wanted <= capacity) return;
        CHECK(a.view.capacity() == std::max({wanted, std::uint64_t{2}, factor * capacity}));
        return;
      }
      case 2:
        if constexpr (view_type::is_array) {
          if (in_.flag()) return a.append({value}, 1, [&] { return a.view.push_back(value); });
          return a.append(values(cols, value), cols, [&] { return a.view.push_back_n(value, cols); });
        } else if (a.cols != 0) {  // a column of its own or another
          values column(a.rows, value);
          const unsigned* source = column.data();
          if (in_.flag()) source = a.view.column(cols % a.cols), column.assign(source, source + a.rows);
          return a.append(column, 1, [&] { return a.view.push_back_column(source); });
        }
        return;
      case 3:
        if (a.rows * a.cols != 0) {
          const std::uint64_t i = rows % a.rows, j = cols % a.cols;
          entry(a.view, i, j) = a.at(i, j) = value;
        }
        return;
      default:
        if constexpr (view_type::is_array) CHECK(!a.view.resize(refused, value) && !a.view.push_back_n(value, refused));
        if constexpr (view_type::is_array) CHECK(!a.view.reserve(refused, cols) && !a.view.resize(refused));
        if constexpr (!view_type::is_array)
          CHECK(!a.view.resize(refused, 1 + rows, value) && !a.view.resize(2, refused));
        if constexpr (!view_type::is_array) CHECK(!a.view.reserve(9, refused) && a.view.capacity() == capacity);
    }
  }

  /// a becomes a view of a part of b, or of memory of the caller's.
  void look_at_part(view_type& a, view_type& b) {
    const unsigned j0 = in_.below(8), i0 = view_type::is_array ? 0 : in_.below(5), rows = 1 + in_.below(4);
    if (j0 < b.cols && i0 < b.rows) {
      const std::uint64_t r = 1 + rows % (b.rows - i0), c = 1 + in_.below(8) % (b.cols - j0), ld = b.ld;
      if constexpr (view_type::is_array) a.view = b.view.sub_vector(j0, c);
      if constexpr (!view_type::is_array) a.view = b.view.sub_matrix(i0, j0, std::min(r, b.rows - i0), c);
      a.look_at({b.block, b.base, b.offset + j0 * ld + i0, std::min(r, b.rows - i0), c, ld});
    } else if (lent_.size() < 8) {
      values& memory = lent_.emplace_back(24);
      for (unsigned& value : memory) value = next_++;
      const unsigned r = view_type::is_array ? 1 : rows, ld = view_type::is_array ? 1 : 4, c = 1 + j0 % 6;
      if constexpr (view_type::is_array) a.view = array(c, memory.data());
      if constexpr (!view_type::is_array) a.view = matrix(r, c, ld, memory.data());
      a.look_at({std::make_shared<values>(memory), memory.data(), 0, r, c, ld});
    }
  }

  void empty(view_type& a, view_type& b) {
    in_.flag() ? a.view.clear() : a.view.clear_hard();
    a.look_at(a.view.data() == nullptr ? place() : place{a.block, a.base, a.offset});
    if (in_.flag()) return;
    a.view = std::move(b.view);
    a.look_at(std::exchange(static_cast<place&>(b), place()));
    CHECK(b.view.data() == nullptr && b.view.capacity() == 0);
  }

  input& in_;
  unsigned next_ = 1;
  std::deque<values> lent_;
  view_type views_[5];
};

template <class View>
void run(input& in) {
  machine<View> m(in);
  for (unsigned k = 0; k < 200 && !in.ended(); ++k) m.step();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  input in(data, size);
  (in.flag() ? run<array> : run<matrix>)(in);
  return 0;
}
