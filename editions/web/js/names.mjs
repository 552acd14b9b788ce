// What names of files tell.
const formatsByEnding = {
  stl: 'stl', obj: 'obj', mesh: 'medit', vtk: 'vtk', nas: 'nastran', bdf: 'nastran', dat: 'nastran', neu: 'femap',
  fem: 'femap', geo: 'ensight',
};

/** Endings of the names of files that are read. */
export const readEndings = Object.keys(formatsByEnding).filter((ending) => formatsByEnding[ending] !== 'ensight');

/** The format that a file's name tells; undefined when it tells none. */
export function formatOf(name) {
  return formatsByEnding[/\.([^./\\]+)$/.exec(name ?? '')?.[1].toLowerCase()];
}
