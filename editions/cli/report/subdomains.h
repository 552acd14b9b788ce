// The connected parts of a mesh.
#ifndef QEL_GRIDWORK_CLI_REPORT_SUBDOMAINS_H
#define QEL_GRIDWORK_CLI_REPORT_SUBDOMAINS_H

#include "mesh.h"

namespace report {

struct subdomain_options {
  bool walls = false;   ///< faces (in a mesh of faces: edges) of the mesh part it
  bool sheets = false;  ///< sides of three or more elements part the mesh
};

/// Keeps the elements of the largest dimension, and makes the number of its part, from 1 on, the reference of each; parts
/// are connected by sides. The count of the outcome is their number.
outcome color_subdomains(mesh& m, const subdomain_options& options);

/// The elements of each reference from 1 on as a mesh of their own, without unused nodes.
outcome split_by_reference(const mesh& m, std::vector<mesh>& parts);

}  // namespace report

#endif
