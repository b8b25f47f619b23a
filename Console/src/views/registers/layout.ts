import type { Control } from "../services/controls";
import type { Order } from "./words";

export interface Block {
    outputId: number;
    type: string;
    displayName: string;
    dataSource?: string;
    scannerId?: string;
    order?: Order | ""; // empty: that of the service
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

export function assembliesOf(control: Control): Assembly[] {
    const embedded = control._embedded?.["zu:registerAssembly"];
    return Array.isArray(embedded) ? (embedded as Assembly[]) : [];
}

export function hasOutputMap(control: Control): boolean {
    return control._embedded?.["zu:datasources"] !== undefined;
}

/// The block with a register; undefined where the register is free.
export function blockAt(assembly: Assembly, address: number): Block | undefined {
    return assembly.blocks.find((block) => address >= block.outputId && address < block.outputId + lengthOf(assembly, block.type));
}

/// "170–172", or "170" for one register.
export function rangeText(first: number, count: number): string {
    return count === 1 ? String(first) : `${first}–${first + count - 1}`;
}

export function titleOf(block: Block): string {
    return block.dataSource === undefined || block.dataSource === "" ? block.displayName : `${block.displayName} of ${block.dataSource}`;
}

export function lengthOf(assembly: Assembly, type: string): number {
    return assembly.supportedBlockTypes.find((one) => one.type === type)?.registerCount ?? 1;
}

/// The first addresses of the rows of the grid: those with blocks, and one behind them.
export function rowsOf(assembly: Assembly, columns: number): number[] {
    const used = new Set<number>();
    for (const block of assembly.blocks) {
        for (let address = block.outputId; address < block.outputId + lengthOf(assembly, block.type); ++address) {
            used.add(address - (address % columns));
        }
    }
    const starts = [...used].sort((one, other) => one - other);
    const last = starts.at(-1) ?? -columns;
    return [...starts, last + columns].filter((start) => start <= assembly.attributes.outputIdMax);
}
