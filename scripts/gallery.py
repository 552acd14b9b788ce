"""Renders the pictures of the gallery with VTK; called by scripts/gallery.sh.

usage: gallery.py DATA OUT

DATA holds what docs/gallery_data.cpp and the examples wrote. All that is shown comes from there; this script chooses
cameras, colours and words.
"""

import sys

import vtk

SAMPLES = 3  # pixels rendered for one of the picture, in both directions
TOP = 62  # pixels above a model, for words
EDGE, TRIANGLE = 3, 5  # cell types of VTK
BODY, INK, ACCENT, SECOND = (0.78, 0.84, 0.91), (0.20, 0.25, 0.31), (0.85, 0.18, 0.13), (0.95, 0.62, 0.20)
PARTS = ["4e79a7", "f28e2b", "76b7b2", "e15759", "59a14f", "edc948", "b07aa1", "9c755f"]


def rgb(digits):
    return tuple(int(digits[i : i + 2], 16) / 255 for i in (0, 2, 4))


class Picture:
    """Panels side by side, each with a title, rendered large and averaged down."""

    def __init__(self, width, height):
        self.size = (width, height)
        self.window = vtk.vtkRenderWindow()
        self.window.SetOffScreenRendering(1)
        self.window.SetMultiSamples(0)
        self.window.SetAlphaBitPlanes(1)
        self.window.SetSize(width * SAMPLES, height * SAMPLES)

    def panel(self, left, right, title, note="", below=0):
        """A renderer of the columns [left, right), with two lines of text above and pixels left free below."""
        width, height = self.size
        for at, low, high in [("words", 0, height), ("model", below, height - (TOP if note else TOP - 24))]:
            renderer = vtk.vtkRenderer()
            renderer.SetViewport(left / width, low / height, right / width, high / height)
            renderer.SetBackground(1, 1, 1)
            self.window.AddRenderer(renderer)
            if at == "words":
                self.text(renderer, title, (right - left) / 2, height - 24, 17, bold=True)
                self.text(renderer, note, (right - left) / 2, height - 46, 15)
        renderer.SetUseDepthPeeling(1)
        renderer.SetMaximumNumberOfPeels(20)
        renderer.SetOcclusionRatio(0)
        lights = vtk.vtkLightKit()
        lights.SetKeyLightIntensity(0.95)
        lights.SetKeyToFillRatio(1.7)
        lights.AddLightsToRenderer(renderer)
        return renderer

    @staticmethod
    def text(renderer, words, x, y, size, bold=False):
        actor = vtk.vtkTextActor()
        actor.SetInput(words)
        actor.SetPosition(x * SAMPLES, y * SAMPLES)
        actor.GetTextProperty().SetJustificationToCentered()
        style(actor.GetTextProperty(), size, bold)
        renderer.AddActor2D(actor)

    def save(self, path):
        self.window.Render()
        image = vtk.vtkWindowToImageFilter()
        image.SetInput(self.window)
        image.ReadFrontBufferOff()
        average = vtk.vtkImageShrink3D()
        average.SetInputConnection(image.GetOutputPort())
        average.SetShrinkFactors(SAMPLES, SAMPLES, 1)
        average.MeanOn()
        writer = vtk.vtkPNGWriter()
        writer.SetFileName(path)
        writer.SetCompressionLevel(9)
        writer.SetInputConnection(average.GetOutputPort())
        writer.Write()


def style(text, size, bold=False):
    text.SetFontFamilyToArial()
    text.SetFontSize(size * SAMPLES)
    text.SetBold(bold)
    text.SetColor(INK)


def look(renderer, towards, up=(0, 0, 1)):
    """A parallel view from a direction, in which all that is drawn just fits."""
    camera = renderer.GetActiveCamera()
    camera.ParallelProjectionOn()
    camera.SetFocalPoint(0, 0, 0)
    camera.SetPosition(towards)
    camera.SetViewUp(up)
    view = camera.GetViewTransformMatrix()
    low, high = [1e30] * 3, [-1e30] * 3
    for actor in renderer.GetActors():
        shown = actor.GetMapper().GetInput()
        for k in range(shown.GetNumberOfPoints()):
            at = view.MultiplyPoint((*actor.GetMatrix().MultiplyPoint((*shown.GetPoint(k), 1))[:3], 1))
            low, high = list(map(min, low, at)), list(map(max, high, at))
    left, bottom, right, top = renderer.GetViewport()
    width, height = renderer.GetRenderWindow().GetSize()
    shape = (right - left) * width / ((top - bottom) * height)
    middle = [(low[i] + high[i]) / 2 for i in (0, 1)]
    back = vtk.vtkMatrix4x4()
    vtk.vtkMatrix4x4.Invert(view, back)
    eye, target = (back.MultiplyPoint((*middle, z, 1))[:3] for z in (2 * high[2] - low[2] + 1, low[2]))
    camera.SetPosition(eye)
    camera.SetFocalPoint(target)
    camera.SetParallelScale(0.535 * max((high[0] - low[0]) / shape, high[1] - low[1]))
    renderer.ResetCameraClippingRange()


