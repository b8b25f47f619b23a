/// Numbers as the registers that a PLC reads.

/// The bytes of a number of 32 bits in the order in which they arrive, A the most significant.
export const ORDERS = ["ABCD", "CDAB", "BADC", "DCBA"] as const;
export type Order = (typeof ORDERS)[number];

const INVALID = -2_147_483_648n; // the value of a measurement that failed

/// The registers of a number that takes `count` of them.
export function wordsOf(value: bigint, count: number, order: Order): number[] {
    const words = Array.from({ length: count }, (_, index) => Number((value >> BigInt(16 * (count - 1 - index))) & 0xffffn));
    const placed = order === "CDAB" || order === "DCBA" ? words.reverse() : words;
    const isSwapped = order === "BADC" || order === "DCBA";
    return isSwapped ? placed.map((word) => ((word & 0xff) << 8) | (word >> 8)) : placed;
}

/// A measurement as the service writes it: thousandths as a number of 32 bits.
export function thousandthsOf(value: number | null): bigint {
    const scaled = value === null ? NaN : Math.sign(value) * Math.round(Math.abs(value) * 1000);
    return Math.abs(scaled) <= 2_147_483_647 ? BigInt(scaled) : INVALID;
}

/// The bits of a floating point number of 32 bits.
export function realOf(value: number): bigint {
    const view = new DataView(new ArrayBuffer(4));
    view.setFloat32(0, value);
    return BigInt(view.getUint32(0));
}

export function hexOf(word: number): string {
    return word.toString(16).toUpperCase().padStart(4, "0");
}
