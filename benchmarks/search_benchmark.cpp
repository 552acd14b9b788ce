// node_detector and merge, beside nanoflann, CGAL, VTK and meshoptimizer.
#include <cstdlib>
#include <memory>
#include <vector>

#include "compare.h"
#include "inputs.h"

#ifdef QEL_HAVE_CGAL
#include <CGAL/Fuzzy_iso_box.h>
#include <CGAL/Kd_tree.h>
#include <CGAL/Search_traits_3.h>
#include <CGAL/Simple_cartesian.h>
#endif
#ifdef QEL_HAVE_VTK
#include <vtkDoubleArray.h>
#include <vtkNew.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>
#include <vtkStaticPointLocator.h>
#endif
#ifdef QEL_HAVE_NANOFLANN
#include <nanoflann.hpp>
#endif
#ifdef QEL_HAVE_MESHOPTIMIZER
#include <meshoptimizer.h>
#endif

namespace {

using qel::dense1D;
using qel::dense2D;
using qel::gridwork::node_detector;
using point = qel::vector_fixed<double, 3>;

point point_at(const dense2D<double>& points, std::uint64_t j) { return {points(0, j), points(1, j), points(2, j)}; }

#ifdef QEL_HAVE_NANOFLANN
struct cloud {
  dense2D<double> points;

  std::size_t kdtree_get_point_count() const { return points.cols(); }
  double kdtree_get_pt(std::size_t j, std::size_t k) const { return points.data()[3 * j + k]; }
  template <class Box>
  bool kdtree_get_bbox(Box&) const {
    return false;
  }
};

struct flann_tree {
  using metric = nanoflann::L2_Simple_Adaptor<double, cloud>;
  using index = nanoflann::KDTreeSingleIndexAdaptor<metric, cloud, 3, std::size_t>;

  explicit flann_tree(const dense2D<double>& points)
      : data{points}, tree(3, data, nanoflann::KDTreeSingleIndexAdaptorParams(10)) {
    tree.buildIndex();
  }

