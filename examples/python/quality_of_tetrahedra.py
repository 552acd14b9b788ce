"""Quality of a tetrahedral mesh, coloured by VTK: a ball of tetrahedra, cut open.

usage: quality_of_tetrahedra.py [FILE]    writes quality_of_tetrahedra.png

FILE is of any format that is read; its tetrahedra are shown. VTK needs a display, or xvfb-run.
"""

# %% A mesh: a file's, or a cube of tetrahedra that is bulged to a ball
import sys

import gridwork as gw
import numpy as np
from gridwork.convert import to_vtk


def ball(cells):
    side = np.linspace(-1, 1, cells + 1)
    coords = np.stack(np.meshgrid(side, side, side, indexing="ij"), -1).reshape(-1, 3)
    corner = np.arange(len(coords)).reshape([cells + 1] * 3)
    cubes = np.stack([corner[i : i + cells, j : j + cells, k : k + cells].ravel() for i in (0, 1) for j in (0, 1) for k in (0, 1)], 1)
    paths = np.array([[0, 1, 3, 7], [0, 1, 5, 7], [0, 2, 3, 7], [0, 2, 6, 7], [0, 4, 5, 7], [0, 4, 6, 7]])
    elements = cubes[:, paths].reshape(-1, 4).astype(np.uint32)
    turned = gw.jacobians(coords, elements, "TETRA4") < 0
    elements[turned] = elements[turned][:, [1, 0, 2, 3]]
    radius = np.linalg.norm(coords, axis=1, keepdims=True)
    return coords * np.abs(coords).max(axis=1, keepdims=True) / np.where(radius == 0, 1, radius), elements


if len(sys.argv) > 1:
    coords, [(_, elements)] = gw.read(sys.argv[1], "TETRA4")
else:
    coords, elements = ball(14)

# %% Quality, and how it is distributed
quality = gw.shape_qualities(coords, elements, "TETRA4")
worst, element = gw.min_quality(coords, elements, "TETRA4")
counts, bounds = np.histogram(quality, bins=10, range=(0, 1))
print(f"{len(elements)} tetrahedra, worst quality {worst:.3f} of element {element}")
for count, lower in zip(counts, bounds):
    print(f"{lower:4.1f} {'#' * int(60 * count / counts.max())}")

# %% What lies behind a plane through the middle, as whole elements
middle = np.mean(gw.bounding_box(coords), axis=0)
shown, sources = gw.clip_whole(coords, elements, middle, [-1.0, 0.6, 0.35], mode=1)

# %% Draw off screen
from vtkmodules.util.numpy_support import numpy_to_vtk
from vtkmodules.vtkFiltersGeometry import vtkDataSetSurfaceFilter
from vtkmodules.vtkIOImage import vtkPNGWriter
from vtkmodules.vtkRenderingAnnotation import vtkScalarBarActor
from vtkmodules.vtkRenderingCore import vtkActor, vtkPolyDataMapper, vtkRenderer, vtkRenderWindow, vtkWindowToImageFilter
import vtkmodules.vtkRenderingFreeType  # noqa: F401
import vtkmodules.vtkRenderingOpenGL2  # noqa: F401

grid = to_vtk(coords, [("TETRA4", shown)])
values = numpy_to_vtk(quality[sources], deep=True)
values.SetName("quality")
grid.GetCellData().SetScalars(values)
surface = vtkDataSetSurfaceFilter()
surface.SetInputData(grid)
mapper = vtkPolyDataMapper()
mapper.SetInputConnection(surface.GetOutputPort())
mapper.SetScalarRange(quality.min(), quality.max())
mapper.GetLookupTable().SetHueRange(0.0, 0.66)
actor = vtkActor()
actor.SetMapper(mapper)
actor.GetProperty().EdgeVisibilityOn()
actor.GetProperty().SetEdgeColor(0.2, 0.2, 0.2)
bar = vtkScalarBarActor()
bar.SetLookupTable(mapper.GetLookupTable())
bar.SetTitle("shape quality")
bar.SetMaximumWidthInPixels(90)
for text in (bar.GetTitleTextProperty(), bar.GetLabelTextProperty()):
    text.SetColor(0, 0, 0)
renderer = vtkRenderer()
renderer.SetBackground(1, 1, 1)
renderer.AddActor(actor)
renderer.AddViewProp(bar)
camera = renderer.GetActiveCamera()
camera.SetPosition(2.2, -2.6, 1.4)
camera.SetViewUp(0, 0, 1)
renderer.ResetCamera()
camera.Zoom(1.2)
camera.SetWindowCenter(0.15, 0)
window = vtkRenderWindow()
window.SetOffScreenRendering(True)
window.SetSize(900, 700)
window.AddRenderer(renderer)
window.Render()
image = vtkWindowToImageFilter()
image.SetInput(window)
writer = vtkPNGWriter()
writer.SetInputConnection(image.GetOutputPort())
writer.SetFileName("quality_of_tetrahedra.png")
writer.Write()
