// The doors of node_detector: checks, and the choice of the planar or the spatial tree.
#include <new>

#include "core/coordinates.h"
#include "core/identity_map.h"
#include "core/result.h"
#include "ids/distinct_indices.h"
#include "qel/gridwork/search.h"
#include "search/tree/node_tree.h"

namespace qel::gridwork {

using namespace detail;

namespace {

/// A tree of the nodes in `ids`; null when memory ran out.
template <unsigned Dim>
node_tree<Dim>* make_tree(const dense2D<double>& coords, const dense1D<unsigned>& ids) {
  auto* tree = new (std::nothrow) node_tree<Dim>(coords);
  if (tree == nullptr || tree->insert(ids)) return tree;
  delete tree;
  return nullptr;
}

/// A copy of `source`, which may be null; null also when memory ran out.
template <unsigned Dim>
node_tree<Dim>* copy_tree(const node_tree<Dim>* source) {
  if (source == nullptr) return nullptr;
  auto* tree = new (std::nothrow) node_tree<Dim>;
  if (tree == nullptr || tree->copy(*source)) return tree;
  delete tree;
  return nullptr;
}

}  // namespace

node_detector::node_detector(const dense2D<double>& coords) { reinit(coords); }

node_detector::node_detector(const dense2D<double>& coords, const dense1D<unsigned>& IDs) { reinit(coords, IDs); }

node_detector::node_detector(const dense2D<double>& coords, const dense2D<unsigned>& connectivity) {
  reinit(coords, connectivity);
}

node_detector::node_detector(const dense2D<double>& coords, const dense2D<unsigned>* first,
                             const dense2D<unsigned>* last) {
  reinit(coords, first, last);
}

node_detector::node_detector(const node_detector& other)
    : planar_(copy_tree(other.planar_)), spatial_(copy_tree(other.spatial_)) {}

node_detector& node_detector::operator=(const node_detector& other) {
  if (this == &other) return *this;
  clear();
  planar_ = copy_tree(other.planar_);
  spatial_ = copy_tree(other.spatial_);
  return *this;
}

node_detector::~node_detector() { clear(); }

void node_detector::clear() {
  delete planar_;
  delete spatial_;
  planar_ = nullptr;
  spatial_ = nullptr;
}

int node_detector::reinit(const dense2D<double>& coords) {
  clear();
  if (!in_plane_or_space(coords)) return -1;
  dense1D<unsigned> all;
  if (!set_identity(all, coords.cols())) return out_of_memory;
  return reinit(coords, all);
}

int node_detector::reinit(const dense2D<double>& coords, const dense1D<unsigned>& IDs) {
  if (!in_plane_or_space(coords)) return -1;
  if (!check_IDs(IDs, node_bound(coords))) return -2;
  clear();
  if (coords.rows() == 2) {
    planar_ = make_tree<2>(coords, IDs);
  } else {
    spatial_ = make_tree<3>(coords, IDs);
  }
  return planar_ != nullptr || spatial_ != nullptr ? 0 : out_of_memory;
}

int node_detector::reinit(const dense2D<double>& coords, const dense2D<unsigned>& connectivity) {
  return reinit(coords, &connectivity, &connectivity + 1);
}

int node_detector::reinit(const dense2D<double>& coords, const dense2D<unsigned>* first,
                          const dense2D<unsigned>* last) {
  dense1D<unsigned> nodes;
  const int result = list_distinct(first, last, nodes);
  return result != 0 ? result : reinit(coords, nodes);
}

unsigned node_detector::insert(const dense1D<unsigned>& IDs) {
  const unsigned old_size = size();
  const bool inserted = planar_ != nullptr ? planar_->insert(IDs) : spatial_ != nullptr ? spatial_->insert(IDs) : false;
  return inserted ? size() - old_size : 0;
}

unsigned node_detector::insert(const dense2D<unsigned>& connectivity) {
  dense1D<unsigned> nodes;
  return list_distinct(connectivity, nodes) == 0 ? insert(nodes) : 0;
}

unsigned node_detector::find_closest(const vector_fixed<double, 2>& P) const {
  if (planar_ != nullptr) return planar_->find_closest(P, none);
  return spatial_ != nullptr ? spatial_->find_closest({P[0], P[1], 0.0}, none) : none;
}

unsigned node_detector::find_closest(const vector_fixed<double, 3>& P) const {
  if (planar_ != nullptr) return planar_->find_closest({P[0], P[1]}, none);
  return spatial_ != nullptr ? spatial_->find_closest(P, none) : none;
}

unsigned node_detector::find_closest(unsigned node) const {
  if (planar_ != nullptr) return planar_->find_closest_to_node(node);
  return spatial_ != nullptr ? spatial_->find_closest_to_node(node) : none;
}

void node_detector::find_in_box(const vector_fixed<double, 2>& Pmin, const vector_fixed<double, 2>& Pmax,
                                dense1D<unsigned>& IDs) const {
  if (planar_ != nullptr) {
    planar_->find_in_box(Pmin, Pmax, IDs);
  } else if (spatial_ != nullptr) {
    spatial_->find_in_box({Pmin[0], Pmin[1], 0.0}, {Pmax[0], Pmax[1], 0.0}, IDs);
  }
}

void node_detector::find_in_box(const vector_fixed<double, 3>& Pmin, const vector_fixed<double, 3>& Pmax,
                                dense1D<unsigned>& IDs) const {
  if (planar_ != nullptr) {
    planar_->find_in_box({Pmin[0], Pmin[1]}, {Pmax[0], Pmax[1]}, IDs);
  } else if (spatial_ != nullptr) {
    spatial_->find_in_box(Pmin, Pmax, IDs);
  }
}

unsigned node_detector::size() const {
  if (planar_ != nullptr) return planar_->size();
  return spatial_ != nullptr ? spatial_->size() : 0;
}

}  // namespace qel::gridwork
