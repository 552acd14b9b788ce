// Arguments of a call that come to lie in one block.
#include "calls.h"

namespace {

using qel::dense1D;
using qel::dense2D;

constexpr std::uint64_t spare = 4000;

/// Entries for views: in a block of the library's, or in memory of a caller's.
template <class T>
struct common_memory {
  std::uint64_t size;
  dense2D<T> block;
  std::vector<T> lent;

  common_memory(std::uint64_t entries, bool borrowed) : size(entries), block(1, size), lent(borrowed ? size : 0) {}

  void place(dense1D<T>& a, std::uint64_t at) {
    const dense1D<T> old = a;
    a = lent.empty() ? block.as_vector().sub_vector(at, size - at) : dense1D<T>(size - at, lent.data() + at);
    if (!a.resize(old.size())) std::abort();
    std::copy(old.begin(), old.end(), a.begin());
  }

  /// A matrix with one entry takes any shape in place.
  void place(dense2D<T>& a, std::uint64_t at) {
    const dense2D<T> old = a;
    a = lent.empty() ? block.sub_matrix(0, at, 1, 1) : dense2D<T>(1, size - at, lent.data() + at);
    if (!a.resize(1, 1) || !a.resize(old.rows(), old.cols())) std::abort();
    for (std::uint64_t j = 0; j < old.cols(); ++j) std::copy(old.begin_column(j), old.end_column(j), a.column(j));
  }
};

/// The return value parts them again.
template <class A, class B>
std::function<bool()> place_together(A* out, B* other, bool borrowed, bool is_read) {
  using value = typename A::value_type;
  const auto memory = std::make_shared<common_memory<value>>(out->size() + other->size() + spare, borrowed);
  const B old = *other;
  const std::uint64_t before = digest_of(old);
  const std::uint64_t behind = out->size();
  memory->place(*out, 0);
  memory->place(*other, behind);
  return [memory, old, other, before, is_read, out] {
    const bool is_same = !is_read || digest_of(*other) == before;
    if (is_read) *other = old;
    if (!out->copy(*out)) std::abort();
    return is_same;
  };
}

}  // namespace

void sharing::arrange(std::string_view call, std::initializer_list<argument> arguments) {
  unsigned pair = 0;
  const auto try_pair = [&](const argument& a, const any_array& partner, bool is_read) {
    std::visit(
        [&](auto out, auto other) {
          if constexpr (std::is_pointer_v<decltype(out)> && std::is_pointer_v<decltype(other)>) {
            using entry = typename std::remove_pointer_t<decltype(out)>::value_type;
            using other_entry = typename std::remove_pointer_t<decltype(other)>::value_type;
            if constexpr (std::is_same_v<entry, other_entry>) {
              if (static_cast<const void*>(out) == other || pair++ != number_) return;
              end_ = place_together(out, other, borrowed_, is_read);
            }
          }
        },
        a.array, partner);
  };
  for (const argument& a : arguments) {
    for (const auto& [name, array] : in_.arrays()) {
      if (call.find(name) != call.npos) try_pair(a, array, true);
    }
    for (const argument& b : arguments) try_pair(a, b.array, false);
  }
}
