// Port colours by data type: the library's colour when it gives one, else a hue fixed by the type's name,
// so that ports of one type always match and different types differ.
import type { TypesView } from './protocol';

const cache = new Map<string, string>();
let libraryColors = new Map<string, number[]>();

export function setDataTypes(types: TypesView): void {
  libraryColors = new Map(types.dataTypes.filter((t) => t.color).map((t) => [t.id, t.color as number[]]));
  cache.clear();
}

// "Standard.ImageOutput" and "Standard.ImageInput" are ports of the data type "Standard.Image".
export function dataTypeOfPort(portType: string): string {
  return portType.replace(/(Output|Input|InputList)$/, '');
}

export function portColor(portType: string): string {
  const dataType = dataTypeOfPort(portType);
  let color = cache.get(dataType);
  if (color) {
    return color;
  }
  const given = libraryColors.get(dataType);
  const isPlainWhite = !given || given.slice(0, 3).every((c) => c >= 0.99);
  if (given && !isPlainWhite) {
    color = `rgb(${given.slice(0, 3).map((c) => Math.round(c * 255)).join(',')})`;
  } else {
    let hash = 0;
    for (const ch of dataType) {
      hash = (hash * 31 + ch.charCodeAt(0)) >>> 0;
    }
    color = `hsl(${hash % 360}, 70%, 60%)`;
  }
  cache.set(dataType, color);
  return color;
}
