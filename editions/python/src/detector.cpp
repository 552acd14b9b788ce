// The detector, with batches of queries over threads. Queries of several Python threads run side by side, insertions
// alone; the lock is only ever taken without the interpreter's.
#include <algorithm>
#include <cmath>
#include <future>
#include <mutex>
#include <shared_mutex>

#include "arrays.h"
#include "core.h"
#include "failure.h"

namespace core {

namespace {

template <unsigned Dim>
using point = qel::vector_fixed<double, Dim>;

template <unsigned Dim>
point<Dim> column(const matrix& points, std::uint64_t j) {
  point<Dim> p = {};
  std::copy_n(points.column(j), Dim, p.begin());
  return p;
}

template <unsigned Dim>
double distance(const double* a, const point<Dim>& b) {
  double sum = 0;
  for (unsigned i = 0; i < Dim; ++i) sum += (a[i] - b[i]) * (a[i] - b[i]);
  return std::sqrt(sum);
}

/// Calls part(first, last) for parts of [0, count), one for each worker, all but the first on threads of their own.
template <class Part>
void share(std::uint64_t count, unsigned workers, const Part& part) {
  constexpr std::uint64_t least = 256;  // queries that are worth a thread
  const std::uint64_t parts = std::max<std::uint64_t>(1, std::min<std::uint64_t>(workers, count / least));
  std::vector<std::future<void>> others;
  for (std::uint64_t k = 1; k < parts; ++k) {
    others.push_back(std::async(std::launch::async, part, count * k / parts, count * (k + 1) / parts));
  }
  part(std::uint64_t{0}, count / parts);
  for (std::future<void>& other : others) other.get();
}

class detector {
 public:
  /// The detector looks at `coords` as long as it lives; Python keeps the array alive.
  detector(const matrix& coords, const std::optional<indices>& ids) : coords_(std::make_shared<matrix>(coords)) {
    checked(gw::operation::reinit, ids ? tree_.reinit(*coords_, *ids) : tree_.reinit(*coords_));
  }

  detector(const detector& other) : coords_(other.coords_) {
    const auto lock = other.lock_shared();
    tree_ = other.tree_;
    if (tree_.size() != other.tree_.size()) throw std::bad_alloc();
  }

  detector& operator=(const detector&) = delete;
  ~detector() = default;

  unsigned insert(const indices& ids) {
    const std::lock_guard<std::mutex> turn(turn_);
    const std::unique_lock<std::shared_mutex> lock(mutex_);
    return tree_.insert(ids);
  }

  unsigned size() const {
    const auto lock = lock_shared();
    return tree_.size();
  }

  std::pair<indices, values> find_closest(const matrix& points, unsigned workers) const {
    return coords_->rows() == 2 ? closest_points<2>(points, workers) : closest_points<3>(points, workers);
  }

  std::pair<indices, values> find_closest_node(const indices& nodes, unsigned workers) const {
    return coords_->rows() == 2 ? closest_nodes<2>(nodes, workers) : closest_nodes<3>(nodes, workers);
  }

  std::pair<indices, indices> find_in_boxes(const matrix& lower, const matrix& upper, unsigned workers) const {
    const auto lock = lock_shared();
    return coords_->rows() == 2 ? boxes<2>(lower, upper, workers) : boxes<3>(lower, upper, workers);
  }

 private:
  using result = std::pair<indices, values>;

  /// Waits for an insertion that waits already: queries that follow one another closely would else keep it out for ever.
  std::shared_lock<std::shared_mutex> lock_shared() const {
    const std::lock_guard<std::mutex> turn(turn_);
    return std::shared_lock<std::shared_mutex>(mutex_);
  }

  static result sized(std::uint64_t count) {
    result found;
    if (!found.first.resize(count) || !found.second.resize(count)) throw std::bad_alloc();
    return found;
  }

  template <unsigned Dim>
  double distance_to(unsigned node, const point<Dim>& p) const {
    return node == ~0U ? std::numeric_limits<double>::infinity() : distance<Dim>(coords_->column(node), p);
  }