  cloud data;
  index tree;
};

std::size_t sum_of_closest(const flann_tree& flann, const dense2D<double>& queries) {
  std::size_t sum = 0;
  for (std::uint64_t j = 0; j < queries.cols(); ++j) {
    std::size_t closest = 0;
    double square = 0;
    flann.tree.knnSearch(queries.column(j), 1, &closest, &square);
    sum += closest;
  }
  return sum;
}

/// The second of the two nearest is the nearest other node.
std::size_t sum_of_closest_others(const flann_tree& flann, const dense2D<double>& nodes) {
  std::size_t sum = 0;
  for (std::uint64_t j = 0; j < nodes.cols(); ++j) {
    std::size_t closest[2] = {};
    double squares[2] = {};
    flann.tree.knnSearch(nodes.column(j), 2, closest, squares);
    sum += closest[1];
  }
  return sum;
}

/// There is no box search; a search in the ball around the box is what its users do instead.
std::size_t nodes_in_boxes(const flann_tree& flann, const dense2D<double>& centres, double half) {
  std::size_t found = 0;
  std::vector<std::pair<std::size_t, double>> in_ball;
  const nanoflann::SearchParams any_order(32, 0.0F, false);
  for (std::uint64_t j = 0; j < centres.cols(); ++j) {
    in_ball.clear();
    const double* c = centres.column(j);
    flann.tree.radiusSearch(c, 3 * half * half, in_ball, any_order);
    for (const auto& [node, square] : in_ball) {
      const double* p = flann.data.points.column(node);
      bool inside = true;
      for (unsigned k = 0; k < 3; ++k) inside &= p[k] >= c[k] - half && p[k] <= c[k] + half;
      found += inside ? 1 : 0;
    }
  }
  return found;
}

std::size_t merge_by_radius_search(const dense2D<double>& nodes, double tol) {
  const flann_tree flann(nodes);
  std::vector<unsigned> map(nodes.cols());
  std::vector<std::pair<std::size_t, double>> in_ball;
  const nanoflann::SearchParams any_order(32, 0.0F, false);
  for (unsigned i = 0; i < map.size(); ++i) {
    in_ball.clear();
    flann.tree.radiusSearch(nodes.column(i), tol * tol, in_ball, any_order);
    std::size_t lowest = i;
    for (const auto& [node, square] : in_ball) lowest = std::min(lowest, node);
    map[i] = map[lowest];
  }
  return map.back();
}
#endif

#ifdef QEL_HAVE_CGAL
using cgal_point = CGAL::Simple_cartesian<double>::Point_3;
using cgal_traits = CGAL::Search_traits_3<CGAL::Simple_cartesian<double>>;
using cgal_tree = CGAL::Kd_tree<cgal_traits>;

std::shared_ptr<cgal_tree> make_cgal_tree(const dense2D<double>& points) {
  auto tree = std::make_shared<cgal_tree>();
  for (std::uint64_t j = 0; j < points.cols(); ++j) tree->insert({points(0, j), points(1, j), points(2, j)});
  tree->build();
  return tree;
}

std::size_t nodes_in_boxes(const cgal_tree& tree, const dense2D<double>& centres, double half) {
  std::size_t found = 0;
  std::vector<cgal_point> in_box;
  for (std::uint64_t j = 0; j < centres.cols(); ++j) {
    in_box.clear();
    const double* c = centres.column(j);
    const cgal_point low(c[0] - half, c[1] - half, c[2] - half), high(c[0] + half, c[1] + half, c[2] + half);
    tree.search(std::back_inserter(in_box), CGAL::Fuzzy_iso_box<cgal_traits>(low, high));
    found += in_box.size();
  }
  return found;
}
#endif

#ifdef QEL_HAVE_VTK
vtkIdType merge_by_locator(const dense2D<double>& nodes, double tol) {
  vtkNew<vtkDoubleArray> values;
  values->SetNumberOfComponents(3);
  values->SetArray(const_cast<double*>(nodes.data()), static_cast<vtkIdType>(nodes.size()), 1);
  vtkNew<vtkPoints> points;
  points->SetData(values);
  vtkNew<vtkPolyData> data;
  data->SetPoints(points);
  vtkNew<vtkStaticPointLocator> locator;
  locator->SetDataSet(data);
  locator->BuildLocator();
  std::vector<vtkIdType> map(nodes.cols());
  locator->MergePoints(tol, map.data());
  return map.back();
}
#endif

std::size_t nodes_in_boxes(const node_detector& detector, const dense2D<double>& centres, double half) {
  std::size_t found = 0;
  dense1D<unsigned> nodes;
  for (std::uint64_t j = 0; j < centres.cols(); ++j) {
    const point c = point_at(centres, j);
    nodes.clear();
    detector.find_in_box({c[0] - half, c[1] - half, c[2] - half}, {c[0] + half, c[1] + half, c[2] + half}, nodes);
    found += nodes.size();
  }
  return found;
}

void add_detector_benchmarks(const std::string& kind, const dense2D<double>& points, const dense2D<double>& queries) {
  auto nodes = std::make_shared<dense2D<double>>(points);
  auto detector = std::make_shared<node_detector>(*nodes);
  for (unsigned i = 0; i < 100000; ++i) benchmark::DoNotOptimize(detector->find_closest(i));  // makes its balanced tree
  const dense2D<double> boxes = queries.sub_matrix(0, 0, 3, 200000);
  constexpr double half = 1.0;
  add_benchmark("node_detector build, " + kind, "ours", [=] { return node_detector(*nodes).size(); });
  add_benchmark("node_detector build and 100 000 queries, " + kind, "ours", [=] {
    const node_detector fresh(*nodes);
    std::size_t sum = 0;
    for (std::uint64_t j = 0; j < 100000; ++j) sum += fresh.find_closest(point_at(queries, j));
    return sum;
  });
  add_benchmark("find_closest(P), " + kind, "ours", [=] {
    std::size_t sum = 0;
    for (std::uint64_t j = 0; j < queries.cols(); ++j) sum += detector->find_closest(point_at(queries, j));
    return sum;
  });
  add_benchmark("find_closest(node), " + kind, "ours", [=] {
    std::size_t sum = 0;
    for (unsigned i = 0; i < nodes->cols(); ++i) sum += detector->find_closest(i);
    return sum;
  });
  add_benchmark("find_in_box, " + kind, "ours", [=] { return nodes_in_boxes(*detector, boxes, half); });
#ifdef QEL_HAVE_NANOFLANN
  auto flann = std::make_shared<flann_tree>(points);
  add_benchmark("node_detector build, " + kind, "nanoflann", [=] { return flann_tree(points).tree.size(flann->tree); });
  add_benchmark("node_detector build and 100 000 queries, " + kind, "nanoflann",
                [=] { return sum_of_closest(flann_tree(points), queries.sub_matrix(0, 0, 3, 100000)); });
  add_benchmark("find_closest(P), " + kind, "nanoflann", [=] { return sum_of_closest(*flann, queries); });
  add_benchmark("find_closest(node), " + kind, "nanoflann", [=] { return sum_of_closest_others(*flann, points); });
  add_benchmark("find_in_box, " + kind, "nanoflann", [=] { return nodes_in_boxes(*flann, boxes, half); });
#endif
#ifdef QEL_HAVE_CGAL
  const auto cgal = make_cgal_tree(points);
  add_benchmark("find_in_box, " + kind, "CGAL", [=] { return nodes_in_boxes(*cgal, boxes, half); });
#endif
}

void add_merge_benchmarks(const std::string& order, const dense2D<double>& nodes) {
  dense1D<unsigned> all(nodes.cols());
  for (unsigned i = 0; i < all.size(); ++i) all[i] = i;
  const auto merge = [=](const dense2D<double>& coords, double tol) {
    dense1D<unsigned> new_IDs;
    return qel::gridwork::merge(coords, all, new_IDs, tol);
  };
  constexpr double small = 1e-4;
  add_benchmark("merge tol 0, " + order, "ours", [=] { return merge(nodes, 0.0); });
  const dense2D<double> displaced = inputs::displaced(nodes, small / 3);
  add_benchmark("merge small tol, " + order, "ours", [=] { return merge(nodes, small); });
  add_benchmark("merge displaced, " + order, "ours", [=] { return merge(displaced, small); });
#ifdef QEL_HAVE_MESHOPTIMIZER
  add_benchmark("merge tol 0, " + order, "meshoptimizer", [=] {
    std::vector<unsigned> map(nodes.cols());
    return meshopt_generateVertexRemap(map.data(), nullptr, nodes.cols(), nodes.data(), nodes.cols(), 24);
  });
#endif
#ifdef QEL_HAVE_NANOFLANN
  add_benchmark("merge small tol, " + order, "nanoflann", [=] { return merge_by_radius_search(nodes, small); });
#endif
#ifdef QEL_HAVE_VTK
  add_benchmark("merge small tol, " + order, "VTK", [=] { return merge_by_locator(nodes, small); });
  add_benchmark("merge displaced, " + order, "VTK", [=] { return merge_by_locator(displaced, small); });
#endif
}

/// Elements of 60 000 rows, of which few nodes are near; pairs of rows would be quadratic.
void add_tall_elements_benchmark() {
  constexpr unsigned n = 60000;
  dense2D<double> coords(3, n, 0.0);
  dense2D<unsigned> element(n, 1);
  for (unsigned j = 0; j < n; ++j) {
    element(j, 0) = n - 1 - j;
    coords(0, j) = j / 100;
    coords(1, j) = j % 3 == 2 ? coords(1, j - 1) + 0.25 : j % 100;
  }
  add_benchmark("merge in a tall element", "ours", [=] {
    dense2D<unsigned> renumbered;
    if (!renumbered.copy(element)) return -1;
    return qel::gridwork::merge(coords, renumbered, 0.3, 2);
  });
}

}  // namespace

int main(int argc, char** argv) {
  setenv("VTK_SMP_BACKEND_IN_USE", "Sequential", 1);  // all of us run in one thread
  constexpr std::uint64_t million = 1000000;
  add_detector_benchmarks("uniform", inputs::uniform_points(million, 1), inputs::uniform_points(million, 2));
  add_detector_benchmarks("clustered", inputs::clustered_points(million, 1), inputs::clustered_points(million, 1));
  dense2D<double> coords;
  dense2D<unsigned> connectivity;
  inputs::surface(707, coords, connectivity);
  add_merge_benchmarks("soup order", inputs::corners(coords, connectivity, false));
  add_merge_benchmarks("random order", inputs::corners(coords, connectivity, true));
  add_tall_elements_benchmark();
  return run_benchmarks(argc, argv);
}