def read(path):
    reader = vtk.vtkUnstructuredGridReader()
    reader.SetFileName(path)
    reader.ReadAllScalarsOn()
    reader.ReadAllTensorsOn()
    reader.Update()
    return reader.GetOutput()


def cells_of_type(grid, cell_type):
    pick = vtk.vtkExtractCellsByType()
    pick.SetInputData(grid)
    pick.AddCellType(cell_type)
    pick.Update()
    return pick.GetOutput()


def cells_with(grid, name, low, high):
    pick = vtk.vtkThreshold()
    pick.SetInputData(grid)
    pick.SetInputArrayToProcess(0, 0, 0, vtk.vtkDataObject.FIELD_ASSOCIATION_CELLS, name)
    pick.SetLowerThreshold(low)
    pick.SetUpperThreshold(high)
    pick.Update()
    return pick.GetOutput()


def outside(grid):
    skin = vtk.vtkDataSetSurfaceFilter()
    skin.SetInputData(grid)
    skin.Update()
    return skin.GetOutput()


def mesh(renderer, grid, colour=BODY, line=0.5, line_colour=(0.36, 0.42, 0.48)):
    """The surface of a mesh with its edges; without a colour, by the scalars of the mapper that is returned."""
    mapper = vtk.vtkPolyDataMapper()
    mapper.SetInputData(outside(grid))
    mapper.SetScalarVisibility(colour is None)
    actor = vtk.vtkActor()
    actor.SetMapper(mapper)
    surface = actor.GetProperty()
    surface.SetInterpolationToFlat()
    surface.SetAmbient(0.12)
    surface.SetDiffuse(0.88)
    surface.SetColor(colour or BODY)
    if line:
        surface.EdgeVisibilityOn()
        surface.SetEdgeColor(line_colour)
        surface.SetLineWidth(line * SAMPLES)
    renderer.AddActor(actor)
    return actor


def lines(renderer, grid, colour, width):
    mapper = vtk.vtkDataSetMapper()
    mapper.SetInputData(grid)
    mapper.ScalarVisibilityOff()
    mapper.SetResolveCoincidentTopologyToPolygonOffset()
    mapper.SetRelativeCoincidentTopologyLineOffsetParameters(-2, -2)
    actor = vtk.vtkActor()
    actor.SetMapper(mapper)
    actor.GetProperty().SetColor(colour)
    actor.GetProperty().SetLighting(False)
    actor.GetProperty().SetLineWidth(width * SAMPLES)
    renderer.AddActor(actor)


def count(number, noun):
    return f"{number:,} {noun}".replace(",", " ")


def draw_merging(data, out):
    picture = Picture(960, 450)
    for k, (name, title, width) in enumerate([("soup", "As STL files have it", 0.8), ("merged", "Merged", 3.0)]):
        grid = read(f"{data}/{name}.vtk")
        free = cells_of_type(grid, EDGE)
        note = f"{count(grid.GetNumberOfPoints(), 'nodes')}, {count(free.GetNumberOfCells(), 'free edges')}"
        panel = picture.panel(480 * k, 480 * k + 480, title, note)
        mesh(panel, cells_of_type(grid, TRIANGLE), line_colour=(0.44, 0.51, 0.59))
        lines(panel, free, ACCENT, width)
        look(panel, (0.8, -1.7, 1.2))
    picture.save(f"{out}/merging.png")


def draw_pattern(data, out):
    picture = Picture(960, 290)
    grid = read(f"{data}/gear.vtk")
    colours = [ACCENT, BODY, SECOND]
    for k, title in enumerate(["Half of one tooth", "Copied 23 times, merged", "Mirrored, merged"]):
        panel = picture.panel(320 * k, 320 * k + 320, title)
        for origin, colour in enumerate(colours):
            actor = mesh(panel, cells_with(grid, "origin", origin, origin), colour)
            if origin > k:
                actor.GetProperty().SetOpacity(0.1)
                actor.GetProperty().EdgeVisibilityOff()
                actor.GetProperty().SetColor(BODY)
        look(panel, (0.9, -1.1, 0.85))
    picture.save(f"{out}/pattern.png")


