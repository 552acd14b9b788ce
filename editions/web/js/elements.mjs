// Types of elements by their names.

/** In the order of their codes. */
export const typeNames = [
  'UNKNOWN', 'NODE', 'EDGE_MIX', 'EDGE2', 'EDGE3', 'FACE_MIX', 'TRIA3', 'QUAD4', 'TRIA6', 'QUAD8', 'QUAD9', 'SOLID_MIX',
  'TETRA4', 'TETRA10', 'PYRAMID5', 'PYRAMID13', 'PYRAMID14', 'WEDGE6', 'WEDGE15', 'WEDGE18', 'HEXA8', 'HEXA20', 'HEXA27',
];

/** Element types by name, as the functions take them. */
export const elementTypes = Object.freeze(Object.fromEntries(typeNames.map((name, code) => [name, code])));
