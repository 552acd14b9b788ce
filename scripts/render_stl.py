"""Renders an STL file with its edges to a PNG, off screen: xvfb-run -a python3 scripts/render_stl.py IN.stl OUT.png

Needs python3-vtk9 and xvfb. The pictures in docs/images are made by it.
"""

import sys

import vtk


def main():
    reader = vtk.vtkSTLReader()
    reader.SetFileName(sys.argv[1])
    normals = vtk.vtkPolyDataNormals()
    normals.SetInputConnection(reader.GetOutputPort())
    normals.SetFeatureAngle(30)
    mapper = vtk.vtkPolyDataMapper()
    mapper.SetInputConnection(normals.GetOutputPort())
    actor = vtk.vtkActor()
    actor.SetMapper(mapper)
    actor.GetProperty().SetColor(0.55, 0.65, 0.8)
    actor.GetProperty().EdgeVisibilityOn()
    actor.GetProperty().SetEdgeColor(0.2, 0.25, 0.3)

    renderer = vtk.vtkRenderer()
    renderer.SetBackground(1, 1, 1)
    renderer.AddActor(actor)
    window = vtk.vtkRenderWindow()
    window.SetOffScreenRendering(1)
    window.SetSize(520, 400)
    window.SetMultiSamples(8)
    window.AddRenderer(renderer)
    camera = renderer.GetActiveCamera()
    camera.SetPosition(1, -1.4, 1.6)
    camera.SetViewUp(0, 0, 1)
    renderer.ResetCamera()
    camera.Zoom(1.15)
    window.Render()

    image = vtk.vtkWindowToImageFilter()
    image.SetInput(window)
    image.ReadFrontBufferOff()
    writer = vtk.vtkPNGWriter()
    writer.SetFileName(sys.argv[2])
    writer.SetInputConnection(image.GetOutputPort())
    writer.Write()


main()
