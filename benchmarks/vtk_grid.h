// Meshes as VTK holds them.
#ifndef QEL_GRIDWORK_BENCHMARKS_VTK_GRID_H
#define QEL_GRIDWORK_BENCHMARKS_VTK_GRID_H

#include <vtkCellArray.h>
#include <vtkCellType.h>
#include <vtkIdTypeArray.h>
#include <vtkNew.h>
#include <vtkPoints.h>
#include <vtkSmartPointer.h>
#include <vtkUnstructuredGrid.h>

#include <algorithm>

#include "qel/gridwork.h"

inline vtkSmartPointer<vtkUnstructuredGrid> vtk_grid(const qel::dense2D<double>& coords,
                                                     const qel::dense2D<unsigned>& m, int cell_type) {
  const auto rows = static_cast<vtkIdType>(m.rows()), cells = static_cast<vtkIdType>(m.cols());
  vtkNew<vtkIdTypeArray> nodes, offsets;
  nodes->SetNumberOfValues(rows * cells);
  offsets->SetNumberOfValues(cells + 1);
  std::copy_n(m.data(), m.size(), nodes->GetPointer(0));
  for (vtkIdType e = 0; e <= cells; ++e) offsets->SetValue(e, rows * e);
  vtkNew<vtkCellArray> array;
  array->SetData(offsets, nodes);
  vtkNew<vtkPoints> points;
  points->SetDataTypeToDouble();
  points->SetNumberOfPoints(static_cast<vtkIdType>(coords.cols()));
  for (vtkIdType i = 0; i < points->GetNumberOfPoints(); ++i) {
    const double* p = coords.column(static_cast<std::uint64_t>(i));
    points->SetPoint(i, p[0], p[1], p[2]);
  }
  auto grid = vtkSmartPointer<vtkUnstructuredGrid>::New();
  grid->SetPoints(points);
  grid->SetCells(cell_type, array);
  return grid;
}

#endif
