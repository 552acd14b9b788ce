// Calls of the library, which may be disturbed: what they return, and what has to hold when memory runs out, or when
// arguments share memory.
#ifndef QEL_TESTS_CALLS_H
#define QEL_TESTS_CALLS_H

#include <algorithm>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <new>
#include <string_view>
#include <variant>
#include <vector>

#include "digest.h"
#include "faults.h"
#include "random_meshes.h"

/// What must be true of an argument after a failure. `spoilt`: anything, and the call cannot be repeated.
enum class promise { kept, emptied, kept_or_emptied, blank, anything, spoilt };

using any_array = std::variant<std::monostate, qel::dense1D<unsigned>*, qel::dense2D<unsigned>*, qel::dense1D<double>*,
                               qel::dense2D<double>*>;

/// An argument that a call may change; or another code of a failure than -199.
struct argument {
  promise what = promise::anything;
  const void* object = nullptr;
  std::uint64_t (*look)(const void*) = [](const void*) { return std::uint64_t{0}; };
  bool (*is_blank)(const void*, promise) = nullptr;  ///< empty, or holding nothing but ~0U
  any_array array = {};
  int code = -199;

  bool holds(std::uint64_t before) const {
    if (what == promise::anything || what == promise::spoilt) return true;
    const bool is_kept = (what == promise::kept || what == promise::kept_or_emptied) && look(object) == before;
    return is_kept || (what != promise::kept && is_blank != nullptr && is_blank(object, what));
  }
};

template <class T>
argument make_argument(promise what, const T& x) {
  const auto is_blank = [](const void* object, [[maybe_unused]] promise p) {
    [[maybe_unused]] const T& y = *static_cast<const T*>(object);
    if constexpr (std::is_same_v<T, qel::dense2D<unsigned>>) {
      if (p == promise::blank) return std::all_of(y.data(), y.data() + y.size(), [](unsigned e) { return e == ~0U; });
    }
    if constexpr (requires { y.size(); }) return y.size() == 0;
    return false;
  };
  any_array array;
  if constexpr (std::is_constructible_v<any_array, T*>) array = const_cast<T*>(&x);
  return {what, &x, [](const void* object) { return digest_of(*static_cast<const T*>(object)); }, is_blank, array};
}

inline argument also(int code) { return {.code = code}; }
constexpr auto kept = [](const auto& x) { return make_argument(promise::kept, x); };
constexpr auto emptied = [](const auto& x) { return make_argument(promise::emptied, x); };
constexpr auto kept_or_emptied = [](const auto& x) { return make_argument(promise::kept_or_emptied, x); };
constexpr auto blank = [](const auto& x) { return make_argument(promise::blank, x); };
constexpr auto anything = [](const auto& x) { return make_argument(promise::anything, x); };
constexpr auto spoilt = [](const auto& x) { return make_argument(promise::spoilt, x); };

struct outcome {
  int code = 0;
  bool threw = false;
  std::uint64_t arguments = 0;

  bool operator==(const outcome&) const = default;
};

struct inputs;

/// Lets one argument of a call, the number of which counts all pairs, share memory with an input or with another
/// argument that lies behind it: it has room to grow there.
class sharing {
 public:
  /// With `borrowed`, the memory is a caller's, of which each has a view of its own.
  sharing(inputs& in, unsigned number, bool borrowed) : in_(in), number_(number), borrowed_(borrowed) {}

  /// True when there was such a pair.
  bool found() const { return end_ != nullptr; }

  void arrange(std::string_view call, std::initializer_list<argument> arguments);

  /// Parts them again. False when a call has changed what it only reads.
  bool end() const { return end_(); }

 private:
  inputs& in_;
  unsigned number_;
  bool borrowed_;
  std::function<bool()> end_;
};

/// Of the calls in a body, makes the one whose turn it is.
class trial {
 public:
  trial(unsigned turn, const faults::plan& plan, const outcome* undisturbed, sharing* shared = nullptr)
      : turn_(turn), plan_(plan), undisturbed_(undisturbed), shared_(shared) {}

  const char* name = nullptr;    ///< null: there are fewer calls
  const char* broken = nullptr;  ///< what was not as promised
  bool failed = false;           ///< there was a request to fail
  outcome result;

