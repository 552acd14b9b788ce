// Where the tests find what they test, and what they compare it with.
import { execFileSync } from 'node:child_process';
import { existsSync, mkdtempSync, readdirSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';

export const repository = new URL('../../../', import.meta.url).pathname;
export const build = process.env.GRIDWORK_WEB_BUILD ?? join(repository, 'build/web');
export const packageFolder = join(build, 'package');
export const pageFolder = join(build, 'page');
export const native = process.env.GRIDWORK_NATIVE_BUILD ?? join(repository, 'build/release');
export const bracket = join(repository, 'examples/data/bracket.stl');
export const scratch = mkdtempSync(join(tmpdir(), 'gridwork-web-'));

const tool = join(native, 'editions/cli/gridwork');
export const hasTool = existsSync(tool);

/** What the command-line tool prints as JSON, also when it refuses a file. */
export function toolJson(...args) {
  try {
    return JSON.parse(execFileSync(tool, ['--json', ...args], { stdio: ['ignore', 'pipe', 'ignore'] }));
  } catch (error) {
    return JSON.parse(error.stdout);
  }
}

const samples = join(repository, '../shared/meshes');

/** The mesh files beside the repository, where they are; the bracket is always there. */
export function meshFiles() {
  const names = existsSync(samples) ? readdirSync(samples) : [];
  const meshes = names.filter((name) => /\.(stl|obj|vtk|mesh|bdf|dat|neu)$/.test(name));
  return [bracket, ...meshes.map((name) => join(samples, name))];
}
