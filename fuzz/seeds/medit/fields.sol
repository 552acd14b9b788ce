MeshVersionFormatted 2
Dimension 2
SolAtVertices 2
3 1 2 3
1 2 3 4 5 6
.5 -1e3 nan 4 5 6
End
