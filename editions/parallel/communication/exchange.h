// Lists of items on their way between ranks.
#ifndef QEL_GRIDWORK_PARALLEL_COMMUNICATION_EXCHANGE_H
#define QEL_GRIDWORK_PARALLEL_COMMUNICATION_EXCHANGE_H

#include <algorithm>
#include <cstdint>
#include <type_traits>

#include "communication/team.h"
#include "qel/dense.h"

namespace qel::gridwork::detail::parallel {

/// What a rank sends: items in the order of their destinations, and for one destination in the order of their making.
template <class Item>
class outbox {
  static_assert(std::is_trivially_copyable_v<Item>);

 public:
  /// `walk(visit)` calls visit(rank, item, ...) for every item, in the same order each time. False when memory ran out.
  template <class Walk>
  [[nodiscard]] bool fill(const team& ranks, Walk walk) {
    const auto count = static_cast<std::uint64_t>(ranks.size());
    offsets_.clear();
    if (!offsets_.resize(count + 1, 0) || !next_.resize(count)) return false;
    walk([this](int rank, const auto&...) { ++offsets_[static_cast<std::uint64_t>(rank) + 1]; });
    for (std::uint64_t r = 0; r < count; ++r) offsets_[r + 1] += offsets_[r];
    items_.clear();
    if (!items_.resize(offsets_[count])) return false;
    rewind();
    walk([this](int rank, const Item& item, const auto&...) { items_[next_place(rank)] = item; });
    return true;
  }

  /// The places of items, as a walk comes by them once more: rewind(), then next_place() for each.
  /// @{
  void rewind() noexcept { std::copy_n(offsets_.begin(), next_.size(), next_.begin()); }
  std::uint64_t next_place(int rank) noexcept { return next_[static_cast<std::uint64_t>(rank)]++; }
  /// @}

  const dense1D<Item>& items() const noexcept { return items_; }
  const rank_offsets& offsets() const noexcept { return offsets_; }

 private:
  dense1D<Item> items_;
  rank_offsets offsets_;
  dense1D<std::uint64_t> next_;
};

/// What a rank gets: items in the order of the ranks that they come from, whenever they came.
template <class Item>
struct inbox {
  dense1D<Item> items;
  rank_offsets offsets;

  std::uint64_t count_from(int rank) const noexcept {
    const auto r = static_cast<std::uint64_t>(rank);
    return offsets[r + 1] - offsets[r];
  }

  /// Calls visit(item, source) for every item.
  template <class Visit>
  void for_each(Visit visit) const {
    std::uint64_t i = 0;
    for (std::uint64_t r = 0; r + 1 < offsets.size(); ++r) {
      for (; i < offsets[r + 1]; ++i) visit(items[i], static_cast<int>(r));
    }
  }
};

/// Delivers all outboxes. The code of all ranks, given that of the work before.
template <class Item>
[[nodiscard]] int exchange(team& ranks, int code, const outbox<Item>& out, inbox<Item>& in) {
  ranks.announce(code, out.offsets());
  in.items.clear();
  if (!ranks.announced(in.offsets) || !in.items.resize(in.offsets[in.offsets.size() - 1])) code = out_of_memory;
  return ranks.transfer(code, reinterpret_cast<const char*>(out.items().data()), out.offsets(),
                        reinterpret_cast<char*>(in.items.data()), in.offsets, sizeof(Item));
}

/// Returns an answer for each item of an inbox, in its order, to the rank where the item came from: there `answers` are in
/// the order of the outbox.
template <class Asked, class Answer>
[[nodiscard]] int reply(team& ranks, int code, const inbox<Asked>& asked, const dense1D<Answer>& given,
                        const outbox<Asked>& sent, dense1D<Answer>& answers) {
  answers.clear();
  if (code == 0 && !answers.resize(sent.items().size())) code = out_of_memory;
  return ranks.transfer(code, reinterpret_cast<const char*>(given.data()), asked.offsets,
                        reinterpret_cast<char*>(answers.data()), sent.offsets(), sizeof(Answer));
}

/// Asks other ranks and takes their answers: walk(visit) calls visit(rank, question, tag) for every question,
/// answer(question, source) gives the answer, take(tag, answer) gets it.
template <class Question, class Answer, class Walk, class GiveAnswer, class Take>
[[nodiscard]] int ask(team& ranks, int code, Walk walk, GiveAnswer answer, Take take) {
  outbox<Question> out;
  inbox<Question> in;
  dense1D<Answer> given;
  dense1D<Answer> got;
  if (code == 0 && !out.fill(ranks, walk)) code = out_of_memory;
  code = exchange(ranks, code, out, in);
  if (code < 0) return code;
  if (given.resize(in.items.size())) {
    Answer* next = given.data();
    in.for_each([&](const Question& question, int source) { *next++ = answer(question, source); });
  } else {
    code = out_of_memory;
  }
  code = reply(ranks, code, in, given, out, got);
  if (code < 0) return code;
  out.rewind();
  walk([&](int rank, const Question&, std::uint64_t tag) { take(tag, got[out.next_place(rank)]); });
  return 0;
}

}  // namespace qel::gridwork::detail::parallel

#endif