def draw_clipping(data, out):
    picture = Picture(960, 450)
    cut = read(f"{data}/cut.vtk")
    for k, (name, title) in enumerate([("subdomains", "Sub-domains between sharp edges"), ("clipped", "Cut open")]):
        grid = read(f"{data}/{name}.vtk")
        colours = grid.GetCellData().GetArray("subdomain")
        numbers = [int(colours.GetValue(cell)) for cell in range(grid.GetNumberOfCells())]
        for cell, number in enumerate(numbers):
            colours.SetValue(cell, number % len(PARTS))
        panel = picture.panel(480 * k, 480 * k + 480, title, count(len(set(numbers)), "sub-domains"))
        for part, colour in enumerate(PARTS):
            mesh(panel, cells_with(grid, "subdomain", part, part), rgb(colour), line=0.25, line_colour=INK)
        if name == "clipped":
            lines(panel, cut, INK, 2.5)
        look(panel, (1.5, -1.2, 1.0))
    picture.save(f"{out}/clipping.png")


def quality_colours():
    table = vtk.vtkColorTransferFunction()
    table.SetColorSpaceToLab()
    for value, colour in [(0, "a50026"), (0.25, "f46d43"), (0.5, "fee08b"), (0.75, "66bd63"), (1, "006837")]:
        table.AddRGBPoint(value, *rgb(colour))
    return table


def read_histogram(path):
    """A table of the middles of the bins and their counts."""
    table = vtk.vtkTable()
    with open(path, encoding="ascii") as file:
        bins = [[float(word) for word in line.split()] for line in file]
    for name, column in [("quality", [low + 0.5 / len(bins) for low, _ in bins]), ("elements", [n for _, n in bins])]:
        values = vtk.vtkFloatArray()
        values.SetName(name)
        for value in column:
            values.InsertNextValue(value)
        table.AddColumn(values)
    return table


def set_axis(axis, ticks):
    """Ticks at given values only."""
    axis.SetTitle("")
    axis.SetGridVisible(False)
    axis.SetBehavior(vtk.vtkAxis.FIXED)
    axis.SetRange(ticks[0], ticks[-1])
    positions, labels = vtk.vtkDoubleArray(), vtk.vtkStringArray()
    for tick in ticks:
        positions.InsertNextValue(tick)
        labels.InsertNextValue(f"{tick:g}")
    axis.SetCustomTickPositions(positions, labels)
    axis.GetPen().SetWidth(SAMPLES)
    axis.SetTickLength(5 * SAMPLES)
    axis.SetLabelOffset(9 * SAMPLES)
    style(axis.GetLabelProperties(), 14)


def draw_histogram(panel, table, colours, width, height):
    chart = vtk.vtkChartXY()
    bars = chart.AddPlot(vtk.vtkChart.BAR)
    bars.SetInputData(table, 0, 1)
    bars.SetOrientation(vtk.vtkPlotBar.HORIZONTAL)
    bars.ScalarVisibilityOn()
    bars.SetLookupTable(colours)
    bars.SelectColorArray("quality")
    bars.GetPen().SetWidth(0)
    most = max(table.GetValue(k, 1).ToDouble() for k in range(table.GetNumberOfRows()))
    set_axis(chart.GetAxis(vtk.vtkAxis.LEFT), [0, 0.2, 0.4, 0.6, 0.8, 1])
    set_axis(chart.GetAxis(vtk.vtkAxis.BOTTOM), range(0, int(most) + 199, 200))
    chart.SetAutoSize(False)
    chart.SetSize(vtk.vtkRectf(16 * SAMPLES, 0, width * SAMPLES, height * SAMPLES))
    scene, actor = vtk.vtkContextScene(), vtk.vtkContextActor()
    scene.AddItem(chart)
    scene.SetRenderer(panel)
    actor.SetScene(scene)
    panel.AddActor(actor)


def draw_quality(data, out):
    picture = Picture(960, 480)
    colours = quality_colours()
    grid = read(f"{data}/quality.vtk")
    panel = picture.panel(0, 460, "A twisted column", count(grid.GetNumberOfCells(), "hexahedra"), below=12)
    mesh(panel, grid, None).GetMapper().SetLookupTable(colours)
    look(panel, (1, -1.6, 0.9))
    panel = picture.panel(460, 960, "Their shape quality", "numbers of hexahedra; a cube has 1", below=12)
    draw_histogram(panel, read_histogram(f"{data}/quality.txt"), colours, 460, 400)
    picture.save(f"{out}/quality.png")


