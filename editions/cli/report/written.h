// What the rows of the table of formats need to write.
#ifndef QEL_GRIDWORK_CLI_REPORT_WRITTEN_H
#define QEL_GRIDWORK_CLI_REPORT_WRITTEN_H

#include "mesh.h"

namespace report {

// Each of them writes a mesh of types that its format holds.

bool stl_holds(gw::element_type type);
int write_stl(const char* path, const mesh& m, bool text);

bool obj_holds(gw::element_type type);
int write_obj(const char* path, const mesh& m, bool text);

bool medit_holds(gw::element_type type);
int write_medit(const char* path, const mesh& m, bool text);

/// The same with the references of all elements, 0 for those of blocks without, and all digits of the coordinates.
int write_medit_sections(const char* path, const mesh& m);

bool vtk_holds(gw::element_type type);
int write_vtk(const char* path, const mesh& m, bool text);

bool nastran_holds(gw::element_type type);
int write_nastran(const char* path, const mesh& m, bool text);

int write_femap(const char* path, const mesh& m, bool text);

bool ensight_holds(gw::element_type type);
int write_ensight(const char* path, const mesh& m, bool text);

}  // namespace report

#endif
