// Arguments of a call, as src/slots.h lays them out.
export const slotSize = 32;

export function readSlot(buffer, address) {
  const view = new DataView(buffer, address, slotSize);
  const word = (offset) => view.getUint32(offset, true);
  return {
    data: word(0), rows: word(4), cols: word(8), stride: word(12), owner: word(16), number: view.getFloat64(24, true),
  };
}

export function writeSlot(buffer, address, { data = 0, rows = 0, cols = 0, number = 0 }) {
  const view = new DataView(buffer, address, slotSize);
  [data, rows, cols, rows, 0, 0].forEach((value, k) => view.setUint32(4 * k, value, true));
  view.setFloat64(24, number, true);
}