def draw_partition(data, out):
    picture = Picture(960, 450)
    for k, (name, title, noun, apart) in enumerate(
        [("block_parts", "A block, pulled apart", "tetrahedra", 0.4), ("bracket_parts", "The bracket", "triangles", 0)]
    ):
        grid = read(f"{data}/{name}.vtk")
        note = count(grid.GetNumberOfCells(), noun) + f", {len(PARTS)} parts"
        panel = picture.panel(480 * k, 480 * k + 480, title, note, below=10)
        for part, colour in enumerate(PARTS):
            cells = cells_with(grid, "part", part, part)
            shift = [apart * (a - b) for a, b in zip(cells.GetCenter(), grid.GetCenter())]
            mesh(panel, cells, rgb(colour), line=0.4, line_colour=INK).SetPosition(shift)
        look(panel, (0.8, -1.7, 1.2))
    picture.save(f"{out}/partition.png")


def draw_ranks(data, out):
    """A surface on four ranks, and what one of them holds."""
    picture = Picture(960, 450)
    parts = [read(f"{data}/rank.{rank}.vtk") for rank in range(4)]
    ghosts = read(f"{data}/rank.0.ghosts.vtk")
    sizes = [grid.GetNumberOfCells() for grid in parts]
    panel = picture.panel(0, 480, "On four ranks", count(sum(sizes), "triangles"), below=10)
    for grid, colour in zip(parts, PARTS):
        mesh(panel, grid, rgb(colour), line=0.4, line_colour=INK)
    look(panel, (0.8, -1.7, 1.2))
    note = count(sizes[0], "triangles") + ", " + count(ghosts.GetNumberOfCells(), "ghosts")
    panel = picture.panel(480, 960, "What one rank holds", note, below=10)
    for grid, colour in [(parts[0], PARTS[0]), (ghosts, PARTS[5])]:
        mesh(panel, grid, rgb(colour), line=0.4, line_colour=INK)
    look(panel, (0.8, -1.7, 1.2))
    picture.save(f"{out}/ranks.png")


def glyphs(renderer, points, name, source, colour):
    """The source, stretched at every point along the axes of its tensor."""
    points.GetPointData().SetActiveTensors(name)
    glyph = vtk.vtkTensorGlyph()
    glyph.SetInputData(points)
    glyph.SetSourceConnection(source.GetOutputPort())
    glyph.ColorGlyphsOff()
    glyph.Update()
    mapper = vtk.vtkPolyDataMapper()
    mapper.SetInputData(glyph.GetOutput())
    mapper.ScalarVisibilityOff()
    actor = vtk.vtkActor()
    actor.SetMapper(mapper)
    actor.GetProperty().SetColor(colour)
    renderer.AddActor(actor)
    return actor.GetProperty()


def ellipses(renderer, points, name, colour, opacity, width):
    """Discs with a rim; opacity 0 leaves the rim alone."""
    for rim in (False, True):
        disc = vtk.vtkRegularPolygonSource()
        disc.SetNumberOfSides(72)
        disc.SetRadius(1)
        disc.SetGeneratePolygon(not rim)
        disc.SetGeneratePolyline(rim)
        if not rim and opacity == 0:
            continue
        look_of = glyphs(renderer, points, name, disc, colour)
        look_of.SetLighting(False)
        look_of.SetOpacity(1 if rim else opacity)
        look_of.SetLineWidth(width * SAMPLES)


def draw_metrics(data, out):
    picture = Picture(960, 330)
    first, second, both = rgb(PARTS[0]), rgb(PARTS[1]), rgb(PARTS[4])
    plane, space = read(f"{data}/metrics.vtk"), read(f"{data}/metrics3d.vtk")

    panel = picture.panel(0, 355, "Two metrics at every node", below=10)
    ellipses(panel, plane, "first", first, 0.25, 1.2)
    ellipses(panel, plane, "second", second, 0.25, 1.2)
    look(panel, (0, 0, 1), up=(0, 1, 0))

    panel = picture.panel(355, 710, "Their intersection", below=10)
    ellipses(panel, plane, "first", first, 0, 0.5)
    ellipses(panel, plane, "second", second, 0, 0.5)
    ellipses(panel, plane, "intersection", both, 0.6, 1.2)
    look(panel, (0, 0, 1), up=(0, 1, 0))

    panel = picture.panel(710, 960, "In space", below=10)
    ball = vtk.vtkSphereSource()
    ball.SetRadius(1)
    ball.SetThetaResolution(96)
    ball.SetPhiResolution(64)
    for name, colour, opacity in [("first", first, 0.25), ("second", second, 0.25), ("intersection", both, 1)]:
        glyphs(panel, space, name, ball, colour).SetOpacity(opacity)
    look(panel, (0.3, -1, 0.6))
    picture.save(f"{out}/metrics.png")


def main():
    for draw in (draw_merging, draw_pattern, draw_clipping, draw_quality, draw_partition, draw_ranks, draw_metrics):
        draw(sys.argv[1], sys.argv[2])


main()
