// Arguments and results of a call, as they lie in memory between JavaScript and C++.
#ifndef QEL_GRIDWORK_WEB_SLOTS_H
#define QEL_GRIDWORK_WEB_SLOTS_H

#include <qel/dense.h>

#include <cstdint>

namespace web {

struct slot;

/// What JavaScript has to give back when it has read a result.
struct kept {
  kept() = default;
  kept(const kept&) = delete;
  kept& operator=(const kept&) = delete;
  virtual ~kept() = default;
};

/// The value of an argument, kept until JavaScript has read what became of it.
struct held : kept {
  /// Makes a slot tell of the value.
  virtual void show_in(slot& s) = 0;
};

/// One argument. js/slots.mjs knows where its members lie.
struct slot {
  void* data = nullptr;  ///< entries, slots of a range, or the characters of a path
  std::uint32_t rows = 0;
  std::uint32_t cols = 0;
  std::uint32_t stride = 0;  ///< entries from one column to the next
  held* owner = nullptr;     ///< of the value, once there is one
  std::uint32_t unused = 0;
  double number = 0;
};
static_assert(sizeof(slot) == 32);

template <class T>
void show(const qel::dense1D<T>& list, slot& s) {
  s.data = const_cast<T*>(list.data());
  s.rows = 1;
  s.cols = static_cast<std::uint32_t>(list.size());
  s.stride = 1;
}

template <class T>
void show(const qel::dense2D<T>& matrix, slot& s) {
  s.data = const_cast<T*>(matrix.data());
  s.rows = static_cast<std::uint32_t>(matrix.rows());
  s.cols = static_cast<std::uint32_t>(matrix.cols());
  s.stride = static_cast<std::uint32_t>(matrix.ld());
}

}  // namespace web

#endif