  void run(const char* call_name, const std::function<int()>& call, std::initializer_list<argument> arguments) {
    if (turn_-- != 0) return;
    name = call_name;
    std::uint64_t before[8], *next = before;
    for (const argument& a : arguments) *next++ = a.look(a.object);
    if (shared_ != nullptr) return run_shared(call, arguments);
    faults::arm(plan_);
    result = attempt(call);
    failed = faults::disarm();
    result.arguments = sum(arguments);
    if (undisturbed_ == nullptr || result == *undisturbed_) return;
    bool allowed = result.threw || result.code == -199, repeatable = true;
    next = before;
    for (const argument& a : arguments) {
      allowed = allowed || result.code == a.code;
      repeatable = repeatable && a.what != promise::spoilt;
      if (!a.holds(*next++)) broken = "an argument";
    }
    if (!allowed) broken = "the code";
    if (!repeatable || broken != nullptr) return;
    outcome again = attempt(call);
    again.arguments = sum(arguments);
    if (!(again == *undisturbed_)) broken = "the next call";
  }

 private:
  void run_shared(const std::function<int()>& call, std::initializer_list<argument> arguments) {
    shared_->arrange(name, arguments);
    if (!shared_->found()) return;
    result = attempt(call);
    result.arguments = sum(arguments);
    if (!shared_->end()) broken = "an input";
    if (!(result == *undisturbed_)) broken = "the result";
  }

#if defined(__cpp_exceptions)
  static outcome attempt(const std::function<int()>& call) {
    try {
      return {call()};
    } catch (const std::bad_alloc&) {
      return {0, true};
    }
  }
#else
  static outcome attempt(const std::function<int()>& call) { return {call()}; }
#endif

  static std::uint64_t sum(std::initializer_list<argument> arguments) {
    digest d;
    for (const argument& a : arguments) d.add(a.look(a.object));
    return d.value;
  }

  unsigned turn_;
  faults::plan plan_;
  const outcome* undisturbed_;
  sharing* shared_;
};

#define CALL(expression, ...) t.run(#expression, [&] { return static_cast<int>(expression); }, {__VA_ARGS__})

struct inputs {
  using matrix = qel::dense2D<unsigned>;
  using nodes = qel::dense2D<double>;

  unsigned dim;
  qel::gridwork::element_type type;
  bool gaps;  ///< matrices are views inside larger ones
  nodes coords, tensors, frames, tensors2d, chain_coords;
  matrix mesh, other, near, sparse, neighbors, boundaries, edges;
  matrix both[2];
  qel::dense1D<int> types;
  qel::dense1D<unsigned> list, more, ancestors;
  qel::dense1D<double> sizes;
  qel::gridwork::node_detector tree, chain;  ///< the chain is so deep that queries need memory

  struct named_array {
    std::string_view name;
    any_array array;
  };

  /// Those that a call may read.
  std::vector<named_array> arrays() {
    return {{"in.coords", &coords}, {"in.tensors", &tensors}, {"in.frames", &frames},
            {"in.mesh", &mesh},     {"in.sparse", &sparse},   {"in.neighbors", &neighbors},
            {"in.both", both},      {"in.both", both + 1},    {"in.boundaries", &boundaries},
            {"in.list", &list},     {"in.more", &more},       {"in.ancestors", &ancestors},
            {"in.sizes", &sizes}};
  }

  template <class T>
  qel::dense2D<T> own(const qel::dense2D<T>& m) const {
    return gaps ? random_meshes::with_gaps(m, T(1)) : random_meshes::deep_copy(m);
  }
};

std::unique_ptr<inputs> make_inputs(qel::gridwork::element_type type, unsigned dim, unsigned count);

/// Each makes the one of its calls whose turn it is.
using call_body = void (*)(trial&, const inputs&);
extern const std::vector<call_body> all_calls;

/// Makes every call, undisturbed, and calls visit(trial, body, turn) after each.
template <class Visit>
void for_each_call(const inputs& in, Visit visit) {
  for (const call_body body : all_calls) {
    for (unsigned turn = 0;; ++turn) {
      trial t(turn, {}, nullptr);
      body(t, in);
      if (t.name == nullptr) break;
      visit(t, body, turn);
    }
  }
}

#endif
