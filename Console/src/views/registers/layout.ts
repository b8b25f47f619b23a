import type { Control } from "../services/controls";
import { type DataSource, deliveredOf } from "../../client/sensor";

export interface Block {
    outputId: number;
    type: string;
    displayName: string;
    dataSource?: string;
    scannerId?: string;
}

export interface BlockType {
    type: string;
    displayName: string;
    hasDataSource: boolean;
    registerCount: number;
    instanceCount: number;
    minInstanceCount: number;
    maxInstanceCount: number;
}

export interface Assembly {
    id: string;
    displayName: string;
    attributes: { outputIdMin: number; outputIdMax: number };
    blocks: Block[];
    supportedBlockTypes: BlockType[];
}

export interface OutputMap {
    map: { outputId: number | string; source: string }[];
}

const INVALID = -2_147_483_648; // the value of a measurement that failed

export function assembliesOf(control: Control): Assembly[] {
    const embedded = control._embedded?.["zu:registerAssembly"];
    return Array.isArray(embedded) ? (embedded as Assembly[]) : [];
}

export function hasOutputMap(control: Control): boolean {
    return control._embedded?.["zu:datasources"] !== undefined;
}

export function lengthOf(assembly: Assembly, type: string): number {
    return assembly.supportedBlockTypes.find((one) => one.type === type)?.registerCount ?? 1;
}

/// A measurement as the service writes it: thousandths as a number of 32 bits.
export function registerNumberOf(value: number | null | undefined): number {
    if (value === null || value === undefined) {
        return INVALID;
    }
    const scaled = Math.sign(value) * Math.round(Math.abs(value) * 1000);
    return Math.abs(scaled) <= 2_147_483_647 ? scaled : INVALID;
}

/// The registers of a block as a PLC reads them; undefined where the console does not know them.
export function wordsOf(block: Block, source: DataSource | undefined, isLittleEndian: boolean): number[] | undefined {
    const delivered = deliveredOf(source, block.outputId);
    if (delivered === undefined) {
        return undefined;
    }
    const number = registerNumberOf(delivered.value);
    const pair = [(number >>> 16) & 0xffff, number & 0xffff];
    const value = isLittleEndian ? pair.reverse() : pair;
    switch (block.type) {
    case "Measurement":
        return [...value, delivered.value === null ? 2 : (delivered.decision ?? 0)];
    case "MeasurementValue":
        return value;
    case "Decision":
        return [delivered.decision ?? 2];
    default:
        return undefined;
    }
}

/// The rows of the grid: addresses that have blocks, and between them the sizes of the gaps.
export function rowsOf(assembly: Assembly, columns: number): { start: number }[] {
    const used = new Set<number>();
    for (const block of assembly.blocks) {
        for (let address = block.outputId; address < block.outputId + lengthOf(assembly, block.type); ++address) {
            used.add(address - (address % columns));
        }
    }
    const starts = [...used].sort((one, other) => one - other);
    const last = starts.at(-1) ?? -columns;
    return [...starts, last + columns].filter((start) => start <= assembly.attributes.outputIdMax).map((start) => ({ start }));
}
