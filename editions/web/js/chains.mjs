// Edges that hang together, as those round a hole do.

const shownChains = 20;

function rootOf(parents, node) {
  for (; parents[node] !== node; node = parents[node]) parents[node] = parents[parents[node]];
  return node;
}

// For each node the first node of its chain.
function joinNodes(edges, nodes) {
  const parents = new Uint32Array(nodes).map((_, node) => node);
  for (let k = 0; k < edges.length; k += 2) {
    const [a, b] = [rootOf(parents, edges[k]), rootOf(parents, edges[k + 1])];
    parents[Math.max(a, b)] = Math.min(a, b);
  }
  return parents;
}

function countEdges(edges, parents) {
  const counts = new Uint32Array(parents.length);
  for (let k = 0; k < edges.length; k += 2) ++counts[rootOf(parents, edges[k])];
  return counts;
}

// The middle of the box of each chain that is shown.
function findMiddles(chains, edges, parents, positions) {
  const boxes = new Map(chains.map(({ root }) => [root, { low: [Infinity, Infinity, Infinity], high: [-Infinity, -Infinity, -Infinity] }]));
  for (const node of edges) {
    const box = boxes.get(rootOf(parents, node));
    if (box === undefined) continue;
    for (let k = 0; k < 3; ++k) {
      box.low[k] = Math.min(box.low[k], positions[3 * node + k]);
      box.high[k] = Math.max(box.high[k], positions[3 * node + k]);
    }
  }
  return chains.map(({ root }) => boxes.get(root).low.map((x, k) => (x + boxes.get(root).high[k]) / 2));
}

/**
 * How many chains edges with common nodes make, and how many edges the longest of them have and where their middle is.
 * Two nodes an edge, three positions a node.
 */
export function findChains(edges, positions) {
  if (edges.length === 0) return { count: 0, longest: [] };
  const parents = joinNodes(edges, positions.length / 3);
  const all = [];
  countEdges(edges, parents).forEach((count, root) => count > 0 && all.push({ root, edges: count }));
  const longest = all.sort((a, b) => b.edges - a.edges).slice(0, shownChains);
  const middles = findMiddles(longest, edges, parents, positions);
  return { count: all.length, longest: longest.map(({ edges: count }, k) => ({ edges: count, middle: middles[k] })) };
}
