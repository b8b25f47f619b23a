/// Heights as colours: dark blue is low, yellow is high; people with colour blindness tell them apart by brightness.
const STOPS: [number, number, number][] = [
    [38, 30, 90], [44, 84, 150], [38, 130, 142], [62, 170, 118], [160, 200, 70], [250, 228, 50],
];

/// The colour of a share of the range, from 0 to 1.
export function colourOf(share: number): [number, number, number] {
    const place = Math.min(1, Math.max(0, share)) * (STOPS.length - 1);
    const index = Math.min(STOPS.length - 2, Math.floor(place));
    const [from, to] = [STOPS[index] ?? [0, 0, 0], STOPS[index + 1] ?? [0, 0, 0]];
    const rest = place - index;
    return [0, 1, 2].map((part) => Math.round((from[part] ?? 0) * (1 - rest) + (to[part] ?? 0) * rest)) as [number, number, number];
}