  /// Of each query j of `count`: find(j) and its distance to position(j).
  template <unsigned Dim, class Find, class Position>
  result closest(std::uint64_t count, unsigned workers, Find find, Position position) const {
    result found = sized(count);
    const auto lock = lock_shared();
    share(count, workers, [&](std::uint64_t first, std::uint64_t last) {
      for (std::uint64_t j = first; j < last; ++j) {
        found.first[j] = find(j);
        found.second[j] = distance_to<Dim>(found.first[j], position(j));
      }
    });
    return found;
  }

  template <unsigned Dim>
  result closest_points(const matrix& points, unsigned workers) const {
    const auto position = [&](std::uint64_t j) { return column<Dim>(points, j); };
    return closest<Dim>(
        points.cols(), workers, [&](std::uint64_t j) { return tree_.find_closest(position(j)); }, position);
  }

  template <unsigned Dim>
  result closest_nodes(const indices& nodes, unsigned workers) const {
    const auto position = [&](std::uint64_t j) {
      return nodes[j] < coords_->cols() ? column<Dim>(*coords_, nodes[j]) : point<Dim>{};
    };
    return closest<Dim>(
        nodes.size(), workers, [&](std::uint64_t j) { return tree_.find_closest(nodes[j]); }, position);
  }

  /// The nodes in boxes first .. last - 1; offsets[j + 1] becomes the end of box j, counted from the first of them on.
  template <unsigned Dim>
  indices boxes_in_order(const matrix& lower, const matrix& upper, std::uint64_t first, std::uint64_t last,
                         std::uint64_t* ends) const {
    indices found;
    for (std::uint64_t j = first; j < last; ++j) {
      tree_.find_in_box(column<Dim>(lower, j), column<Dim>(upper, j), found);
      ends[j] = found.size();
    }
    return found;
  }

  /// Each worker lists its boxes; the lists are then put one behind the other.
  template <unsigned Dim>
  std::pair<indices, indices> boxes(const matrix& lower, const matrix& upper, unsigned workers) const {
    const std::uint64_t count = lower.cols();
    std::vector<std::uint64_t> ends(count);
    std::vector<std::uint64_t> starts;
    std::vector<indices> lists;
    std::mutex order;
    share(count, workers, [&](std::uint64_t first, std::uint64_t last) {
      indices found = boxes_in_order<Dim>(lower, upper, first, last, ends.data());
      const std::lock_guard<std::mutex> lock(order);
      const auto place = std::lower_bound(starts.begin(), starts.end(), first) - starts.begin();
      starts.insert(starts.begin() + place, first);
      lists.insert(lists.begin() + place, std::move(found));
    });
    starts.push_back(count);
    return joined(lists, starts, ends);
  }

  static std::pair<indices, indices> joined(const std::vector<indices>& lists, const std::vector<std::uint64_t>& starts,
                                            const std::vector<std::uint64_t>& ends) {
    std::uint64_t total = 0;
    for (const indices& list : lists) total += list.size();
    std::pair<indices, indices> result;  // offsets, nodes
    if (total > ~0U || !result.first.resize(ends.size() + 1, 0) || !result.second.resize(total)) throw std::bad_alloc();
    std::uint64_t before = 0;
    for (std::size_t k = 0; k < lists.size(); ++k) {
      std::copy(lists[k].begin(), lists[k].end(), result.second.begin() + before);
      for (std::uint64_t j = starts[k]; j < starts[k + 1]; ++j) result.first[j + 1] = unsigned(before + ends[j]);
      before += lists[k].size();
    }
    return result;
  }

  std::shared_ptr<const matrix> coords_;
  gw::node_detector tree_;
  mutable std::mutex turn_;
  mutable std::shared_mutex mutex_;
};

}  // namespace

void bind_detector(py::module_& m) {
  const py::call_guard<py::gil_scoped_release> unlocked;
  py::class_<detector>(m, "Detector")
      .def(py::init<const matrix&, const std::optional<indices>&>(), py::keep_alive<1, 2>(), unlocked)
      .def(py::init<const detector&>(), py::keep_alive<1, 2>(), unlocked)
      .def("insert", &detector::insert, unlocked)
      .def("size", &detector::size, unlocked)
      .def("find_closest", &detector::find_closest, unlocked)
      .def("find_closest_node", &detector::find_closest_node, unlocked)
      .def("find_in_boxes", &detector::find_in_boxes, unlocked);
}

}  // namespace core
